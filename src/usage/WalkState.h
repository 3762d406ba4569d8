#pragma once

#include "usage/DirNode.h"
#include "usage/LargestFiles.h"
#include "usage/Progress.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

// A folder waiting to be listed, and the top-level folder it descends from. A folder joins its parent's
// subfolders only once its own listing has shown it is on the walk's volume and not yet measured, so
// `parent` is where it goes then; none for a top-level folder, which the root listing already checked.
struct Job {
    std::shared_ptr<DirNode> node;
    std::size_t branch = 0;
    DirNode* parent = nullptr;
};

// A file or folder as the file system knows it: bind mounts share the device number, so the pair is
// what tells two names of one folder apart from two folders.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t fileID = 0;
    bool operator==(const FileIdentity&) const = default;
};

struct FileIdentityHash {
    std::size_t operator()(const FileIdentity& identity) const
    {
        return std::hash<std::uint64_t>()(identity.fileID * 0x9E3779B97F4A7C15ull ^ identity.device);
    }
};

// Shared by the workers and the driving loop. `lock` guards every field below it. Idle workers sleep on
// `condition`; the driving loop sleeps on `branchDone` of its own, so that the many wake-ups among the
// workers never wake it for nothing.
struct WalkState {
    std::mutex lock;
    std::condition_variable condition;
    std::condition_variable branchDone;
    std::deque<Job> queue;
    int busy = 0;                                            // workers listing a folder right now
    std::unordered_set<FileIdentity, FileIdentityHash> seen; // folders already measured or being measured
    std::vector<std::int64_t> outstanding;                   // per branch: folders queued or being listed
    std::vector<std::size_t> completed;                      // branches whose subtree is done, not yet reported
    bool cancelled = false;
    // Files with more than one name, so that a hard-linked file is counted once, as `du` does.
    std::unordered_set<FileIdentity, FileIdentityHash> seenFiles;
    WalkCounters counters;
    std::vector<std::string> unreadableFolders; // in the order they were found
    LargestFiles largestFiles;                  // each worker's merged in as it returns
};
