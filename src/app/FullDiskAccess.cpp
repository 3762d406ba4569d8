#include "app/FullDiskAccess.h"

#include "platform/Sandbox.h"

#include <QDir>

FullDiskAccess::FullDiskAccess(QString home, QObject* parent)
    : QObject(parent)
    , m_home(home.isEmpty() ? QDir::homePath() : std::move(home))
{
    probe();
}

bool FullDiskAccess::homeIsVisible(const QString& home)
{
    const QStringList names = QDir(home).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QString& name : names)
        if (name != QLatin1String(".var"))
            return true;
    return false;
}

void FullDiskAccess::probe()
{
    const bool granted = !runningSandboxed() || homeIsVisible(m_home);
    if (granted == m_granted)
        return;
    m_granted = granted;
    Q_EMIT isGrantedChanged(granted);
}
