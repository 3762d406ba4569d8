#include "app/FullDiskAccess.h"

#include "platform/Sandbox.h"

#include <QDir>

FullDiskAccess::Confinement FullDiskAccess::currentConfinement()
{
    return runningSandboxed() ? Confinement::flatpak : Confinement::none;
}

FullDiskAccess::FullDiskAccess(QString home, Confinement confinement, QObject* parent)
    : QObject(parent)
    , m_home(home.isEmpty() ? QDir::homePath() : std::move(home))
    , m_confinement(confinement)
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
    const bool granted = m_confinement == Confinement::none || homeIsVisible(m_home);
    if (granted == m_granted)
        return;
    m_granted = granted;
    Q_EMIT isGrantedChanged(granted);
}
