#include "duplicates/DuplicateEngine.h"

#include "common/Log.h"
#include "duplicates/CandidateSampler.h"
#include "duplicates/ContentVerifier.h"
#include "duplicates/FileInventory.h"
#include "duplicates/LockedQueue.h"
#include "duplicates/VolumeHashCaches.h"
#include "platform/VolumeIdentity.h"

#include <QString>

#include <algorithm>
#include <thread>

namespace {

using Group = std::vector<std::uint32_t>;

template <typename Work> void runPool(int workers, const Work& work)
{
    std::vector<std::jthread> pool;
    for (int i = 0; i < workers; ++i)
        pool.emplace_back(work);
} // the pool is joined when it goes out of scope

// Copies on a local disk are read side by side; on a network volume one at a time.
std::size_t batchWidthFor(const Inventory& inventory, const std::vector<Group>& pending)
{
    if (pending.empty())
        return 16;
    return volumeKind(inventory.path(inventory.records[pending.front().front()])) == VolumeKind::local ? 16 : 1;
}

} // namespace

int DuplicateEngine::samplingWorkerCount()
{
    return std::clamp(int(std::thread::hardware_concurrency()) - 2, 2, 6);
}

int DuplicateEngine::verifyWorkerCount()
{
    return std::clamp(int(std::thread::hardware_concurrency()) - 2, 1, 3);
}

void DuplicateEngine::addCounts(EngineStats& total, const EngineStats& delta)
{
    total.prehashBytesRead += delta.prehashBytesRead;
    total.verifyBytesRead += delta.verifyBytesRead;
    total.prunedByCache += delta.prunedByCache;
    total.datalessAtRead += delta.datalessAtRead;
    total.unreadable += delta.unreadable;
}

void DuplicateEngine::reportProgress(Shared& shared, const Callbacks& callbacks, double total)
{
    if (!callbacks.progress)
        return;
    EngineStats snapshot;
    double fraction = 0;
    {
        std::lock_guard guard(shared.lock);
        ++shared.unitsDone;
        snapshot = shared.stats;
        fraction = total > 0 ? double(shared.unitsDone) / total : 1.0;
    }
    callbacks.progress(snapshot, std::min(fraction, 1.0));
}

Candidates DuplicateEngine::sizeCandidates(const Inventory& inventory, EngineStats& stats)
{
    // Sorting indices by size keeps each size's files in inventory order without a map of lists.
    std::vector<std::uint32_t> order(inventory.records.size());
    for (std::uint32_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
        const std::uint64_t sizeA = inventory.records[a].size;
        const std::uint64_t sizeB = inventory.records[b].size;
        return sizeA != sizeB ? sizeA < sizeB : a < b;
    });

    Candidates candidates;
    for (std::size_t start = 0; start < order.size();) {
        const std::uint64_t size = inventory.records[order[start]].size;
        std::size_t end = start + 1;
        while (end < order.size() && inventory.records[order[end]].size == size)
            ++end;
        if (end - start >= 2) {
            candidates.records.insert(
                candidates.records.end(), order.begin() + std::ptrdiff_t(start), order.begin() + std::ptrdiff_t(end));
            ++stats.sizeBuckets;
            stats.candidatesAfterSize += std::int64_t(end - start);
            stats.candidateBytesAfterSize += std::int64_t(size * (end - start));
        }
        start = end;
    }
    candidates.records.shrink_to_fit();
    candidates.samples.resize(candidates.size());
    candidates.states.resize(candidates.size(), Candidates::State::unsampled);
    return candidates;
}

std::vector<std::vector<std::uint32_t>> DuplicateEngine::sampleGroups(
    const Inventory& inventory, const Candidates& candidates, EngineStats& stats)
{
    // Candidates are in size order already; equal samples are brought together within each size.
    std::vector<std::uint32_t> order;
    order.reserve(candidates.size());
    for (std::uint32_t position = 0; position < candidates.size(); ++position)
        if (candidates.states[position] == Candidates::State::sampled
            || candidates.states[position] == Candidates::State::cached)
            order.push_back(position);
    const auto sizeOf = [&](std::uint32_t position) { return inventory.records[candidates.records[position]].size; };
    std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
        if (sizeOf(a) != sizeOf(b))
            return sizeOf(a) < sizeOf(b);
        if (candidates.samples[a] != candidates.samples[b])
            return candidates.samples[a] < candidates.samples[b];
        return candidates.records[a] < candidates.records[b];
    });

    std::vector<Group> groups;
    for (std::size_t start = 0; start < order.size();) {
        std::size_t end = start + 1;
        while (end < order.size() && sizeOf(order[end]) == sizeOf(order[start])
            && candidates.samples[order[end]] == candidates.samples[order[start]])
            ++end;
        if (end - start >= 2) {
            Group& group = groups.emplace_back();
            for (std::size_t i = start; i < end; ++i)
                group.push_back(candidates.records[order[i]]);
            stats.candidatesAfterPrehash += std::int64_t(group.size());
            stats.candidateBytesAfterPrehash += std::int64_t(group.size() * sizeOf(order[start]));
        }
        start = end;
    }
    const auto work = [&](const Group& group) { return inventory.records[group.front()].size * group.size(); };
    std::stable_sort(groups.begin(), groups.end(), [&](const Group& a, const Group& b) { return work(a) > work(b); });
    return groups;
}

DuplicateEngine::Result DuplicateEngine::run(const Inventory& inventory, const VolumeHashCaches* caches,
    const Callbacks& callbacks, const std::function<bool()>& cancelled)
{
    Shared shared;
    shared.stats.phase = EnginePhase::bucketing;
    Candidates candidates = sizeCandidates(inventory, shared.stats);
    if (callbacks.progress)
        callbacks.progress(shared.stats, 1.0);

    shared.stats.phase = EnginePhase::prehashing;
    if (caches)
        shared.stats.prunedByCache = caches->takeCachedSamples(inventory, candidates);
    sampleCandidates(inventory, candidates, samplingWorkerCount(), shared, callbacks, cancelled);
    if (caches) // also after a cancel, so the files sampled so far are not read again
        caches->saveNewSamples(inventory, candidates);
    if (cancelled())
        return {{}, shared.stats};
    std::vector<Group> groups = sampleGroups(inventory, candidates, shared.stats);
    candidates = {}; // what the comparison needs is in the groups now

    shared.stats.phase = EnginePhase::verifying;
    shared.unitsDone = 0;
    const std::size_t width = batchWidthFor(inventory, groups);
    LockedQueue<Group> pending(std::move(groups));
    const double pendingCount = double(pending.size());
    runPool(verifyWorkerCount(), [&] {
        ContentVerifier verifier(inventory, width, cancelled);
        while (!cancelled()) {
            Group* group = pending.take();
            if (!group)
                break;
            ContentVerifier::Outcome outcome = verifier.verify(std::move(*group));
            for (const VerifiedGroup& confirmed : outcome.confirmed)
                if (callbacks.confirmed)
                    callbacks.confirmed(confirmed);
            {
                std::lock_guard guard(shared.lock);
                addCounts(shared.stats, outcome.counts);
                shared.changedDuringScan += outcome.changedDuringScan;
                for (VerifiedGroup& confirmed : outcome.confirmed) {
                    ++shared.stats.groupsConfirmed;
                    shared.stats.reclaimableBytes += std::int64_t(confirmed.size * (confirmed.members.size() - 1));
                    shared.verified.push_back(std::move(confirmed));
                }
            }
            reportProgress(shared, callbacks, pendingCount);
        }
    });

    if (shared.changedDuringScan > 0)
        logLine(QStringLiteral("duplicate scan: files changed during the scan and were left out count=%1")
                    .arg(shared.changedDuringScan));
    shared.stats.phase = EnginePhase::finished;
    return {std::move(shared.verified), shared.stats};
}
