#include "platform/FolderHandle.h"

#include <QRandomGenerator>

#include <cerrno>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

int writeWhole(int fd, const QByteArray& data)
{
    qsizetype written = 0;
    while (written < data.size()) {
        const ssize_t n = ::write(fd, data.constData() + written, size_t(data.size() - written));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return errno;
        written += n;
    }
    return 0;
}

// Writes the content and hands the file to `owner`; 0 or the errno value.
int fill(int fd, const QByteArray& data, unsigned owner)
{
    if (const int error = writeWhole(fd, data))
        return error;
    if (owner != ::geteuid() && ::fchown(fd, owner, gid_t(-1)) != 0)
        return errno;
    return 0;
}

} // namespace

std::optional<FolderHandle> FolderHandle::open(const QByteArray& path)
{
    const int fd = ::open(path.constData(), folderFlags);
    if (fd < 0)
        return std::nullopt;
    return FolderHandle(fd);
}

FolderHandle::FolderHandle(FolderHandle&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1))
{
}

FolderHandle& FolderHandle::operator=(FolderHandle&& other) noexcept
{
    if (this != &other) {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = std::exchange(other.m_fd, -1);
    }
    return *this;
}

FolderHandle::~FolderHandle()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

std::optional<FileStatus> FolderHandle::status() const
{
    return statusAt(m_fd, "", StatDetail::full);
}

std::optional<FileStatus> FolderHandle::childStatus(const QByteArray& name) const
{
    return statusAt(m_fd, name.constData(), StatDetail::full);
}

std::optional<QByteArray> FolderHandle::currentPath() const
{
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(m_fd);
    char target[4096];
    const ssize_t length = ::readlink(link.constData(), target, sizeof target);
    if (length <= 0 || size_t(length) >= sizeof target || target[0] != '/')
        return std::nullopt;
    QByteArray path(target, length);
    // The kernel marks a folder that has been removed; it has no place any more.
    if (path.endsWith(" (deleted)") && !statusAt(AT_FDCWD, path.constData(), StatDetail::identity)) {
        errno = ENOENT;
        return std::nullopt;
    }
    return path;
}

std::optional<FolderHandle> FolderHandle::openChild(const QByteArray& name) const
{
    const int fd = ::openat(m_fd, name.constData(), folderFlags);
    if (fd < 0)
        return std::nullopt;
    return FolderHandle(fd);
}

std::optional<FolderHandle> FolderHandle::openOwnedChild(const QByteArray& name, unsigned owner) const
{
    const bool created = ::mkdirat(m_fd, name.constData(), 0700) == 0;
    if (!created && errno != EEXIST)
        return std::nullopt;
    auto child = openChild(name);
    if (!child)
        return std::nullopt;
    auto status = child->status();
    if (!status)
        return std::nullopt;
    // Handed over through the descriptor, and only while it is still the folder this process made: a
    // folder of anyone else renamed into its place in the meantime is never given away.
    if (created && owner != ::geteuid() && status->uid == ::geteuid()) {
        if (::fchown(child->fd(), owner, gid_t(-1)) != 0)
            return std::nullopt;
        status->uid = owner;
    }
    if (!status->isDirectory() || status->uid != owner) {
        errno = EPERM;
        return std::nullopt;
    }
    return child;
}

int FolderHandle::createFile(const QByteArray& name, const QByteArray& data, unsigned owner) const
{
    // A file with no name yet, linked in once it is whole.
    const int anonymous = ::openat(m_fd, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
    if (anonymous >= 0) {
        int error = fill(anonymous, data, owner);
        if (error == 0) {
            const QByteArray self = "/proc/self/fd/" + QByteArray::number(anonymous);
            if (::linkat(AT_FDCWD, self.constData(), m_fd, name.constData(), AT_SYMLINK_FOLLOW) != 0)
                error = errno;
        }
        ::close(anonymous);
        return error;
    }
    if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL && errno != ENOENT)
        return errno;

    // File systems without nameless files (FAT, some network ones): a hidden temporary name, then a rename
    // that refuses to replace.
    const QByteArray temporary = ".velloru-" + QByteArray::number(QRandomGenerator::global()->generate64(), 36);
    const int fd = ::openat(m_fd, temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0)
        return errno;
    int error = fill(fd, data, owner);
    ::close(fd);
    if (error == 0)
        error = renameWithoutReplacing(*this, temporary, *this, name);
    if (error != 0)
        ::unlinkat(m_fd, temporary.constData(), 0);
    return error;
}

int FolderHandle::removeFile(const QByteArray& name) const
{
    return ::unlinkat(m_fd, name.constData(), 0) == 0 ? 0 : errno;
}

int renameWithoutReplacing(
    const FolderHandle& from, const QByteArray& fromName, const FolderHandle& to, const QByteArray& toName)
{
    if (::renameat2(from.fd(), fromName.constData(), to.fd(), toName.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // File systems that cannot refuse by themselves get a checked rename.
    if (to.childStatus(toName))
        return EEXIST;
    return ::renameat(from.fd(), fromName.constData(), to.fd(), toName.constData()) == 0 ? 0 : errno;
}
