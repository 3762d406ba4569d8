#pragma once

#include "processes/RunningProcess.h"

#include <QList>

// The processes of one app run by one user, with their totals; a process that belongs to no app is a group
// of its own.
struct ProcessGroup {
    QString key; // stays the same from one sample to the next
    QString name;
    bool isApp = false;
    QList<RunningProcess> processes;
    qint64 memory = 0;
    double cpu = 0;

    // The process that stands for the group: the app's own process (the first one started), or the only one.
    const RunningProcess& lead() const;
};

// The key of the group that a process belonging to no app makes, and of the process's row anywhere.
QString processKey(const RunningProcess& process);

// The groups of these processes, in the order their first processes come.
QList<ProcessGroup> groupProcesses(const QList<RunningProcess>& processes);

// The groups using the most memory, largest first.
QList<ProcessGroup> largestByMemory(QList<ProcessGroup> groups, qsizetype count);
