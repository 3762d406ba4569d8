#pragma once

#include "platform/ProcessControl.h"
#include "processes/MemoryPressure.h"
#include "processes/ProcessSnapshot.h"

#include <QObject>

#include <chrono>
#include <memory>
#include <thread>

class AppInventory;
class HelperManager;
class ProcessSampling;
class QTimer;

// The sampling cycle of the Memory Usage section: while active, a sample of the process table and of memory
// every interval, each taken on a thread of its own and published on the main thread. The memory figures of
// processes that /proc hides from the user come from the helper when it is ready (asked at most every ten
// seconds, since it reads every process's memory map). Main thread only.
class ProcessSampler : public QObject {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds defaultInterval{2000};

    ProcessSampler(const AppInventory& inventory, HelperManager& helper, QObject* parent = nullptr);
    ~ProcessSampler() override;

    std::chrono::milliseconds interval() const { return m_interval; }
    void setInterval(std::chrono::milliseconds interval);
    // Samples at once and then every interval while active; nothing is read while inactive.
    void setActive(bool active);
    bool isActive() const { return m_active; }
    // Samples now, unless a sample is under way.
    void sampleNow();

    bool hasSample() const { return m_hasSample; }
    const ProcessSnapshot& snapshot() const { return m_snapshot; }
    const MemoryPressure& pressure() const { return m_pressure; }
    const MemoryHistory& history() const { return m_history; }

Q_SIGNALS:
    void sampled();

private:
    void publish(ProcessSnapshot snapshot);
    void askHelperForHiddenMemory();

    const AppInventory& m_inventory;
    HelperManager& m_helper;
    QTimer* m_timer = nullptr;
    std::chrono::milliseconds m_interval = defaultInterval;
    bool m_active = false;
    bool m_hasSample = false;
    ProcessSnapshot m_snapshot;
    MemoryPressure m_pressure;
    MemoryHistory m_history;
    std::optional<QList<ProcessMemory>> m_helperMemory;
    double m_helperMemoryAt = -1; // when the helper was last asked, in seconds since boot
    bool m_askingHelper = false;
    // Used by the sample under way only, on its thread; the main thread leaves it alone while m_sample runs.
    std::unique_ptr<ProcessSampling> m_sampling;
    std::unique_ptr<std::jthread> m_sample;
};
