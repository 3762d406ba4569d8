#include "processes/ProcessSampler.h"

#include "apps/AppInventory.h"
#include "common/BackgroundTask.h"
#include "helper/HelperManager.h"
#include "processes/ProcessSampling.h"

#include <QPointer>
#include <QTimer>

namespace {

constexpr double helperAskInterval = 10; // seconds
constexpr std::chrono::seconds helperTimeout{10};

} // namespace

ProcessSampler::ProcessSampler(const AppInventory& inventory, HelperManager& helper, QObject* parent)
    : QObject(parent)
    , m_inventory(inventory)
    , m_helper(helper)
    , m_timer(new QTimer(this))
    , m_sampling(std::make_unique<ProcessSampling>())
{
    m_timer->setInterval(m_interval);
    connect(m_timer, &QTimer::timeout, this, &ProcessSampler::sampleNow);
}

ProcessSampler::~ProcessSampler()
{
    m_sample.reset(); // waits for a sample under way before m_sampling goes
}

void ProcessSampler::setInterval(std::chrono::milliseconds interval)
{
    m_interval = interval;
    m_timer->setInterval(interval);
}

void ProcessSampler::setActive(bool active)
{
    if (active == m_active)
        return;
    m_active = active;
    if (!active)
        return m_timer->stop();
    m_timer->start();
    sampleNow();
}

void ProcessSampler::sampleNow()
{
    if (m_sample)
        return; // the previous one is still being read: this tick is skipped
    m_sample = runInBackground(
        this,
        [sampling = m_sampling.get(), apps = m_inventory.apps(), helperMemory = m_helperMemory] {
            return sampling->sample(apps, helperMemory);
        },
        [this](ProcessSnapshot snapshot) {
            m_sample.reset();
            publish(std::move(snapshot));
        });
}

void ProcessSampler::publish(ProcessSnapshot snapshot)
{
    m_snapshot = std::move(snapshot);
    m_hasSample = true;
    if (m_snapshot.memory) {
        m_pressure = MemoryPressures::assess(*m_snapshot.memory, m_snapshot.stall);
        m_history.add(m_snapshot.at, *m_snapshot.memory, m_pressure.level);
    }
    if (m_snapshot.systemProcessesHidden)
        askHelperForHiddenMemory();
    Q_EMIT sampled();
}

void ProcessSampler::askHelperForHiddenMemory()
{
    if (m_askingHelper || m_helper.state() != HelperManager::State::ready
        || (m_helperMemoryAt >= 0 && m_snapshot.at - m_helperMemoryAt < helperAskInterval))
        return;
    m_askingHelper = true;
    m_helperMemoryAt = m_snapshot.at;
    m_helper.systemProcessInfo(helperTimeout, [this, guard = QPointer(this)](auto processes) {
        if (!guard)
            return;
        m_askingHelper = false;
        if (processes)
            m_helperMemory = std::move(processes);
    });
}
