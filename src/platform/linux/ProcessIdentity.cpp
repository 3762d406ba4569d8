#include "platform/ProcessIdentity.h"

#include <QByteArray>
#include <QFile>

#include <unistd.h>

namespace {

// Field 22 of /proc/PID/stat, while the process has not ended (a process that has ended stays listed, as a
// zombie, until its parent collects it). The command name (field 2) may hold spaces and parentheses, so
// fields are counted from its closing parenthesis.
std::optional<quint64> startTicksOf(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray text = stat.readAll();
    const qsizetype close = text.lastIndexOf(')');
    if (close < 0)
        return std::nullopt;
    const QList<QByteArray> fields = text.mid(close + 2).split(' ');
    constexpr int startTimeAfterName = 22 - 3; // fields 3 … are listed after the name
    if (fields.size() <= startTimeAfterName || fields[0] == "Z" || fields[0] == "X")
        return std::nullopt;
    bool ok = false;
    const quint64 ticks = fields[startTimeAfterName].toULongLong(&ok);
    return ok ? std::optional(ticks) : std::nullopt;
}

} // namespace

ProcessIdentity ProcessIdentity::current()
{
    const qint64 pid = ::getpid();
    return {pid, startTicksOf(pid).value_or(0)};
}

bool ProcessIdentity::isRunning() const
{
    return pid > 0 && startTicksOf(pid) == startTicks;
}
