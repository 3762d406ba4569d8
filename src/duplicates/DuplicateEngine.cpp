#include "duplicates/DuplicateEngine.h"

#include "duplicates/CandidateSampler.h"
#include "duplicates/ContentVerifier.h"
#include "duplicates/FileInventory.h"
#include "duplicates/LockedQueue.h"
#include "duplicates/VolumeHashCaches.h"
#include "platform/VolumeIdentity.h"

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
    total.changedDuringScan += delta.changedDuringScan;
}

void DuplicateEngine::reportProgress(Shared& shared, const Callbacks& callbacks, double total, std::int64_t units)
{
    if (!callbacks.progress)
        return;
    EngineStats snapshot;
    double fraction = 0;
    {
        std::lock_guard guard(shared.lock);
        shared.unitsDone += units;
        snapshot = shared.stats;
        fraction = total > 0 ? double(shared.unitsDone) / total : 1.0;
    }
    callbacks.progress(snapshot, std::min(fraction, 1.0));
}

Candidates DuplicateEngine::sizeCandidates(const Inventory& inventory, EngineStats& stats)
{
    // Sorting (size, index) pairs, read from the records in one pass, keeps each size's files in inventory
    // order; sorting indices that look their sizes up in the records is several times slower.
    std::vector<std::pair<std::uint64_t, std::uint32_t>> bySize;
    bySize.reserve(inventory.records.size());
    std::uint32_t index = 0;
    for (const FileRecord& record : inventory.records)
        bySize.emplace_back(record.size, index++);
    std::sort(bySize.begin(), bySize.end());

    Candidates candidates;
    for (std::size_t start = 0; start < bySize.size();) {
        const std::uint64_t size = bySize[start].first;
        std::size_t end = start + 1;
        while (end < bySize.size() && bySize[end].first == size)
            ++end;
        if (end - start >= 2) {
            for (std::size_t i = start; i < end; ++i)
                candidates.records.push_back(bySize[i].second);
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
    const auto usable = [&](std::uint32_t position) {
        return candidates.states[position] == Candidates::State::sampled
            || candidates.states[position] == Candidates::State::cached;
    };
    const auto sizeOf = [&](std::uint32_t position) { return inventory.records[candidates.records[position]].size; };
    // Candidates come in size order: equal samples are brought together within each size's run.
    std::vector<Group> groups;
    std::vector<std::uint32_t> run;
    for (std::uint32_t start = 0; start < candidates.size();) {
        const std::uint64_t size = sizeOf(start);
        std::uint32_t end = start + 1;
        while (end < candidates.size() && sizeOf(end) == size)
            ++end;
        run.clear();
        for (std::uint32_t position = start; position < end; ++position)
            if (usable(position))
                run.push_back(position);
        std::sort(run.begin(), run.end(), [&](std::uint32_t a, std::uint32_t b) {
            return candidates.samples[a] != candidates.samples[b] ? candidates.samples[a] < candidates.samples[b]
                                                                  : candidates.records[a] < candidates.records[b];
        });
        for (std::size_t first = 0; first < run.size();) {
            std::size_t last = first + 1;
            while (last < run.size() && candidates.samples[run[last]] == candidates.samples[run[first]])
                ++last;
            if (last - first >= 2) {
                Group& group = groups.emplace_back();
                for (std::size_t i = first; i < last; ++i)
                    group.push_back(candidates.records[run[i]]);
                stats.candidatesAfterPrehash += std::int64_t(group.size());
                stats.candidateBytesAfterPrehash += std::int64_t(group.size() * size);
            }
            first = last;
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
        ContentVerifier verifier(inventory, width, cancelled, [&] {
            return pending.takeLastIf([&](const Group& group) {
                return inventory.records[group.front()].size <= ContentVerifier::sideWorkSize;
            });
        });
        const auto publish = [&](ContentVerifier::Outcome outcome) {
            for (const VerifiedGroup& group : outcome.confirmed)
                if (callbacks.confirmed)
                    callbacks.confirmed(group);
            {
                std::lock_guard guard(shared.lock);
                addCounts(shared.stats, outcome.counts);
                for (VerifiedGroup& group : outcome.confirmed) {
                    ++shared.stats.groupsConfirmed;
                    shared.stats.reclaimableBytes += std::int64_t(group.size * (group.members.size() - 1));
                    shared.verified.push_back(std::move(group));
                }
            }
            reportProgress(shared, callbacks, pendingCount, outcome.groupsDone);
        };
        while (!cancelled()) {
            Group* group = pending.take();
            if (!group)
                break;
            publish(verifier.verify(std::move(*group)));
        }
        publish(verifier.finish()); // the sets whose hash came in last
    });

    shared.stats.phase = EnginePhase::finished;
    return {std::move(shared.verified), shared.stats};
}
