#include "ui/MailCard.h"

#include "app/FullDiskAccess.h"
#include "common/BackgroundTask.h"
#include "helper/MailOptimizer.h"
#include "helper/Maintenance.h"
#include "helper/MaintenanceTexts.h"
#include "removal/AuditLog.h"
#include "ui/ResultLine.h"

#include <QDir>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

QLabel* wrapped(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    return label;
}

} // namespace

MailCard::MailCard(AuditLog& audit, FullDiskAccess& fullDisk, QWidget* parent)
    : QGroupBox(MaintenanceTexts::mailTitle(), parent)
    , m_audit(audit)
    , m_fullDisk(fullDisk)
{
    setObjectName(QStringLiteral("task-mail"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(wrapped(MaintenanceTexts::mailCardText(), this));

    m_accessPrompt = new QWidget(this);
    m_accessPrompt->setObjectName(QStringLiteral("mailFullDiskAccess"));
    auto* promptLayout = new QVBoxLayout(m_accessPrompt);
    promptLayout->setContentsMargins({});
    auto* needs = new QLabel(MaintenanceTexts::needsFullDiskAccess(), m_accessPrompt);
    needs->setStyleSheet(QStringLiteral("font-weight: bold"));
    promptLayout->addWidget(needs);
    promptLayout->addWidget(wrapped(MaintenanceTexts::mailFullDiskAccessText(), m_accessPrompt));
    auto* open = new QPushButton(MaintenanceTexts::openFullDiskAccess(), m_accessPrompt);
    open->setObjectName(QStringLiteral("openFullDiskAccess"));
    promptLayout->addWidget(open, 0, Qt::AlignLeft);
    layout->addWidget(m_accessPrompt);

    m_result = wrapped({}, this);
    m_result->setObjectName(QStringLiteral("mailResult"));
    m_result->hide();
    layout->addWidget(m_result);
    m_optimize = new QPushButton(MaintenanceTexts::mailButton(), this);
    m_optimize->setObjectName(QStringLiteral("mailOptimize"));
    layout->addWidget(m_optimize, 0, Qt::AlignLeft);

    connect(open, &QPushButton::clicked, this, [this] {
        QMessageBox::information(
            this, MaintenanceTexts::needsFullDiskAccess(), MaintenanceTexts::fullDiskAccessHowTo());
    });
    connect(m_optimize, &QPushButton::clicked, this, &MailCard::optimize);
    connect(&m_fullDisk, &FullDiskAccess::isGrantedChanged, this, &MailCard::showAccess);
    showAccess();
}

MailCard::~MailCard() = default;

void MailCard::showAccess()
{
    const bool granted = m_fullDisk.isGranted();
    m_accessPrompt->setVisible(!granted);
    m_optimize->setVisible(granted);
}

void MailCard::optimize()
{
    if (m_task)
        return;
    m_optimize->setEnabled(false);
    m_task = runInBackground(
        this, [home = QDir::homePath()] { return MailOptimizer::optimize(home); },
        [this](TaskResult result) {
            m_task.reset();
            m_audit.recordAction(Maintenance::feature, MaintenanceTexts::mailTitle(),
                result.success ? result.message : QStringLiteral("Failed: ") + result.message);
            showResultLine(m_result, result.success, result.message);
            m_optimize->setEnabled(true);
        });
}
