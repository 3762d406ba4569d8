#include "platform/FileReading.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace {

// O_NONBLOCK: should a named pipe have taken a listed file's place, opening it must not wait for a writer.
constexpr int readOnlyFlags = O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;

} // namespace

std::optional<ReadOnlyFile> ReadOnlyFile::open(const char* path)
{
    const int fd = ::open(path, readOnlyFlags);
    if (fd < 0)
        return std::nullopt;
    return ReadOnlyFile(fd);
}

ReadOnlyFile ReadOnlyFile::openFolder(const char* path)
{
    return ReadOnlyFile(::open(path, O_PATH | O_DIRECTORY | O_CLOEXEC));
}

ReadOnlyFile ReadOnlyFile::openIn(const ReadOnlyFile& folder, const char* name)
{
    return ReadOnlyFile(::openat(folder.m_fd, name, readOnlyFlags));
}

ReadOnlyFile::ReadOnlyFile(ReadOnlyFile&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1))
{
}

ReadOnlyFile& ReadOnlyFile::operator=(ReadOnlyFile&& other) noexcept
{
    std::swap(m_fd, other.m_fd);
    return *this;
}

ReadOnlyFile::~ReadOnlyFile()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

ReadOutcome ReadOnlyFile::readAt(std::uint64_t offset, std::span<std::byte> into) const
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

std::optional<FileStatus> ReadOnlyFile::status() const
{
    return statusAt(m_fd, "");
}

bool isNotPresentLocally(int error)
{
    return error == EDEADLK;
}
