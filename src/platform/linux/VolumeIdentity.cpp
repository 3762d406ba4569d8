#include "platform/VolumeIdentity.h"

#include <array>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace {

// Declared here because distributions' kernel headers may predate the ioctl (added in Linux 6.5).
struct FileSystemUuid {
    std::uint8_t length;
    std::uint8_t uuid[16];
};
constexpr unsigned long getFileSystemUuid = _IOR(0x15, 0, FileSystemUuid);

std::string canonicalUuid(const std::uint8_t* bytes)
{
    char text[37];
    std::snprintf(text, sizeof text, "%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X", bytes[0],
        bytes[1], bytes[2], bytes[3], bytes[4], bytes[5], bytes[6], bytes[7], bytes[8], bytes[9], bytes[10], bytes[11],
        bytes[12], bytes[13], bytes[14], bytes[15]);
    return text;
}

std::optional<std::string> uuidFromKernel(int fd)
{
    FileSystemUuid answer{};
    if (::ioctl(fd, getFileSystemUuid, &answer) != 0 || answer.length != 16)
        return std::nullopt;
    bool allZero = true;
    for (const std::uint8_t byte : answer.uuid)
        allZero = allZero && byte == 0;
    if (allZero)
        return std::nullopt;
    return canonicalUuid(answer.uuid);
}

// udev names each block device's UUID as a link in /dev/disk/by-uuid; the one whose device number is the
// volume's is ours.
std::optional<std::string> uuidFromUdev(dev_t device)
{
    std::error_code error;
    for (const auto& link : std::filesystem::directory_iterator("/dev/disk/by-uuid", error)) {
        struct stat target { };
        if (::stat(link.path().c_str(), &target) == 0 && S_ISBLK(target.st_mode) && target.st_rdev == device) {
            std::string uuid = link.path().filename().string();
            for (char& c : uuid)
                c = char(std::toupper(static_cast<unsigned char>(c)));
            return uuid;
        }
    }
    return std::nullopt;
}

std::optional<std::string> idFromStatfs(int fd)
{
    struct statfs status { };
    if (::fstatfs(fd, &status) != 0)
        return std::nullopt;
    std::uint32_t words[2];
    static_assert(sizeof words == sizeof status.f_fsid);
    std::memcpy(words, &status.f_fsid, sizeof words);
    if (words[0] == 0 && words[1] == 0)
        return std::nullopt;
    char text[32];
    std::snprintf(text, sizeof text, "FSID-%08X%08X", words[0], words[1]);
    return text;
}

} // namespace

std::optional<std::string> volumeUUID(const std::string& path)
{
    // The kernel query needs a readable descriptor; a folder that cannot be read can still be identified
    // through the other two routes, which work on a path-only descriptor.
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    std::optional<std::string> uuid;
    if (fd >= 0)
        uuid = uuidFromKernel(fd);
    else
        fd = ::open(path.c_str(), O_CLOEXEC | O_NOFOLLOW | O_PATH);
    if (fd < 0)
        return std::nullopt;
    if (!uuid) {
        struct stat status { };
        if (::fstat(fd, &status) == 0)
            uuid = uuidFromUdev(status.st_dev);
    }
    if (!uuid)
        uuid = idFromStatfs(fd);
    ::close(fd);
    return uuid;
}

VolumeKind volumeKind(const std::string& path)
{
    struct statfs status { };
    if (::statfs(path.c_str(), &status) != 0)
        return VolumeKind::other;
    // File systems on local disks or in memory. Anything else (NFS, SMB, FUSE, 9p …) counts as remote.
    static constexpr std::array<unsigned long, 17> localTypes = {
        EXT4_SUPER_MAGIC,
        XFS_SUPER_MAGIC,
        BTRFS_SUPER_MAGIC,
        TMPFS_MAGIC,
        F2FS_SUPER_MAGIC,
        MSDOS_SUPER_MAGIC,
        0x2011BAB0 /* exFAT */,
        0x5346544E /* NTFS */,
        0x7366746E /* ntfs3 */,
        0x2FC12FC1 /* ZFS */,
        OVERLAYFS_SUPER_MAGIC,
        REISERFS_SUPER_MAGIC,
        0x3153464A /* JFS */,
        0x482B /* HFS+ */,
        ISOFS_SUPER_MAGIC,
        SQUASHFS_MAGIC,
        0xCA451A4E /* bcachefs */,
    };
    for (const unsigned long type : localTypes)
        if (static_cast<unsigned long>(status.f_type) == type)
            return VolumeKind::local;
    return VolumeKind::other;
}
