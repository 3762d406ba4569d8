#pragma once

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
    // Saves every cache that received new entries; failures are logged by the cache.
    void saveAll() const;

private:
    std::vector<std::unique_ptr<HashCache>> m_caches;
    std::vector<std::pair<std::uint32_t, HashCache*>> m_byDevice;
};
