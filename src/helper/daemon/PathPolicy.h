#pragma once

#include "platform/FileStatus.h"

#include <QString>
#include <QStringList>

#include <optional>

// The places and items the helper will touch as root. Every check takes a real path: one whose folders
// the kernel resolved through the descriptor the helper holds, so ".." and links cannot lead elsewhere.
//
// Moving to the Trash: only below the movable roots (for a user: their home folder and the shared
// temporary and crash folders; for root, also every home, /mnt, /media, /srv and /opt), never a root
// itself, anybody's home folder or a folder holding one; and, for a user, only an item the user could have
// removed had the folder let them: one that belongs to them, or that lies in a folder of theirs.
class PathPolicy {
public:
    PathPolicy() = default;

    // Each answers nothing when allowed, otherwise the sentence saying why not.
    std::optional<QString> refuseMove(const QString& realPath, unsigned callerUid) const;
    static std::optional<QString> refuseOwnership(
        const QString& realPath, const FileStatus& item, const FileStatus& parent, unsigned callerUid);
    std::optional<QString> refuseRead(const QString& path) const;
    // A home Trash the helper may move the caller's items into: a folder named "Trash" that the caller owns.
    static std::optional<QString> refuseUserTrash(
        const QString& realPath, const FileStatus& folder, unsigned callerUid);
    // A Trash folder the helper may empty for the caller: a home Trash of its own, or a volume's
    // ".Trash-UID" or ".Trash/UID" of its own.
    static std::optional<QString> refuseTrashToEmpty(
        const QString& realPath, const FileStatus& folder, unsigned callerUid);

    static QStringList movableRoots(unsigned callerUid);
};
