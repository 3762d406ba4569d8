#include "ui/HelperInstaller.h"

#include "common/BackgroundTask.h"
#include "helper/HelperManager.h"

HelperInstaller::HelperInstaller(HelperManager& helper, HelperService& service, QObject* parent)
    : QObject(parent)
    , m_helper(helper)
    , m_service(service)
{
}

HelperInstaller::~HelperInstaller() = default;

void HelperInstaller::install()
{
    if (m_task)
        return;
    m_task = runInBackground(
        this, [&service = m_service] { return service.registerService(); },
        [this](std::optional<HelperService::Error> error) {
            m_task.reset();
            m_helper.completeInstall(m_service, error);
            Q_EMIT finished();
        });
}
