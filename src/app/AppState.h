#pragma once

#include "app/Destination.h"
#include "app/FullDiskAccess.h"
#include "app/PermissionCenter.h"
#include "app/SidebarCounts.h"
#include "apps/AppInventory.h"
#include "duplicates/DuplicateVaultController.h"
#include "helper/HelperManager.h"
#include "helper/HelperRefresh.h"
#include "helper/HelperTrash.h"
#include "platform/SystemdHelperService.h"
#include "removal/AuditLog.h"
#include "removal/TrashWatcher.h"
#include "removal/Trasher.h"
#include "scan/RunningMonitor.h"
#include "scan/SmartScanSession.h"
#include "startup/StartupItems.h"

#include <QObject>
#include <QSettings>

#include <memory>
#include <thread>

// The one app-wide state object. It owns every long-lived manager for the life of the process; features
// receive them from here and never make their own. Main thread only.
//
// The managers are created in a fixed order because later ones receive earlier ones:
//   audit → inventory → helper (start-up routine) → running → mountAgent (start-up routine)
//   → counts → vault (start-up routine) → fullDisk → permissions → mounts → sync.
// The managers that Velloru does not have yet take their place in that order as they are built.
class AppState : public QObject {
    Q_OBJECT

public:
    AppState();
    ~AppState() override;

    AuditLog& audit() { return m_audit; }
    // Moves items to the Trash for every feature; root-owned items go through the helper once it exists.
    const Trasher& trasher() const { return m_trasher; }
    // Watches the home Trash so that put-back buttons and the Trash card follow it.
    TrashWatcher& trashWatcher() { return m_trashWatcher; }
    AppInventory& inventory() { return m_inventory; }
    // The privileged helper's client, and how the helper is registered with systemd.
    HelperManager& helper() { return m_helper; }
    HelperService& helperService() { return m_helperService; }
    // Brings an installed helper in step with this Velloru after an update.
    HelperRefresh& helperRefresh() { return m_helperRefresh; }
    RunningMonitor& running() { return m_running; }
    // The mount-agent registrar follows the running-apps monitor.
    SidebarCounts& counts() { return m_counts; }
    // What starts by itself at login; its count is the Login Items badge.
    StartupItems& startup() { return m_startup; }
    // The dashboard's Smart Scan, kept here so that a scan survives the page being rebuilt.
    SmartScanSession& smartScan() { return m_smartScan; }
    // The duplicates vault follows `counts`; its start-up routine loads the list.
    DuplicateVaultController& vault() { return m_vault; }
    FullDiskAccess& fullDisk() { return m_fullDisk; }
    PermissionCenter& permissions() { return m_permissions; }
    // The mount manager (given the agent registrar and whether the helper is ready) and the sync manager
    // come last.

    Destination selection() const { return m_selection; }
    // Changes on every programmatic navigation, so a request for the section already shown is still seen.
    quint64 navigationTick() const { return m_navigationTick; }

    // The user picked a section in the sidebar.
    void select(Destination destination);
    // A feature sends the user to a section.
    void navigate(Destination destination);

    // Stops what runs in the background: the privileged helper is asked to exit (a helper busy with a disk
    // operation is left alone: `done` hears so) and no new connection to it is opened until the services
    // are started again.
    void stopBackgroundServices(std::function<void(bool helperLeftBusy)> done);
    void startBackgroundServices();

    // Recounts the sidebar badges off the main thread; the result is stored on the main thread.
    void refreshCounts();
    bool isRefreshingCounts() const { return m_countsTask != nullptr; }

Q_SIGNALS:
    void selectionChanged(Destination destination);
    void navigationTickChanged(quint64 tick);
    void countsRefreshed();

private:
    void countVault();

    AuditLog m_audit;
    AppInventory m_inventory;
    SystemdHelperService m_helperService;
    HelperManager m_helper;
    HelperRefresh m_helperRefresh;
    HelperTrash m_helperTrash; // what the Trash mover asks for root-owned items
    RunningMonitor m_running;
    Trasher m_trasher;
    TrashWatcher m_trashWatcher;
    SidebarCounts m_counts;
    StartupItems m_startup;
    SmartScanSession m_smartScan;
    DuplicateVaultController m_vault;
    FullDiskAccess m_fullDisk;
    QSettings m_defaults; // the permission checklist keeps its ledger here
    PermissionCenter m_permissions;
    std::unique_ptr<std::jthread> m_countsTask; // the counts refresh under way, if any
    Destination m_selection = Destination::dashboard;
    quint64 m_navigationTick = 0;
};
