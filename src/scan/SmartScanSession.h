#pragma once

#include "removal/TrashResult.h"
#include "scan/ScanExclusions.h"
#include "scan/ScanPhase.h"
#include "scan/ScanPulse.h"
#include "scan/ScanSelection.h"
#include "scan/SmartScanLocations.h"

#include <QObject>

#include <memory>
#include <optional>
#include <stop_token>
#include <thread>

class AppInventory;
class AuditLog;
class RunningMonitor;
class Trasher;

// One Smart Scan session: idle → scanning → results → cleaning → done, and back to scanning when the user
// scans again. It owns the result, the ticks and the pulse, so that the window and the headless command
// share one flow. Main thread only; the scan and the removal run on threads of their own.
class SmartScanSession : public QObject {
    Q_OBJECT

public:
    SmartScanSession(AppInventory& inventory, RunningMonitor& running, const Trasher& trasher, AuditLog& audit,
        SmartScanLocations locations, QObject* parent = nullptr);
    ~SmartScanSession() override;

    const ScanPhaseValue& phase() const { return m_phase; }
    bool isIdle() const { return std::holds_alternative<ScanPhase::Idle>(m_phase); }
    const QList<ScanGroup>& groups() const { return m_groups; }
    const ScanSelection& selection() const { return m_selection; }
    // The last removal's outcome, for the failures it lists.
    const std::optional<TrashResult>& lastRemoval() const { return m_lastRemoval; }
    // Why the last clean could not be written to the Activity log, when it could not.
    const std::optional<QString>& recordProblem() const;
    // What a result row is called: the item's own name, or for a Flatpak app's "cache" folder the app's
    // name, so that two such rows can be told apart at a glance.
    QString itemName(const ScanItem& item) const;
    // The live progress of the scan under way; the screen samples it on a timer.
    ScanPulse::Snapshot pulse() const;

    // Starts a scan from results, done or idle. The installed apps are read first if they never were.
    void scan();
    // Stops the scan under way; it ends with the groups found so far.
    void cancel();
    void setSelection(ScanSelection selection);
    // Moves the ticked items to the Trash and records them in the activity log.
    void clean();
    // Leaves the item out of this result and of every later scan; nothing on success, otherwise why it
    // could not be remembered for later scans.
    std::optional<QString> exclude(const ScanItem& item);
    const ScanExclusions& exclusions() const { return m_exclusions; }

Q_SIGNALS:
    void phaseChanged();
    void selectionChanged();

private:
    void startScanning();
    void setPhase(ScanPhaseValue phase);

    AppInventory& m_inventory;
    RunningMonitor& m_running;
    const Trasher& m_trasher;
    AuditLog& m_audit;
    SmartScanLocations m_locations;
    ScanExclusions m_exclusions;
    ScanPhaseValue m_phase = ScanPhase::Idle{};
    QList<ScanGroup> m_groups;
    ScanSelection m_selection;
    std::optional<TrashResult> m_lastRemoval;
    std::shared_ptr<ScanPulse> m_pulse;    // shared with the scanning thread
    std::stop_source m_stop;               // cancels the scan under way
    std::unique_ptr<std::jthread> m_task;  // the scan or removal under way, if any
    QMetaObject::Connection m_waitForApps; // a scan waiting for the app inventory's first scan
};
