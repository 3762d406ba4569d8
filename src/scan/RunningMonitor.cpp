#include "scan/RunningMonitor.h"

#include "apps/AppInventory.h"
#include "common/BackgroundTask.h"
#include "scan/AppMatcher.h"

#include <QFileInfo>
#include <QTimer>

RunningMonitor::RunningMonitor(const AppInventory& inventory, QObject* parent)
    : QObject(parent)
    , m_inventory(inventory)
    , m_timer(new QTimer(this))
{
    m_timer->setInterval(refreshIntervalMs);
    connect(m_timer, &QTimer::timeout, this, &RunningMonitor::refreshInBackground);
    connect(&inventory, &AppInventory::scanned, this, &RunningMonitor::refresh);
    m_timer->start();
    refresh();
}

void RunningMonitor::refresh()
{
    store(identifiersOf(listProcesses(), m_inventory.apps()));
}

void RunningMonitor::refreshInBackground()
{
    if (m_reading)
        return;
    m_reading = runInBackground(
        this, [apps = m_inventory.apps()] { return identifiersOf(listProcesses(), apps); },
        [this](QSet<QString> running) {
            m_reading.reset();
            store(std::move(running));
        });
}

void RunningMonitor::store(QSet<QString> running)
{
    if (running == m_runningBundleIDs)
        return;
    m_runningBundleIDs = std::move(running);
    Q_EMIT changed();
}

QSet<QString> RunningMonitor::identifiersOf(const QList<ProcessInfo>& processes, const QList<InstalledApp>& apps)
{
    QSet<QString> running;
    const AppMatcher matcher(apps);
    for (const ProcessInfo& process : processes) {
        for (const QString& path : {process.executablePath, process.firstArgument})
            if (const QString name = QFileInfo(path).fileName(); !name.isEmpty())
                running.insert(name.toLower());
        if (!process.flatpakAppID.isEmpty())
            running.insert(process.flatpakAppID.toLower());
        for (const qsizetype app : matcher.appsOf(process)) {
            running.insert(apps[app].bundleID.value_or(QString()).toLower());
            running.insert(apps[app].executableName.toLower());
        }
    }
    running.remove(QString());
    return running;
}
