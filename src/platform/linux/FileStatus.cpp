#include "platform/FileStatus.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

bool FileStatus::isRegular() const
{
    return S_ISREG(mode);
}

bool FileStatus::isDirectory() const
{
    return S_ISDIR(mode);
}

bool FileStatus::isSymlink() const
{
    return S_ISLNK(mode);
}

bool FileStatus::isSticky() const
{
    return mode & S_ISVTX;
}

std::optional<FileStatus> statusAt(int dirFd, const char* name, StatDetail detail)
{
    unsigned int mask = STATX_TYPE | STATX_MODE | STATX_INO | STATX_NLINK | STATX_SIZE | STATX_BLOCKS;
    if (detail == StatDetail::full)
        mask |= STATX_UID | STATX_MTIME | STATX_CTIME | STATX_BTIME;

    struct statx status { };
    // AT_NO_AUTOMOUNT: looking at an automount point must not mount it.
    const int flags
        = AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC | AT_NO_AUTOMOUNT | (name[0] == '\0' ? AT_EMPTY_PATH : 0);
    if (::statx(dirFd, name, flags, mask, &status) != 0)
        return std::nullopt;

    FileStatus result;
    result.device = makedev(status.stx_dev_major, status.stx_dev_minor);
    result.inode = status.stx_ino;
    result.linkCount = status.stx_nlink;
    result.mode = status.stx_mode;
    result.uid = status.stx_uid;
    result.size = std::int64_t(status.stx_size);
    result.allocatedSize = std::int64_t(status.stx_blocks) * 512;
    result.modifiedSeconds = status.stx_mtime.tv_sec;
    result.modifiedNanoseconds = status.stx_mtime.tv_nsec;
    result.changedSeconds = status.stx_ctime.tv_sec;
    result.createdSeconds = (status.stx_mask & STATX_BTIME) ? status.stx_btime.tv_sec : 0;
    result.immutable
        = (status.stx_attributes_mask & STATX_ATTR_IMMUTABLE) && (status.stx_attributes & STATX_ATTR_IMMUTABLE);
    result.appendOnly = (status.stx_attributes_mask & STATX_ATTR_APPEND) && (status.stx_attributes & STATX_ATTR_APPEND);
    return result;
}
