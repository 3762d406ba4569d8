#pragma once

#include "platform/DirectoryReader.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QPair>
#include <QString>

#include <memory>
#include <optional>

// One process as its stat line and its /proc folder describe it: what every sample of the process list needs.
struct ProcessStat {
    int pid = 0;
    int parentPid = 0;
    quint64 startTicks = 0; // clock ticks after boot; with the pid it names this process and no later one
    QByteArray command;     // the kernel's short name of the program (at most 15 bytes)
    char state = '?';       // R running, S sleeping, D waiting on a device, T stopped, Z ended …
    quint64 cpuTicks = 0;   // user and system time so far, in clock ticks
    int nice = 0;
    qint64 residentBytes = 0;
    unsigned uid = 0; // the effective owner
    bool isKernelThread = false;
};

struct ProcessTableRead {
    QList<ProcessStat> processes;
    // Processes listed but not readable: /proc hides other users' processes from this user (hidepid).
    int unreadable = 0;
};

// Reads the whole process table with as few system calls as it can: the table is listed with getdents64 into
// one large buffer, and each process costs a status call on its folder (its owner) and a read of its stat file,
// which stays open from one read of the table to the next (up to half the descriptors this process may open;
// beyond them a stat file is opened and closed each time). A process that ends while it is read is left out.
// One thread at a time.
class ProcessStatReader {
public:
    explicit ProcessStatReader(QString procRoot = QStringLiteral("/proc"));
    ~ProcessStatReader();
    ProcessStatReader(const ProcessStatReader&) = delete;
    ProcessStatReader& operator=(const ProcessStatReader&) = delete;

    ProcessTableRead read();

private:
    QString m_procRoot;
    std::unique_ptr<std::byte[]> m_listing;
    QHash<int, int> m_held; // pid → its open stat file
    qsizetype m_heldBudget = 0;
    // A process that made itself undumpable (ssh-agent does) shows its /proc files as root's; its real owner is
    // read once from its status file and kept for as long as it runs.
    QHash<QPair<int, quint64>, unsigned> m_undumpableOwners;
};

// Parses one /proc/PID/stat line; nothing when it is not one.
std::optional<ProcessStat> parseProcessStat(const QByteArray& line, qint64 pageSize);

// The kernel's clock for process times.
double clockTicksPerSecond();
// Seconds since boot on the clock that process start times count from.
double secondsSinceBoot();

// Whether the /proc at `procRoot` hides other users' processes from this process (mounted with hidepid,
// and this user neither root nor in the group allowed to see them).
bool procHidesOtherUsers(const QString& procRoot = QStringLiteral("/proc"));
