#pragma once

#include "duplicates/DuplicateGroup.h"
#include "duplicates/EngineStats.h"
#include "duplicates/InventoryStats.h"
#include "duplicates/ScanTelemetry.h"
#include "duplicates/TelemetryBox.h"
#include "duplicates/VaultResults.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

// Owns one duplicate scan: runs the inventory and the engine on a worker thread, publishes live telemetry
// through a timer on the main thread, and holds the resulting sets and the user's ticks. Lives on the
// main thread; every change to it happens there.
class DuplicateScan : public QObject {
    Q_OBJECT

public:
    enum class Phase { idle, scanning, results, moving, done }; // done carries the last move: lastMove()

    explicit DuplicateScan(QObject* parent = nullptr);
    ~DuplicateScan() override;

    // The user folders that hold their own files: Documents, Pictures, Music, Videos, ~/Developer,
    // Downloads and Desktop, each kept when it exists.
    static QStringList defaultRoots();

    Phase phase() const { return m_phase; }
    const ScanTelemetry& telemetry() const { return m_telemetry; }
    const QList<DuplicateGroup>& groups() const { return m_groups; }
    // What could not be looked at, as one sentence; empty when everything was.
    const QString& notScanned() const { return m_notScanned; }
    const InventoryStats& inventoryStats() const { return m_inventoryStats; }
    const EngineStats& engineStats() const { return m_engineStats; }

    QStringList roots() const { return m_roots; }
    void setRoots(const QStringList& roots) { m_roots = roots; }
    std::uint64_t minimumSize() const { return m_minimumSize; }
    void setMinimumSize(std::uint64_t bytes) { m_minimumSize = bytes; }

    // Starts a scan of `roots` (does nothing while one runs).
    void start();
    // Stops the running scan; it ends without results and the phase goes back to idle.
    void cancel();

    // The user ticks or unticks a copy. The keeper and blocked copies never take a tick: false for those.
    bool setTicked(const QUuid& groupID, const QUuid& memberID, bool ticked);
    // The ticked copies are on their way to the vault.
    void startMove();
    // The move ended: the copies it moved leave their sets, a set left with one file goes, and the phase is
    // done with the move's outcome.
    void finishMove(const VaultMoveResult& result);
    const std::optional<VaultMoveResult>& lastMove() const { return m_lastMove; }

Q_SIGNALS:
    void phaseChanged(DuplicateScan::Phase phase);
    void telemetryChanged();

public:
    // What a finished run hands to the main thread, once.
    struct Outcome;

private Q_SLOTS:
    // Takes the finished run's outcome on the main thread.
    void collectOutcome();

private:
    void finish(const Outcome& outcome);
    void setPhase(Phase phase);
    void refreshTelemetry();

    Phase m_phase = Phase::idle;
    ScanTelemetry m_telemetry;
    QList<DuplicateGroup> m_groups;
    QString m_notScanned;
    InventoryStats m_inventoryStats;
    EngineStats m_engineStats;
    QStringList m_roots;
    std::uint64_t m_minimumSize = 4096;
    std::optional<VaultMoveResult> m_lastMove;
    QTimer m_ticker;
    TelemetryBox m_box;
    std::mutex m_outcomeLock; // guards m_outcome: set once by the scan's thread, taken on the main thread
    std::shared_ptr<const Outcome> m_outcome;
    std::jthread m_task; // last, so it is joined before the members it uses are destroyed
};
