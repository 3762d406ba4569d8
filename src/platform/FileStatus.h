#pragma once

#include <cstdint>
#include <optional>

// What the walkers need to know about one file, read with a single statx call.
struct FileStatus {
    std::uint64_t device = 0; // st_dev as one number (major and minor combined as makedev does)
    std::uint64_t inode = 0;
    std::uint32_t linkCount = 0;
    std::uint32_t mode = 0; // file type and permission bits
    std::uint32_t uid = 0;
    std::int64_t size = 0;          // data length
    std::int64_t allocatedSize = 0; // blocks × 512: what the file takes on disk
    std::int64_t modifiedSeconds = 0;
    std::int64_t modifiedNanoseconds = 0;
    std::int64_t changedSeconds = 0;
    std::int64_t createdSeconds = 0; // 0 when the file system does not record creation
    bool immutable = false;          // chattr +i
    bool appendOnly = false;         // chattr +a

    bool isRegular() const;
    bool isDirectory() const;
    bool isSymlink() const;
    bool isSticky() const; // a shared folder where only an entry's owner may remove it
};

// Which statx fields to ask for: fewer fields can mean less work for network and FUSE file systems.
enum class StatDetail { identity, full };

// Status of `name` relative to the folder `dirFd` (AT_FDCWD for a path), not following a final link,
// without forcing a sync with a remote server. Nothing on failure; `errno` says why.
std::optional<FileStatus> statusAt(int dirFd, const char* name, StatDetail detail = StatDetail::full);
