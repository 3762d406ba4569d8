#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// The places the helper will touch as root. It moves items to the Trash only where the caller may keep
// its own things: for a user, their home folder and the shared temporary and crash folders; for root,
// also every home, /mnt, /media, /srv and /opt. It reads (lists, measures, checks) anywhere except the
// kernel's virtual file systems. Paths are checked after resolving "..", and links in the parent folders,
// so neither can lead elsewhere.
class PathPolicy {
public:
    PathPolicy() = default;

    // Nothing when allowed, otherwise the sentence saying why not.
    std::optional<QString> refuseMove(const QString& path, unsigned callerUid) const;
    std::optional<QString> refuseRead(const QString& path) const;
    // A Trash folder the helper may move the caller's items into: one the caller owns, in its home
    // (anywhere for root).
    std::optional<QString> refuseUserTrash(const QString& path, unsigned callerUid) const;

    // A Trash folder the helper may empty for the caller: its own home Trash, or a volume's
    // ".Trash-UID" or ".Trash/UID" of its own.
    std::optional<QString> refuseTrashToEmpty(const QString& path, unsigned callerUid) const;

    static QStringList movableRoots(unsigned callerUid);
};
