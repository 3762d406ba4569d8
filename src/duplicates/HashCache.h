#pragma once

#include "duplicates/ContentHash.h"

#include <QString>

#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

// The sample hashes computed in earlier runs, for one volume, so that unchanged files are not read again.
// Kept per volume so a disk that moves to another machine or mount point keeps its hashes, and so that
// inode numbers of one volume are never mistaken for another's. The cache is never held in memory: a
// scan reads the file once to match it against its own files (both in key order) and writes it once,
// merged with what it sampled (see HashCacheFile.h for the file's shape).
class HashCache {
public:
    // An entry is reused only while the file keeps its inode, content time and length.
    struct Key {
        std::uint64_t fileID = 0;
        std::int64_t mtimeNsec = 0;
        std::uint64_t size = 0;
        friend auto operator<=>(const Key&, const Key&) = default;
    };

    // One stored hash.
    struct Entry {
        std::uint64_t fileID = 0;
        std::int64_t mtimeNsec = 0;
        std::uint64_t size = 0;
        std::uint64_t low = 0;
        std::uint64_t high = 0;

        Key key() const { return {fileID, mtimeNsec, size}; }
        ContentHash hash() const { return {low, high}; }
        friend bool operator==(const Entry&, const Entry&) = default;
    };

    // The entries a scan adds, by position: ascending, no key twice. Looked up one at a time rather than
    // held in a list, as a first scan can add a few hundred thousand.
    struct AddedEntries {
        std::size_t count = 0;
        std::function<Entry(std::size_t)> at;
    };

    explicit HashCache(std::string volumeUUID);
    // "$XDG_CACHE_HOME/Velloru/Duplicates/hashes-<volume UUID>.json".
    static QString fileFor(const std::string& volumeUUID);

    // Whether a cache file exists for the volume.
    bool isStored() const;
    // Hands every stored entry to `onEntry`, in ascending key order. A missing file, or one written for
    // another volume, holds nothing. False when the file turns out not to be a hash cache: it is then kept
    // aside, and the entries already handed over must not be used.
    bool read(const std::function<void(const Entry&)>& onEntry) const;
    // Writes the stored entries merged with `added` (an added entry replaces a stored one with its key) in
    // one atomic step. Returns a sentence saying what failed, or nothing.
    std::optional<QString> save(const AddedEntries& added) const;

    const std::string& volumeUUID() const { return m_volumeUUID; }

private:
    // One attempt at save(): with the stored entries, or with the added ones only. `storedUsable` turns
    // false (and nothing is written) when the stored file proves not to be a cache.
    std::optional<QString> write(const AddedEntries& added, bool withStored, bool& storedUsable) const;

    QString m_fileURL;
    std::string m_volumeUUID;
};
