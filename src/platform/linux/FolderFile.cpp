#include "platform/FolderFile.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

FolderFile FolderFile::openFolder(const char* path)
{
    return FolderFile(::open(path, O_PATH | O_DIRECTORY | O_CLOEXEC));
}

FolderFile FolderFile::openIn(const FolderFile& folder, const char* name)
{
    return FolderFile(::openat(folder.m_fd, name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY));
}

FolderFile::FolderFile(FolderFile&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1))
{
}

FolderFile& FolderFile::operator=(FolderFile&& other) noexcept
{
    std::swap(m_fd, other.m_fd);
    return *this;
}

FolderFile::~FolderFile()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

ReadOutcome FolderFile::readAt(std::uint64_t offset, std::span<std::byte> into) const
{
    ReadOutcome outcome;
    while (outcome.bytes < into.size()) {
        const ssize_t read
            = ::pread(m_fd, into.data() + outcome.bytes, into.size() - outcome.bytes, off_t(offset + outcome.bytes));
        if (read < 0) {
            if (errno == EINTR)
                continue;
            outcome.error = errno;
            break;
        }
        if (read == 0)
            break;
        outcome.bytes += std::size_t(read);
    }
    return outcome;
}

std::optional<FileStatus> FolderFile::status() const
{
    return statusAt(m_fd, "");
}
