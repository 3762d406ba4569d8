#include "duplicates/VolumeHashCaches.h"

#include "duplicates/FileInventory.h"
#include "platform/VolumeIdentity.h"

#include <algorithm>

namespace {

HashCache::Key keyOf(const FileRecord& record)
{
    return {record.fileID, record.mtimeNsec, record.size};
}

// The positions of the candidates on `cache`'s volume whose state is `state`, in key order. Positions
// rather than keys, as a first scan can have a few hundred thousand of them; they are sorted by inode
// number taken out beside them, which almost always decides, rather than by looking each key up.
std::vector<std::uint32_t> positionsOn(const VolumeHashCaches& caches, const HashCache* cache,
    const Inventory& inventory, const Candidates& candidates, Candidates::State state)
{
    std::vector<std::pair<std::uint64_t, std::uint32_t>> byInode;
    byInode.reserve(candidates.size()); // nearly all of them on a one-volume scan; no regrowth
    for (std::uint32_t position = 0; position < candidates.size(); ++position) {
        const FileRecord& record = inventory.records[candidates.records[position]];
        if (candidates.states[position] == state && caches.forDevice(record.device) == cache)
            byInode.emplace_back(record.fileID, position);
    }
    const auto keyAt = [&](std::uint32_t position) { return keyOf(inventory.records[candidates.records[position]]); };
    std::sort(byInode.begin(), byInode.end(), [&](const auto& a, const auto& b) {
        return a.first != b.first ? a.first < b.first : keyAt(a.second) < keyAt(b.second);
    });
    std::vector<std::uint32_t> positions;
    positions.reserve(byInode.size());
    for (const auto& [inode, position] : byInode)
        positions.push_back(position);
    return positions;
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
    const auto keyAt = [&](std::uint32_t position) { return keyOf(inventory.records[candidates.records[position]]); };
    std::int64_t found = 0;
    for (const auto& cache : m_caches) {
        if (!cache->isStored())
            continue; // a first scan of the volume: nothing to look up
        const auto wanted = positionsOn(*this, cache.get(), inventory, candidates, Candidates::State::unsampled);
        if (wanted.empty())
            continue;
        // Both lists ascend, so one pass over each matches them.
        std::size_t next = 0;
        std::int64_t foundHere = 0;
        const bool usable = cache->read([&](const HashCache::Entry& entry) {
            const HashCache::Key key = entry.key();
            while (next < wanted.size() && keyAt(wanted[next]) < key)
                ++next;
            for (std::size_t i = next; i < wanted.size() && keyAt(wanted[i]) == key; ++i) {
                candidates.samples[wanted[i]] = entry.hash();
                candidates.states[wanted[i]] = Candidates::State::cached;
                ++foundHere;
            }
        });
        if (!usable) {
            for (const std::uint32_t position : wanted)
                candidates.states[position] = Candidates::State::unsampled;
            foundHere = 0;
        }
        found += foundHere;
    }
    return found;
}

void VolumeHashCaches::saveNewSamples(const Inventory& inventory, const Candidates& candidates) const
{
    const auto keyAt = [&](std::uint32_t position) { return keyOf(inventory.records[candidates.records[position]]); };
    for (const auto& cache : m_caches) {
        auto sampled = positionsOn(*this, cache.get(), inventory, candidates, Candidates::State::sampled);
        if (sampled.empty())
            continue; // nothing new: the file stays as it is
        // One file seen on two devices of the volume is stored once.
        sampled.erase(std::unique(sampled.begin(), sampled.end(),
                          [&](std::uint32_t a, std::uint32_t b) { return keyAt(a) == keyAt(b); }),
            sampled.end());
        cache->save({sampled.size(), [&](std::size_t i) {
                         const HashCache::Key key = keyAt(sampled[i]);
                         const ContentHash& hash = candidates.samples[sampled[i]];
                         return HashCache::Entry{key.fileID, key.mtimeNsec, key.size, hash.low, hash.high};
                     }});
    }
}
