#pragma once

#include "app/Destination.h"
#include "app/SidebarCounts.h"
#include "removal/AuditLog.h"
#include "removal/TrashWatcher.h"
#include "removal/Trasher.h"

#include <QObject>

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
    // The app inventory, the helper client, the running-apps monitor and the mount-agent registrar
    // are created here, in that order, after `audit`.
    SidebarCounts& counts() { return m_counts; }
    // The duplicates vault, the Full Disk Access probe and the permission checklist follow `counts`;
    // the mount manager (given the agent registrar and whether the helper is ready) and the sync manager
    // come last.

    Destination selection() const { return m_selection; }
    // Changes on every programmatic navigation, so a request for the section already shown is still seen.
    quint64 navigationTick() const { return m_navigationTick; }

    // The user picked a section in the sidebar.
    void select(Destination destination);
    // A feature sends the user to a section.
    void navigate(Destination destination);

    // Recounts the sidebar badges off the main thread; the result is stored on the main thread.
    void refreshCounts();
    bool isRefreshingCounts() const { return m_countsTask != nullptr; }

Q_SIGNALS:
    void selectionChanged(Destination destination);
    void navigationTickChanged(quint64 tick);
    void countsRefreshed();

private:
    AuditLog m_audit;
    Trasher m_trasher;
    TrashWatcher m_trashWatcher;
    SidebarCounts m_counts;
    std::unique_ptr<std::jthread> m_countsTask; // the counts refresh under way, if any
    Destination m_selection = Destination::dashboard;
    quint64 m_navigationTick = 0;
};
