#pragma once

#include "duplicates/Candidates.h"
#include "duplicates/HashCache.h"

#include <cstdint>
#include <memory>
#include <vector>

struct Inventory;

// The hash caches of every volume an inventory's files are on. Two devices that report the same volume
// UUID (subvolumes of one file system) share one cache, so its file is written once.
class VolumeHashCaches {
public:
    static VolumeHashCaches open(const Inventory& inventory);

    // Nothing for a device whose volume has no identity.
    HashCache* forDevice(std::uint32_t device) const;

    // Fills in the samples the caches hold for candidates that are still the files they were, marking them
    // cached. Returns how many were found.
    std::int64_t takeCachedSamples(const Inventory& inventory, Candidates& candidates) const;
    // Adds the samples read in this run to the caches of their volumes; failures are logged by the cache.
    void saveNewSamples(const Inventory& inventory, const Candidates& candidates) const;

private:
    std::vector<std::unique_ptr<HashCache>> m_caches;
    std::vector<std::pair<std::uint32_t, HashCache*>> m_byDevice;
};
