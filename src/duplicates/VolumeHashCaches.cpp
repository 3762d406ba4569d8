#include "duplicates/VolumeHashCaches.h"

#include "duplicates/FileInventory.h"
#include "platform/VolumeIdentity.h"

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
        if (const auto uuid = volumeUUID(inventory.directories[std::size_t(record.directory)])) {
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

void VolumeHashCaches::saveAll() const
{
    for (const auto& cache : m_caches)
        cache->save();
}
