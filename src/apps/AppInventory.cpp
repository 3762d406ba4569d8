#include "apps/AppInventory.h"

#include "apps/AppCollector.h"
#include "common/BackgroundTask.h"
#include "common/Log.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QTimer>

namespace {

struct ScanOutcome {
    QList<InstalledApp> apps;
    QStringList folders; // every existing folder below the application folders, to watch
};

QStringList foldersToWatch(const QStringList& roots)
{
    QStringList folders;
    for (const QString& root : roots) {
        if (!QFileInfo(root).isDir())
            continue;
        folders << root;
        QDirIterator it(root, QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        while (it.hasNext())
            folders << it.next();
    }
    return folders;
}

QSet<QString> lowerCased(const QStringList& values)
{
    QSet<QString> set;
    for (const QString& value : values)
        if (!value.isEmpty())
            set.insert(value.toLower());
    return set;
}

} // namespace

AppInventory::AppInventory(std::function<AppSources()> sources, QObject* parent)
    : QObject(parent)
    , m_sources(std::move(sources))
{
}

AppInventory::~AppInventory() = default;

void AppInventory::scan()
{
    if (m_rescanTask) {
        m_rescanPending = true;
        return;
    }
    m_rescanTask = runInBackground(
        this,
        [sources = m_sources] {
            const AppSources found = sources();
            return ScanOutcome{collectInstalledApps(found), foldersToWatch(found.applicationFolders)};
        },
        [this](ScanOutcome outcome) { publish(std::move(outcome.apps), std::move(outcome.folders)); });
    Q_EMIT loadingChanged(true);
}

void AppInventory::publish(QList<InstalledApp> apps, QStringList watchedFolders)
{
    m_rescanTask.reset();
    m_apps = std::move(apps);
    QStringList bundleIDs, names, vendors, groups, executables;
    for (const InstalledApp& app : m_apps) {
        bundleIDs << app.bundleID.value_or(QString());
        names << app.name;
        vendors << app.vendor.value_or(QString());
        groups << app.appGroups;
        executables << app.executableName;
    }
    m_knownBundleIDs = lowerCased(bundleIDs);
    m_knownAppNames = lowerCased(names);
    m_knownVendors = lowerCased(vendors);
    m_knownAppGroups = lowerCased(groups);
    m_knownExecutableNames = lowerCased(executables);
    m_lastScan = QDateTime::currentDateTimeUtc();
    if (m_eventStream)
        watchFolders(watchedFolders);
    logLine(QStringLiteral("app inventory scanned apps=%1").arg(m_apps.size()));
    Q_EMIT loadingChanged(false);
    Q_EMIT scanned();
    if (std::exchange(m_rescanPending, false))
        scan();
}

void AppInventory::startMonitoring()
{
    if (m_eventStream)
        return;
    m_eventStream = new QFileSystemWatcher(this);
    m_eventStream->setObjectName(QStringLiteral("us.ambertrell.Velloru.appwatch"));
    m_batch = new QTimer(this);
    m_batch->setSingleShot(true);
    connect(m_eventStream, &QFileSystemWatcher::directoryChanged, this, &AppInventory::changeArrived);
    connect(m_batch, &QTimer::timeout, this, &AppInventory::deliverBatch);
    // The folders are known once a scan has listed them; until then the next scan sets the watch up.
    if (hasScanned())
        scan();
}

void AppInventory::changeArrived()
{
    // A batch already waiting takes this change too; the wait is never pushed back.
    if (m_batch->isActive())
        return;
    const qint64 sinceDelivery = m_lastDelivery.isValid() ? m_lastDelivery.elapsed() : changeLatencyMs;
    if (sinceDelivery >= changeLatencyMs)
        deliverBatch();
    else
        m_batch->start(int(changeLatencyMs - sinceDelivery));
}

void AppInventory::deliverBatch()
{
    m_lastDelivery.start();
    scan();
}

void AppInventory::watchFolders(const QStringList& folders)
{
    const QStringList watched = m_eventStream->directories();
    const QSet<QString> wanted(folders.begin(), folders.end());
    for (const QString& folder : watched)
        if (!wanted.contains(folder))
            m_eventStream->removePath(folder);
    const QSet<QString> have(watched.begin(), watched.end());
    QStringList added;
    for (const QString& folder : folders)
        if (!have.contains(folder))
            added << folder;
    if (!added.isEmpty())
        m_eventStream->addPaths(added);
}

bool AppInventory::isBundleIDInstalled(const QString& bundleID) const
{
    return m_knownBundleIDs.contains(bundleID.toLower());
}

bool AppInventory::isAppNameInstalled(const QString& name) const
{
    return m_knownAppNames.contains(name.toLower());
}

bool AppInventory::isVendorKnown(const QString& vendor) const
{
    return m_knownVendors.contains(vendor.toLower());
}

bool AppInventory::isAppGroupClaimed(const QString& group) const
{
    return m_knownAppGroups.contains(group.toLower());
}
