#pragma once

#include <QList>
#include <QString>

#include <optional>

// One running process as far as Velloru needs to know it: enough to tell which installed app it belongs to.
struct ProcessInfo {
    QString executablePath; // the target of /proc/<pid>/exe; empty when it cannot be read
    QString firstArgument;  // argv[0] as the process was started
    QString flatpakAppID;   // the Flatpak app id of a sandboxed process, from its control group
};

// Where the program of a process lies (the target of /proc/PID/exe, bytes that are not UTF-8 replaced);
// nothing when it has ended or belongs to another user.
std::optional<QString> executablePathOf(int pid, const QString& procRoot = QStringLiteral("/proc"));

// What can be read of one process; every field empty when it has ended or hides its details.
ProcessInfo readProcessInfo(int pid, const QString& procRoot = QStringLiteral("/proc"));

// Every process that can be read from `procRoot` (the kernel's /proc). Processes that end while they are
// being read, or belong to users whose details are hidden, contribute what could be read or nothing.
QList<ProcessInfo> listProcesses(const QString& procRoot = QStringLiteral("/proc"));
