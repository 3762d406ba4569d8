#pragma once

#include "duplicates/ScanTelemetry.h"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

struct InventoryStats;
struct EngineStats;
struct VerifiedGroup;

// Live progress of one duplicate scan: the scan's worker threads write it, the view's timer samples it.
// (Cancelling goes through the scan thread's stop token, which every worker tests before each unit.)
class TelemetryBox {
public:
    using Clock = std::chrono::steady_clock;

    // Starts a new scan's telemetry; `firstBand` is the histogram bucket of the size floor.
    void start(int firstBand);

    void setStage(DuplicateStage stage);
    void updateInventory(const InventoryStats& stats);
    void updateEngine(const EngineStats& stats, double stageFraction);
    void announce(const VerifiedGroup& group);
    void finish(std::int64_t reclaimableBytes);

    // The current snapshot with per-second rates since the previous sample and the discoveries so far.
    ScanTelemetry sample();

    static constexpr std::size_t keptDiscoveries = 64;

private:
    void setStageLocked(DuplicateStage stage);

    mutable std::mutex m_lock; // guards every field below
    ScanTelemetry m_current;   // its scanningPath stays empty: the folder is kept in m_scanning
    std::string m_scanning;
    Clock::time_point m_started;
    Clock::time_point m_lastSample;
    std::int64_t m_lastFiles = 0;
    std::int64_t m_lastBytes = 0;
    std::vector<ScanTelemetry::Discovery> m_pendingDiscoveries;
    std::int64_t m_discoveryCounter = 0;
};
