#include "platform/ProcessControl.h"

#include "platform/ProcessIdentity.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <cerrno>
#include <csignal>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

QByteArray readProcFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The value of a "Key:  value" line.
QByteArray textField(const QByteArray& text, const QByteArray& key)
{
    const qsizetype at = text.startsWith(key + ':') ? 0 : text.indexOf('\n' + key + ':');
    if (at < 0)
        return {};
    const qsizetype start = text.indexOf(':', at) + 1;
    const qsizetype end = text.indexOf('\n', start);
    return text.mid(start, end < 0 ? -1 : end - start).trimmed();
}

// The value of a "Key:   1234 kB" line, in bytes.
qint64 kilobytesField(const QByteArray& text, const QByteArray& key)
{
    return textField(text, key).split(' ').value(0).toLongLong() * 1024;
}

} // namespace

QList<ProcessMemory> readProcessMemory(const QString& procRoot)
{
    QList<ProcessMemory> processes;
    for (const QString& entry : QDir(procRoot).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool isPid = false;
        const int pid = entry.toInt(&isPid);
        if (!isPid)
            continue;
        const QString base = procRoot + QLatin1Char('/') + entry;
        const QByteArray status = readProcFile(base + QStringLiteral("/status"));
        // smaps_rollup sums the mappings in the kernel; a kernel thread has none and reads empty.
        const QByteArray rollup = readProcFile(base + QStringLiteral("/smaps_rollup"));
        if (status.isEmpty() || rollup.isEmpty())
            continue;
        processes.append(
            {pid, textField(status, "Uid").split('\t').value(0).toUInt(), QString::fromUtf8(textField(status, "Name")),
                kilobytesField(rollup, "Rss"), kilobytesField(rollup, "Pss"), kilobytesField(rollup, "Swap")});
    }
    return processes;
}

bool isKernelThread(int pid, const QString& procRoot)
{
    constexpr qint64 kernelThreadFlag = 0x00200000; // PF_KTHREAD
    const QByteArray stat = readProcFile(procRoot + QStringLiteral("/%1/stat").arg(pid));
    // The command name may hold spaces and parentheses, so the fields are counted after the last ')'.
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    return fields.size() > 6 && (fields[6].toLongLong() & kernelThreadFlag);
}

int sendSignal(int pid, int signal)
{
    return ::kill(pid, signal) == 0 ? 0 : errno;
}

int setNiceValue(int pid, int nice)
{
    return ::setpriority(PRIO_PROCESS, id_t(pid), nice) == 0 ? 0 : errno;
}

int sendSignalToSame(int pid, quint64 startTicks, int signal)
{
    const int process = int(::syscall(SYS_pidfd_open, pid_t(pid), 0));
    if (process < 0 && errno != ENOSYS)
        return errno;
    int error = 0;
    if (!ProcessIdentity{pid, startTicks}.isRunning())
        error = ESRCH;
    else if (process < 0)
        error = sendSignal(pid, signal); // a kernel before 5.3
    else if (::syscall(SYS_pidfd_send_signal, process, signal, nullptr, 0) != 0)
        error = errno;
    if (process >= 0)
        ::close(process);
    return error;
}

int setNiceValueOfSame(int pid, quint64 startTicks, int nice)
{
    return ProcessIdentity{pid, startTicks}.isRunning() ? setNiceValue(pid, nice) : ESRCH;
}

void startInGroupOfItsOwn(QProcess& process)
{
    process.setChildProcessModifier([] { ::setpgid(0, 0); });
}

int signalGroup(qint64 leader, int signal)
{
    return leader > 0 && ::kill(-pid_t(leader), signal) == 0 ? 0 : errno;
}
