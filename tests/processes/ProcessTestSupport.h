#pragma once

#include "processes/ProcessSampling.h"

#include "TestSupport.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <optional>

// The process `pid` as a fresh sample sees it; nothing when it is not listed.
inline std::optional<RunningProcess> sampled(
    ProcessSampling& sampling, qint64 pid, const QList<InstalledApp>& apps = {})
{
    for (const RunningProcess& process : sampling.sample(apps, std::nullopt).processes)
        if (process.id == pid)
            return process;
    return std::nullopt;
}

// Field `number` of /proc/PID/stat as proc(5) counts them (3 is the state letter, 19 the nice value).
inline QByteArray statField(qint64 pid, int number)
{
    const QByteArray stat = readWholeFile(QStringLiteral("/proc/%1/stat").arg(pid));
    return stat.mid(stat.lastIndexOf(')') + 2).split(' ').value(number - 3);
}

// A copy of a system program under a name of our choosing, so that a test's child process can be told
// apart from every other process on the machine.
inline QString programCopy(const FixtureTree& tree, const QString& program, const QString& name)
{
    const QString copy = tree.path(name);
    QFile::copy(QStandardPaths::findExecutable(program), copy);
    QFile::setPermissions(copy, QFileDevice::Permissions(0x7755));
    return copy;
}

// Waits up to five seconds for `condition`, letting the event loop run.
template <typename Condition> bool eventually(Condition condition)
{
    for (int i = 0; i < 500 && !condition(); ++i)
        QTest::qWait(10);
    return condition();
}
