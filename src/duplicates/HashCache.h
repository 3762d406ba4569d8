#pragma once

#include "duplicates/ContentHash.h"

#include <QString>

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

// The sample hashes computed in earlier runs, for one volume, so that unchanged files are not read again.
// Kept per volume so a disk that moves to another machine or mount point keeps its hashes, and so that
// inode numbers of one volume are never mistaken for another's. Lookups and stores may come from many
// hashing threads at once.
class HashCache {
public:
    // An entry is reused only while the file keeps its inode, content time and length.
    struct Key {
        std::uint64_t fileID = 0;
        std::int64_t mtimeNsec = 0;
        std::uint64_t size = 0;
        friend bool operator==(const Key&, const Key&) = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const;
    };

    // One stored hash, as written in the file (see HashCacheFile.h for the file's shape).
    struct Entry {
        std::uint64_t fileID = 0;
        std::int64_t mtimeNsec = 0;
        std::uint64_t size = 0;
        std::uint64_t low = 0;
        std::uint64_t high = 0;
    };

    // Loads the cache file of the volume at once; a missing, unreadable or foreign file starts it empty.
    explicit HashCache(std::string volumeUUID);
    // "$XDG_CACHE_HOME/Velloru/Duplicates/hashes-<volume UUID>.json".
    static QString fileFor(const std::string& volumeUUID);

    std::optional<ContentHash> lookup(const Key& key) const;
    void store(const Key& key, const ContentHash& hash);
    // Writes the whole cache when entries were added since the last save. Returns a sentence saying what
    // failed, or nothing.
    std::optional<QString> save();

    const std::string& volumeUUID() const { return m_volumeUUID; }
    std::size_t size() const;

private:
    mutable std::mutex m_lock; // guards m_map and m_dirty
    std::unordered_map<Key, ContentHash, KeyHash> m_map;
    bool m_dirty = false;
    QString m_fileURL;
    std::string m_volumeUUID;
};
