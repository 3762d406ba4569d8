#pragma once

#include "platform/FileStatus.h"

#include <QByteArray>

#include <optional>

// A folder held open by descriptor. Whatever is done relative to it stays in that folder: a link or a
// rename swapped into its path after it was opened cannot redirect the work elsewhere. This matters most
// where root acts inside folders that a user controls. Failures leave `errno` saying why.
class FolderHandle {
public:
    // Opens the folder at `path`. Links on the way are followed; a final link is not.
    static std::optional<FolderHandle> open(const QByteArray& path);

    FolderHandle(FolderHandle&& other) noexcept;
    FolderHandle& operator=(FolderHandle&& other) noexcept;
    FolderHandle(const FolderHandle&) = delete;
    FolderHandle& operator=(const FolderHandle&) = delete;
    ~FolderHandle();

    int fd() const { return m_fd; }
    std::optional<FileStatus> status() const;
    // The entry `name` in this folder, a link not followed.
    std::optional<FileStatus> childStatus(const QByteArray& name) const;
    // Where the folder is now, as the kernel names it; nothing once it has been removed.
    std::optional<QByteArray> currentPath() const;

    // Opens the child folder `name`; a link there is refused (ELOOP or ENOTDIR).
    std::optional<FolderHandle> openChild(const QByteArray& name) const;
    // Opens the child folder `name`, creating it (mode 0700, handed to `owner` when this process is not
    // `owner`) when missing. It must be a real folder that `owner` owns, or EPERM.
    std::optional<FolderHandle> openOwnedChild(const QByteArray& name, unsigned owner) const;

    // Creates the file `name` holding `data`, owned by `owner`, so that it appears complete or not at all:
    // it is written under no name (or a hidden temporary one) and then linked into place. Never replaces
    // an existing entry (EEXIST). Returns 0 or the errno value.
    int createFile(const QByteArray& name, const QByteArray& data, unsigned owner) const;
    // Removes the entry `name` (not a folder). Returns 0 or the errno value.
    int removeFile(const QByteArray& name) const;

private:
    explicit FolderHandle(int fd)
        : m_fd(fd)
    {
    }
    int m_fd = -1;
};

// Renames `fromName` in `from` to `toName` in `to` without ever replacing an entry there (EEXIST). A
// rename across file systems fails (EXDEV); nothing is copied. Returns 0 or the errno value.
int renameWithoutReplacing(
    const FolderHandle& from, const QByteArray& fromName, const FolderHandle& to, const QByteArray& toName);
