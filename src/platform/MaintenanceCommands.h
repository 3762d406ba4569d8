#pragma once

#include <QHash>
#include <QList>
#include <QStringList>

#include <optional>

// The system commands the helper runs, as root, for each maintenance task, keyed by the task's raw value.
// A command whose program is not installed is skipped; a task none of whose programs is installed says so.
QHash<QString, QList<QStringList>> defaultMaintenanceCommands();

// The Debian package that installs a maintenance command's program ("resolvectl" → "systemd-resolved").
QString packageProviding(const QString& program);

// Asks the kernel to drop clean cached pages (root only). False when it refused.
bool dropCleanPageCache();

// Cached file memory now, from /proc/meminfo ("Cached"), in bytes; nothing when it cannot be read.
std::optional<qint64> cachedFileMemory();
