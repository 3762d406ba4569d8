#pragma once

#include "duplicates/FileRecord.h"
#include "duplicates/InventoryStats.h"
#include "duplicates/NameStore.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

// What to inventory: the folders the user chose, whose home it is (for the exclusion rules), the size
// below which files are not recorded, and whether the walk stays on each root's device.
struct InventoryOptions {
    std::vector<std::string> roots;
    std::string homePath;
    std::uint64_t sizeFloor = 0;
    bool sameDevice = false;
};

// A file's identity: its device and inode.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

struct FileIdentityHash {
    std::size_t operator()(const FileIdentity& identity) const
    {
        return std::hash<std::uint64_t>()(identity.inode * 0x9E3779B97F4A7C15ull ^ identity.device);
    }
};

// For each hard-linked file recorded under its first name, the full paths of its further names.
using HardlinkAliases = std::unordered_map<FileIdentity, std::vector<std::string>, FileIdentityHash>;

// The result of an inventory run: a flat list of regular files. The list is a deque because it grows by
// appending to the end while the readers work: a vector would hold its old and new copies at once each
// time it grew, twice the memory at the worst moment. The records' names and the folders' full paths
// live in `names`.
struct Inventory {
    NameStore names;
    std::deque<FileRecord> records;
    std::vector<std::string_view> directories;
    InventoryStats stats;
    HardlinkAliases hardlinkAliases;

    std::string path(const FileRecord& record) const;
};

// Walks the chosen folders with several directory readers at once and lists every regular file in them,
// with hard links recorded once.
class FileInventory {
public:
    using Cancelled = std::function<bool()>;
    using Progress = std::function<void(const InventoryStats&)>;

    // Blocks until every reader has finished. `progress` is called from the readers after each folder.
    // The roots and the home are resolved first (every link on them followed), so every path in the
    // result is a resolved one.
    static Inventory build(const InventoryOptions& options, const Cancelled& cancelled, const Progress& progress);

    // One folder waiting to be read.
    struct Job {
        std::string_view path; // in State::names
        std::int32_t directoryID = 0;
        std::uint32_t device = 0;
    };

    // What the readers share, guarded by `lock`: readers take jobs and merge each folder's findings under
    // it, and read folders with it released.
    struct State {
        std::mutex lock;
        std::condition_variable condition;
        std::deque<Job> queue;
        int busy = 0; // readers working on a job
        std::unordered_set<FileIdentity, FileIdentityHash> seenDirectories;
        std::unordered_set<FileIdentity, FileIdentityHash> seenFiles;
        NameStore names;
        std::vector<std::string_view> directories;
        std::deque<FileRecord> records;
        HardlinkAliases aliases;
        InventoryStats stats;
        bool cancelled = false;
    };

    // The number of readers for this machine: processors minus 2, kept between 2 and 8.
    static int readerCount();
};
