#pragma once

#include <QList>
#include <QString>

#include <optional>

// One mounted file system, as /proc/self/mountinfo lists it.
struct MountPoint {
    QString path;           // where it is mounted
    QString fileSystemType; // "ext4", "tmpfs", "fuse.sshfs" …
    QString source;         // the device or server
    quint64 device = 0;     // st_dev of files on it
};

// Every mount this process can see, in mount order. Empty when the table cannot be read.
QList<MountPoint> readMountTable();

// The mount that holds `path` (an absolute, canonical path): the longest mount path that is a prefix of it.
// Bind mounts of a folder count as mounts of their own, so a walk up never leaves them by mistake.
std::optional<MountPoint> mountHolding(const QList<MountPoint>& mounts, const QString& path);
