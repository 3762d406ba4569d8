#pragma once

#include <QString>

#include <optional>

// An advisory lock on a lock file, shared between processes (flock): many holders may share it, or one
// holds it alone. Released when the object goes, or when its process ends, however it ends.
class FileLock {
public:
    enum class Mode { shared, exclusive };

    // Waits for the lock on `path`, creating the file when missing. Nothing when the file cannot be opened
    // (errno says why).
    static std::optional<FileLock> acquire(const QString& path, Mode mode);
    // Takes the lock only when no one else holds it; nothing otherwise (errno EWOULDBLOCK) or when the file
    // cannot be opened.
    static std::optional<FileLock> tryAcquire(const QString& path, Mode mode);

    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&&) = delete;
    FileLock(const FileLock&) = delete;
    ~FileLock();

private:
    explicit FileLock(int fd)
        : m_fd(fd)
    {
    }
    int m_fd = -1;
};
