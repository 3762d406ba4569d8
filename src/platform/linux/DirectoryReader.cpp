#include "platform/DirectoryReader.h"
#include "platform/FileStatus.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// The kernel's record layout for getdents64.
struct LinuxDirent64 {
    ino64_t d_ino;
    off64_t d_off;
    unsigned short d_reclen;
    unsigned char d_type;
    char d_name[];
};

EntryType typeFrom(unsigned char dType)
{
    switch (dType) {
    case DT_REG: return EntryType::regular;
    case DT_DIR: return EntryType::directory;
    case DT_LNK: return EntryType::symlink;
    case DT_UNKNOWN: return EntryType::unknown;
    default: return EntryType::other;
    }
}

} // namespace

EntryType entryTypeOf(const FileStatus& status)
{
    if (status.isRegular())
        return EntryType::regular;
    if (status.isDirectory())
        return EntryType::directory;
    return status.isSymlink() ? EntryType::symlink : EntryType::other;
}

std::optional<DirectoryReader> DirectoryReader::open(
    int parentFd, const char* name, std::span<std::byte> buffer, FinalLink finalLink)
{
    const int noFollow = finalLink == FinalLink::notFollowed ? O_NOFOLLOW : 0;
    const int fd = ::openat(parentFd, name, O_RDONLY | O_DIRECTORY | noFollow | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    return DirectoryReader(fd, buffer);
}

DirectoryReader::DirectoryReader(DirectoryReader&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1))
    , m_buffer(other.m_buffer)
    , m_filled(other.m_filled)
    , m_offset(other.m_offset)
    , m_error(other.m_error)
{
}

DirectoryReader::~DirectoryReader()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

bool DirectoryReader::next(DirectoryEntry& entry)
{
    for (;;) {
        if (m_offset >= m_filled) {
            const long read = ::syscall(SYS_getdents64, m_fd, m_buffer.data(), m_buffer.size());
            if (read < 0) {
                if (errno == EINTR)
                    continue;
                m_error = errno;
                return false;
            }
            if (read == 0)
                return false;
            m_filled = std::size_t(read);
            m_offset = 0;
        }
        const auto* record = reinterpret_cast<const LinuxDirent64*>(m_buffer.data() + m_offset);
        m_offset += record->d_reclen;
        const char* name = record->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        entry.name = std::string_view(name, std::strlen(name));
        entry.type = typeFrom(record->d_type);
        entry.inode = record->d_ino;
        return true;
    }
}
