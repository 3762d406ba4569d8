#include "duplicates/VolumeHashCaches.h"

#include "duplicates/FileInventory.h"
#include "platform/VolumeIdentity.h"

#include <algorithm>

namespace {

// A candidate's cache key beside its position.
struct KeyedPosition {
    HashCache::Key key;
    std::uint32_t position = 0;
};

// The candidates on `cache`'s volume whose state is `state`, in key order. The keys are taken out beside
// the positions, once, in list order: matching and writing then read them in key order without looking
// each one up in the records again, which a first scan of a few hundred thousand files notices.
std::vector<KeyedPosition> keyedOn(const VolumeHashCaches& caches, const HashCache* cache, const Inventory& inventory,
    const Candidates& candidates, Candidates::State state)
{
    std::vector<KeyedPosition> keyed;
    keyed.reserve(candidates.size()); // nearly all of them on a one-volume scan; no regrowth
    for (std::uint32_t position = 0; position < candidates.size(); ++position) {
        const FileRecord& record = inventory.records[candidates.records[position]];
        if (candidates.states[position] == state && caches.forDevice(record.device) == cache)
            keyed.push_back({{record.fileID, record.mtimeNsec, record.size}, position});
    }
    std::sort(keyed.begin(), keyed.end(), [](const KeyedPosition& a, const KeyedPosition& b) { return a.key < b.key; });
    return keyed;
}

} // namespace

VolumeHashCaches VolumeHashCaches::open(const Inventory& inventory)
{
    VolumeHashCaches caches;
    for (const FileRecord& record : inventory.records) {
        bool known = false;
        for (const auto& [device, cache] : caches.m_byDevice)
            known = known || device == record.device;
        if (known)
            continue;
        HashCache* cache = nullptr;
        if (const auto uuid = volumeUUID(std::string(inventory.directories[std::size_t(record.directory)]))) {
            for (const auto& open : caches.m_caches)
                if (open->volumeUUID() == *uuid)
                    cache = open.get();
            if (!cache)
                cache = caches.m_caches.emplace_back(std::make_unique<HashCache>(*uuid)).get();
        }
        caches.m_byDevice.emplace_back(record.device, cache);
    }
    return caches;
}

HashCache* VolumeHashCaches::forDevice(std::uint32_t device) const
{
    for (const auto& [known, cache] : m_byDevice)
        if (known == device)
            return cache;
    return nullptr;
}

std::int64_t VolumeHashCaches::takeCachedSamples(const Inventory& inventory, Candidates& candidates) const
{
    std::int64_t found = 0;
    for (const auto& cache : m_caches) {
        if (!cache->isStored())
            continue; // a first scan of the volume: nothing to look up
        const auto wanted = keyedOn(*this, cache.get(), inventory, candidates, Candidates::State::unsampled);
        if (wanted.empty())
            continue;
        // Both lists ascend, so one pass over each matches them.
        std::size_t next = 0;
        std::int64_t foundHere = 0;
        const bool usable = cache->read([&](const HashCache::Entry& entry) {
            const HashCache::Key key = entry.key();
            while (next < wanted.size() && wanted[next].key < key)
                ++next;
            for (std::size_t i = next; i < wanted.size() && wanted[i].key == key; ++i) {
                candidates.samples[wanted[i].position] = entry.hash();
                candidates.states[wanted[i].position] = Candidates::State::cached;
                ++foundHere;
            }
        });
        if (!usable) {
            for (const KeyedPosition& candidate : wanted)
                candidates.states[candidate.position] = Candidates::State::unsampled;
            foundHere = 0;
        }
        found += foundHere;
    }
    return found;
}

void VolumeHashCaches::saveNewSamples(const Inventory& inventory, const Candidates& candidates) const
{
    for (const auto& cache : m_caches) {
        auto sampled = keyedOn(*this, cache.get(), inventory, candidates, Candidates::State::sampled);
        if (sampled.empty())
            continue; // nothing new: the file stays as it is
        // One file seen on two devices of the volume is stored once.
        sampled.erase(std::unique(sampled.begin(), sampled.end(),
                          [](const KeyedPosition& a, const KeyedPosition& b) { return a.key == b.key; }),
            sampled.end());
        cache->save({sampled.size(), [&](std::size_t i) {
                         const HashCache::Key& key = sampled[i].key;
                         const ContentHash& hash = candidates.samples[sampled[i].position];
                         return HashCache::Entry{key.fileID, key.mtimeNsec, key.size, hash.low, hash.high};
                     }});
    }
}
