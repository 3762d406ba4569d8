#include "platform/FileLock.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

std::optional<FileLock> FileLock::acquire(const QString& path, Mode mode)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0)
        return std::nullopt;
    while (::flock(fd, mode == Mode::shared ? LOCK_SH : LOCK_EX) != 0) {
        if (errno != EINTR) {
            const int error = errno;
            ::close(fd);
            errno = error;
            return std::nullopt;
        }
    }
    return FileLock(fd);
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
