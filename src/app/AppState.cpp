#include "app/AppState.h"

#include "app/UserDefaults.h"
#include "common/BackgroundTask.h"
#include "common/StoragePaths.h"
#include "helper/HelperProtocol.h"
#include "platform/Sandbox.h"
#include "platform/TrashStore.h"
#include "privacy/KnownApps.h"

#include <QDir>
#include <QSettings>
#include <QTimer>

namespace {

// Runs off the main thread. Extensions are counted once their scanner exists; login items by their own scan.
// The permissions this edition can check. Full Disk Access means something only inside a sandbox;
// background activity joins when the mount agent does.
QList<PermissionCheck> permissionChecks(HelperManager& helper, HelperService& service, FullDiskAccess& fullDisk)
{
    QList<PermissionCheck> checks;
    checks.append({Permission::helper, [&helper, &service] { helper.refreshState(service); },
        [&helper] { return helper.state() == HelperManager::State::ready; }});
    if (runningSandboxed())
        checks.append(
            {Permission::fullDisk, [&fullDisk] { fullDisk.probe(); }, [&fullDisk] { return fullDisk.isGranted(); }});
    return checks;
}

SidebarCounts::Counts countSections(const QString& home)
{
    SidebarCounts::Counts counts;
    counts.insert(Destination::browsers, countPresent(knownBrowsers(), home));
    counts.insert(Destination::chats, countPresent(knownChatApps(), home));
    return counts;
}

} // namespace

AppState::AppState()
    : m_audit(StoragePaths::dataFolder())
    , m_helper(HelperProtocol::socketPath())
    , m_helperRefresh(m_helper, m_helperService, HelperProtocol::version, HelperRefresh::Timing())
    , m_helperTrash(
          HelperProtocol::socketPath(), [this] { return m_helper.state() == HelperManager::State::ready; },
          homeTrashPath())
    , m_running(m_inventory)
    , m_trasher(&m_helperTrash)
    , m_startup(StartupLocations::forThisUser(), m_helper, m_trasher, m_audit)
    , m_smartScan(m_inventory, m_running, m_trasher, m_audit, SmartScanLocations::forHome(QDir::homePath()))
    , m_vault(StoragePaths::dataFolder(), m_audit, m_trasher)
    , m_permissions(m_defaults, permissionChecks(m_helper, m_helperService, m_fullDisk),
          DefaultsKey::permissionsEverGranted, DefaultsKey::permissionsRemindSuppressed)
{
    const QString startPage = m_defaults.value(DefaultsKey::debugStartPage).toString();
    m_selection = Destinations::parse(startPage).value_or(Destination::dashboard);
    m_trashWatcher.start();
    m_inventory.scan();
    m_helper.refreshState(m_helperService);
    // An installed helper is brought in step once the window is up; one started by hand for development
    // is never replaced.
    if (m_helper.state() == HelperManager::State::ready && !HelperProtocol::socketOverridden())
        QTimer::singleShot(0, &m_helperRefresh, [this] { m_helperRefresh.checkAndRefresh(); });
    m_inventory.startMonitoring();
    connect(&m_startup, &StartupItems::scanned, this, [this] {
        SidebarCounts::Counts counts = m_counts.counts();
        counts.insert(Destination::loginItems, int(m_startup.items().size()));
        m_counts.setCounts(std::move(counts));
    });
    m_vault.load();
    // The Duplicates badge counts the copies held in the vault.
    connect(&m_vault, &DuplicateVaultController::changed, this, &AppState::countVault);
    countVault();
    // Installing the helper from any Set Up button changes the checklist too.
    connect(&m_helper, &HelperManager::changed, &m_permissions, &PermissionCenter::update);
}

AppState::~AppState() = default;

void AppState::select(Destination destination)
{
    if (destination == m_selection)
        return;
    m_selection = destination;
    Q_EMIT selectionChanged(destination);
}

void AppState::navigate(Destination destination)
{
    ++m_navigationTick;
    Q_EMIT navigationTickChanged(m_navigationTick);
    select(destination);
}

void AppState::stopBackgroundServices(std::function<void(bool helperLeftBusy)> done)
{
    const auto stopped = [this, done = std::move(done)](bool helperLeftBusy) {
        m_helper.stopBackground();
        done(helperLeftBusy);
    };
    if (m_helper.state() != HelperManager::State::ready || m_helper.backgroundStopped())
        return stopped(false);
    m_helper.shutdownHelper(std::chrono::seconds(5), [stopped](HelperManager::ShutdownOutcome outcome) {
        stopped(outcome == HelperManager::ShutdownOutcome::refused);
    });
}

void AppState::startBackgroundServices()
{
    m_helper.startBackground();
    m_helper.refreshState(m_helperService);
}

void AppState::countVault()
{
    SidebarCounts::Counts counts = m_counts.counts();
    counts.insert(Destination::duplicates, int(m_vault.entries().size()));
    m_counts.setCounts(std::move(counts));
}

void AppState::refreshCounts()
{
    if (m_countsTask)
        return;
    m_startup.scan();
    m_countsTask = runInBackground(
        this, [home = QDir::homePath()] { return countSections(home); },
        [this](SidebarCounts::Counts counts) {
            if (m_startup.hasScanned())
                counts.insert(Destination::loginItems, int(m_startup.items().size()));
            counts.insert(Destination::duplicates, int(m_vault.entries().size()));
            m_counts.setCounts(std::move(counts));
            m_countsTask.reset();
            Q_EMIT countsRefreshed();
        });
}
