#include "duplicates/DuplicateEngine.h"

#include "common/Log.h"
#include "duplicates/ContentVerifier.h"
#include "duplicates/FileInventory.h"
#include "duplicates/LockedQueue.h"
#include "duplicates/SampleHash.h"
#include "duplicates/VolumeHashCaches.h"
#include "platform/VolumeIdentity.h"

#include <QString>

#include <algorithm>
#include <thread>

namespace {

using Bucket = std::vector<std::uint32_t>;

void addCounts(EngineStats& total, const EngineStats& delta)
{
    total.prehashBytesRead += delta.prehashBytesRead;
    total.verifyBytesRead += delta.verifyBytesRead;
    total.prunedByCache += delta.prunedByCache;
    total.datalessAtRead += delta.datalessAtRead;
    total.unreadable += delta.unreadable;
}

template <typename Work> void runPool(int workers, const Work& work)
{
    std::vector<std::jthread> pool;
    for (int i = 0; i < workers; ++i)
        pool.emplace_back(work);
} // the pool is joined when it goes out of scope

void reportProgress(DuplicateEngine::Shared& shared, const DuplicateEngine::Callbacks& callbacks, double total)
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

// Samples every member of one bucket and splits it by sample hash.
void sampleBucket(const Inventory& inventory, const Bucket& bucket, const VolumeHashCaches* caches, Sha256& hasher,
    SampleBuffer& buffer, DuplicateEngine::Shared& shared)
{
    EngineStats counts;
    std::int64_t changed = 0;
    std::vector<std::pair<ContentHash, std::uint32_t>> sampled;
    sampled.reserve(bucket.size());
    for (const std::uint32_t index : bucket) {
        const FileRecord& record = inventory.records[index];
        HashCache* cache = caches ? caches->forDevice(record.device) : nullptr;
        const HashCache::Key key{record.fileID, record.mtimeNsec, record.size};
        if (cache) {
            if (const std::optional<ContentHash> cached = cache->lookup(key)) {
                ++counts.prunedByCache;
                sampled.emplace_back(*cached, index);
                continue;
            }
        }
        const RecordedFile opened = RecordedFile::open(inventory.path(record), record);
        SampleResult sample;
        if (opened.file)
            sample = sampleHash(*opened.file, record.size, hasher, buffer);
        else
            sample.problem = opened.problem;
        counts.prehashBytesRead += std::int64_t(sample.bytesRead);
        switch (sample.problem) {
        case ReadProblem::notPresentLocally: ++counts.datalessAtRead; continue;
        case ReadProblem::unreadable: ++counts.unreadable; continue;
        case ReadProblem::changed: ++changed; continue;
        case ReadProblem::none: break;
        }
        if (cache)
            cache->store(key, sample.hash);
        sampled.emplace_back(sample.hash, index);
    }

    // Equal hashes side by side, each run in inventory order.
    std::sort(sampled.begin(), sampled.end());
    std::vector<Bucket> groups;
    for (std::size_t start = 0; start < sampled.size();) {
        std::size_t end = start + 1;
        while (end < sampled.size() && sampled[end].first == sampled[start].first)
            ++end;
        if (end - start >= 2) {
            Bucket& group = groups.emplace_back();
            for (std::size_t i = start; i < end; ++i)
                group.push_back(sampled[i].second);
        }
        start = end;
    }

    std::lock_guard guard(shared.lock);
    addCounts(shared.stats, counts);
    shared.changedDuringScan += changed;
    for (Bucket& group : groups) {
        shared.stats.candidatesAfterPrehash += std::int64_t(group.size());
        shared.stats.candidateBytesAfterPrehash += std::int64_t(group.size() * inventory.records[group.front()].size);
        shared.pendingGroups.push_back(std::move(group));
    }
}

// Copies on a local disk are read side by side; on a network volume one at a time.
std::size_t batchWidthFor(const Inventory& inventory, const std::vector<Bucket>& pending)
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

std::vector<std::vector<std::uint32_t>> DuplicateEngine::sizeBuckets(const Inventory& inventory, EngineStats& stats)
{
    // Sorting indices by size keeps each bucket in inventory order without a map of lists.
    std::vector<std::uint32_t> order(inventory.records.size());
    for (std::uint32_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
        const std::uint64_t sizeA = inventory.records[a].size;
        const std::uint64_t sizeB = inventory.records[b].size;
        return sizeA != sizeB ? sizeA < sizeB : a < b;
    });

    std::vector<Bucket> buckets;
    for (std::size_t start = 0; start < order.size();) {
        const std::uint64_t size = inventory.records[order[start]].size;
        std::size_t end = start + 1;
        while (end < order.size() && inventory.records[order[end]].size == size)
            ++end;
        if (end - start >= 2) {
            buckets.emplace_back(order.begin() + std::ptrdiff_t(start), order.begin() + std::ptrdiff_t(end));
            ++stats.sizeBuckets;
            stats.candidatesAfterSize += std::int64_t(end - start);
            stats.candidateBytesAfterSize += std::int64_t(size * (end - start));
        }
        start = end;
    }
    std::sort(buckets.begin(), buckets.end(), [](const Bucket& a, const Bucket& b) {
        return a.size() != b.size() ? a.size() > b.size() : a.front() > b.front();
    });
    return buckets;
}

DuplicateEngine::Result DuplicateEngine::run(const Inventory& inventory, const VolumeHashCaches* caches,
    const Callbacks& callbacks, const std::function<bool()>& cancelled)
{
    Shared shared;
    shared.stats.phase = EnginePhase::bucketing;
    LockedQueue<Bucket> buckets(sizeBuckets(inventory, shared.stats));
    if (callbacks.progress)
        callbacks.progress(shared.stats, 1.0);

    shared.stats.phase = EnginePhase::prehashing;
    const double bucketCount = double(buckets.size());
    runPool(samplingWorkerCount(), [&] {
        Sha256 hasher;
        SampleBuffer buffer;
        while (!cancelled()) {
            const Bucket* bucket = buckets.take();
            if (!bucket)
                break;
            sampleBucket(inventory, *bucket, caches, hasher, buffer, shared);
            reportProgress(shared, callbacks, bucketCount);
        }
    });

    shared.stats.phase = EnginePhase::verifying;
    shared.unitsDone = 0;
    const std::size_t width = batchWidthFor(inventory, shared.pendingGroups);
    LockedQueue<Bucket> pending(std::move(shared.pendingGroups));
    const double pendingCount = double(pending.size());
    runPool(cancelled() ? 0 : verifyWorkerCount(), [&] {
        ContentVerifier verifier(inventory, width, cancelled);
        while (!cancelled()) {
            Bucket* group = pending.take();
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

    if (caches)
        caches->saveAll();
    if (shared.changedDuringScan > 0)
        logLine(QStringLiteral("duplicate scan: files changed during the scan and were left out count=%1")
                    .arg(shared.changedDuringScan));
    shared.stats.phase = EnginePhase::finished;
    return {std::move(shared.verified), shared.stats};
}
