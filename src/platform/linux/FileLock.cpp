#include "platform/FileLock.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace {

// The lock file's descriptor with the lock held, or -1 (errno says why).
int lockedDescriptor(const QString& path, int operation)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0)
        return -1;
    while (::flock(fd, operation) != 0) {
        if (errno != EINTR) {
            const int error = errno;
            ::close(fd);
            errno = error;
            return -1;
        }
    }
    return fd;
}

} // namespace

std::optional<FileLock> FileLock::acquire(const QString& path, Mode mode)
{
    const int fd = lockedDescriptor(path, mode == Mode::shared ? LOCK_SH : LOCK_EX);
    return fd < 0 ? std::nullopt : std::optional(FileLock(fd));
}

std::optional<FileLock> FileLock::tryAcquire(const QString& path, Mode mode)
{
    const int fd = lockedDescriptor(path, (mode == Mode::shared ? LOCK_SH : LOCK_EX) | LOCK_NB);
    return fd < 0 ? std::nullopt : std::optional(FileLock(fd));
}

FileLock::FileLock(FileLock&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1))
{
}

FileLock::~FileLock()
{
    if (m_fd >= 0)
        ::close(m_fd);
}
