#include "scan/RunningMonitor.h"

#include "apps/AppInventory.h"
#include "common/BackgroundTask.h"

#include <QFileInfo>
#include <QTimer>

namespace {

// Folders that hold the programs of many packages: sharing one says nothing about which app a process is.
bool isSharedProgramFolder(const QString& folder)
{
    return folder.endsWith(QLatin1String("/bin")) || folder.endsWith(QLatin1String("/sbin"))
        || folder.endsWith(QLatin1String("/games")) || folder.endsWith(QLatin1String("/libexec"))
        || folder == QLatin1String("/usr/lib") || folder.isEmpty();
}

} // namespace

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
    QSet<QString> flatpaks;
    for (const ProcessInfo& process : processes) {
        for (const QString& path : {process.executablePath, process.firstArgument})
            if (const QString name = QFileInfo(path).fileName(); !name.isEmpty())
                running.insert(name.toLower());
        if (!process.flatpakAppID.isEmpty())
            flatpaks.insert(process.flatpakAppID.toLower());
    }
    running += flatpaks;

    for (const InstalledApp& app : apps) {
        const QString bundleID = app.bundleID.value_or(QString()).toLower();
        bool isRunning = flatpaks.contains(bundleID) || running.contains(app.executableName.toLower());
        const QString folder = QFileInfo(app.programPath).path();
        if (!isRunning && !app.programPath.isEmpty() && !isSharedProgramFolder(folder)) {
            for (const ProcessInfo& process : processes) {
                if (process.executablePath.startsWith(folder + QLatin1Char('/'))) {
                    isRunning = true;
                    break;
                }
            }
        }
        if (isRunning) {
            running.insert(bundleID);
            running.insert(app.executableName.toLower());
        }
    }
    running.remove(QString());
    return running;
}
