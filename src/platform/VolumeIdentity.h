#pragma once

#include <optional>
#include <string>

// A stable name for the volume that holds `path`, used to keep one hash cache per volume so that a disk
// moved to another machine or mount point keeps its cached hashes. In order of preference:
//  1. the file system's own UUID as the kernel reports it (FS_IOC_GETFSUUID, Linux 6.5 and later);
//  2. the UUID udev lists for the volume's block device under /dev/disk/by-uuid;
//  3. the file system id from statfs, written "FSID-" and 16 hex digits.
// UUIDs are written in upper-case canonical form. Nothing when none of these is available.
std::optional<std::string> volumeUUID(const std::string& path);

// Whether the volume that holds `path` is a local disk or memory file system (reads are cheap and can run
// side by side) or anything else (network and FUSE file systems, where one reader at a time is kinder).
enum class VolumeKind { local, other };
VolumeKind volumeKind(const std::string& path);
