#include "duplicates/TelemetryBox.h"

#include "duplicates/EngineStats.h"
#include "duplicates/InventoryStats.h"
#include "duplicates/VerifiedGroup.h"

#include <QFile>

#include <algorithm>

namespace {

// How much of the whole scan each stage stands for, in stage order; the inventory and the byte-for-byte
// comparison take most of the time.
constexpr double stageWeights[] = {0.35, 0.05, 0.25, 0.35};

double overallFraction(DuplicateStage stage, double stageFraction)
{
    if (stage == DuplicateStage::ready)
        return 1.0;
    double done = 0;
    for (int i = 0; i < int(stage); ++i)
        done += stageWeights[i];
    return std::min(1.0, done + stageWeights[int(stage)] * std::clamp(stageFraction, 0.0, 1.0));
}

std::int64_t rateBytes(const ScanTelemetry& telemetry)
{
    return telemetry.stage == DuplicateStage::inventory ? telemetry.bytesIndexed : telemetry.bytesRead;
}

} // namespace

void TelemetryBox::start(int firstBand)
{
    std::lock_guard guard(m_lock);
    m_current = ScanTelemetry();
    m_current.firstBand = firstBand;
    m_scanning.clear();
    m_started = m_lastSample = Clock::now();
    m_lastFiles = m_lastBytes = 0;
    m_pendingDiscoveries.clear();
    m_discoveryCounter = 0;
}

void TelemetryBox::setStage(DuplicateStage stage)
{
    std::lock_guard guard(m_lock);
    setStageLocked(stage);
}

void TelemetryBox::setStageLocked(DuplicateStage stage)
{
    if (m_current.stage == stage)
        return;
    m_current.stage = stage;
    m_current.stageFraction = 0;
    m_current.overallFraction = overallFraction(stage, 0);
    m_lastBytes = rateBytes(m_current);
}

void TelemetryBox::updateInventory(const InventoryStats& stats)
{
    std::lock_guard guard(m_lock);
    m_current.filesIndexed = stats.filesIndexed;
    m_current.bytesIndexed = stats.bytesIndexed;
    m_current.directoriesRead = stats.directoriesRead;
    m_current.directoriesDiscovered = stats.directoriesDiscovered;
    m_scanning = stats.scanning;
    m_current.datalessSkipped = stats.datalessSkipped;
    m_current.packagesHalted = stats.packagesHalted;
    m_current.unreadableDirectories = stats.unreadableDirectories;
    m_current.sizeHistogram = stats.sizeHistogram;
    // The folders still to read are only known as they are found, so this fraction can step back.
    m_current.stageFraction
        = double(stats.directoriesRead) / double(std::max<std::int64_t>(1, stats.directoriesDiscovered + 1));
    m_current.overallFraction = overallFraction(m_current.stage, m_current.stageFraction);
}

void TelemetryBox::updateEngine(const EngineStats& stats, double stageFraction)
{
    std::lock_guard guard(m_lock);
    switch (stats.phase) {
    case EnginePhase::bucketing: setStageLocked(DuplicateStage::bucket); break;
    case EnginePhase::prehashing: setStageLocked(DuplicateStage::prehash); break;
    case EnginePhase::verifying:
    case EnginePhase::finished: setStageLocked(DuplicateStage::verify); break;
    }
    const bool sampled = stats.phase != EnginePhase::bucketing && stats.phase != EnginePhase::prehashing;
    m_current.candidates = sampled ? stats.candidatesAfterPrehash : stats.candidatesAfterSize;
    m_current.candidateBytes = sampled ? stats.candidateBytesAfterPrehash : stats.candidateBytesAfterSize;
    m_current.bytesRead = stats.prehashBytesRead + stats.verifyBytesRead;
    m_current.prunedByCache = stats.prunedByCache;
    m_current.groupsConfirmed = stats.groupsConfirmed;
    m_current.reclaimableBytes = stats.reclaimableBytes;
    m_current.stageFraction = stageFraction;
    m_current.overallFraction = overallFraction(m_current.stage, stageFraction);
}

void TelemetryBox::announce(const VerifiedGroup& group)
{
    std::lock_guard guard(m_lock);
    ScanTelemetry::Discovery discovery;
    discovery.id = ++m_discoveryCounter;
    discovery.band = sizeBucket(group.size);
    discovery.members = std::int64_t(group.members.size());
    discovery.reclaimable = std::int64_t(group.size * (group.members.size() - 1));
    discovery.at = Clock::now();
    m_pendingDiscoveries.push_back(discovery);
}

void TelemetryBox::finish(std::int64_t reclaimableBytes)
{
    std::lock_guard guard(m_lock);
    setStageLocked(DuplicateStage::ready);
    m_current.stageFraction = 1;
    m_current.overallFraction = 1;
    m_current.reclaimableBytes = reclaimableBytes;
}

ScanTelemetry TelemetryBox::sample()
{
    std::lock_guard guard(m_lock);
    const Clock::time_point now = Clock::now();
    const double seconds = std::chrono::duration<double>(now - m_lastSample).count();
    if (seconds >= 0.25) {
        m_current.filesPerSecond = double(m_current.filesIndexed - m_lastFiles) / seconds;
        m_current.bytesPerSecond = double(rateBytes(m_current) - m_lastBytes) / seconds;
        m_lastFiles = m_current.filesIndexed;
        m_lastBytes = rateBytes(m_current);
        m_lastSample = now;
    }
    auto& discoveries = m_current.discoveries;
    discoveries.insert(discoveries.end(), m_pendingDiscoveries.begin(), m_pendingDiscoveries.end());
    m_pendingDiscoveries.clear();
    if (discoveries.size() > keptDiscoveries)
        discoveries.erase(discoveries.begin(), discoveries.end() - std::ptrdiff_t(keptDiscoveries));
    m_current.elapsed = now - m_started;
    // The path becomes text only in the copy handed out, so no text is shared between threads.
    ScanTelemetry snapshot = m_current;
    snapshot.scanningPath = QFile::decodeName(QByteArray::fromStdString(m_scanning));
    return snapshot;
}
