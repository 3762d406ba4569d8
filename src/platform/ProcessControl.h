#pragma once

#include <QList>
#include <QString>

// The memory of one process. Other users' figures can only be read as root.
struct ProcessMemory {
    int pid = 0;
    unsigned uid = 0;
    QString name;
    qint64 residentBytes = 0;
    qint64 proportionalBytes = 0; // resident memory with shared pages divided among their users
    qint64 swappedBytes = 0;
};

// Every process whose memory could be read from `procRoot`; processes that end meanwhile are left out.
QList<ProcessMemory> readProcessMemory(const QString& procRoot = QStringLiteral("/proc"));

// A kernel thread: it has no program of its own and must not be signalled or re-prioritised.
bool isKernelThread(int pid, const QString& procRoot = QStringLiteral("/proc"));

// Each answers 0 on success, otherwise the error number.
int sendSignal(int pid, int signal);
int setNiceValue(int pid, int nice);

// The same for the process that started at `startTicks` only: a later process given the same pid is never
// touched, and answers ESRCH as if the process had gone. The signal goes through a descriptor of the process
// (pidfd), so nothing can take its place between the check and the signal.
int sendSignalToSame(int pid, quint64 startTicks, int signal);
int setNiceValueOfSame(int pid, quint64 startTicks, int nice);

class QProcess;
// Makes the process, once started, the leader of a process group of its own, so that whatever it starts
// can be stopped with it.
void startInGroupOfItsOwn(QProcess& process);
// Sends `signal` to every process of the group that `leader` leads. 0 or the error number.
int signalGroup(qint64 leader, int signal);
