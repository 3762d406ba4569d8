#include "helper/daemon/SystemControl.h"

#include "common/LocalPath.h"
#include "helper/daemon/CommandRunner.h"
#include "helper/daemon/HelperOperations.h"
#include "platform/FileAccess.h"
#include "platform/FolderHandle.h"
#include "platform/ProcessControl.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QRegularExpression>

#include <csignal>
#include <cstring>
#include <unistd.h>

namespace {

// Why the helper won't touch this process; nothing when it may.
std::optional<QString> refuseProcess(int pid)
{
    if (pid <= 1)
        return QStringLiteral("Velloru’s helper won’t touch process %1: the system can’t run without it.").arg(pid);
    if (pid == ::getpid())
        return QStringLiteral("Velloru’s helper won’t touch itself.");
    if (isKernelThread(pid))
        return QStringLiteral("Process %1 is part of the kernel and can’t be changed.").arg(pid);
    return std::nullopt;
}

QJsonObject processOutcome(int pid, int error, const QString& success)
{
    if (error == 0)
        return taskResultJson(true, success);
    if (error == ESRCH)
        return taskResultJson(false, QStringLiteral("Process %1 has already ended.").arg(pid));
    return taskResultJson(false, systemErrorSentence(error));
}

bool isProtectedUnit(const QString& unit)
{
    static const QStringList prefixes{QStringLiteral("velloru-helper."), QStringLiteral("systemd-"),
        QStringLiteral("dbus"), QStringLiteral("polkit"), QStringLiteral("user@"), QStringLiteral("user-runtime-dir@"),
        QStringLiteral("getty@"), QStringLiteral("display-manager.")};
    return std::any_of(
        prefixes.cbegin(), prefixes.cend(), [&unit](const QString& prefix) { return unit.startsWith(prefix); });
}

QJsonObject mountError(const QString& sentence)
{
    return {{QStringLiteral("error"), sentence}};
}

} // namespace

QJsonObject signalProcess(int pid, int signal)
{
    static const QList<int> allowed{SIGHUP, SIGINT, SIGQUIT, SIGKILL, SIGTERM, SIGSTOP, SIGCONT};
    if (!allowed.contains(signal))
        return taskResultJson(false, QStringLiteral("Velloru’s helper doesn’t send signal %1.").arg(signal));
    if (const auto refusal = refuseProcess(pid))
        return taskResultJson(false, *refusal);
    return processOutcome(pid, sendSignal(pid, signal),
        QStringLiteral("Sent SIG%1 to process %2.").arg(QString::fromUtf8(::sigabbrev_np(signal))).arg(pid));
}

QJsonObject setProcessPriority(int pid, int nice)
{
    if (nice < -20 || nice > 19)
        return taskResultJson(false, QStringLiteral("A priority runs from -20 to 19, not %1.").arg(nice));
    if (const auto refusal = refuseProcess(pid))
        return taskResultJson(false, *refusal);
    return processOutcome(
        pid, setNiceValue(pid, nice), QStringLiteral("Process %1 now runs at priority %2.").arg(pid).arg(nice));
}

QJsonObject processMemory()
{
    QJsonArray records;
    for (const ProcessMemory& process : readProcessMemory())
        records.append(QJsonObject{{QStringLiteral("pid"), process.pid}, {QStringLiteral("uid"), qint64(process.uid)},
            {QStringLiteral("name"), process.name}, {QStringLiteral("residentBytes"), process.residentBytes},
            {QStringLiteral("proportionalBytes"), process.proportionalBytes},
            {QStringLiteral("swappedBytes"), process.swappedBytes}});
    return {{QStringLiteral("processes"), records}};
}

QJsonObject setUnitEnabled(const QString& unit, bool enabled, std::chrono::seconds timeout)
{
    static const QRegularExpression unitName(
        QStringLiteral("^[A-Za-z0-9][A-Za-z0-9:_.@-]{0,200}\\.(service|socket|timer|path)$"));
    if (!unitName.match(unit).hasMatch())
        return taskResultJson(false, QStringLiteral("“%1” isn’t the name of a system unit.").arg(unit));
    if (isProtectedUnit(unit))
        return taskResultJson(
            false, QStringLiteral("Velloru’s helper won’t switch %1 off or on: the system needs it.").arg(unit));
    const CommandOutcome outcome
        = runCommand({QStringLiteral("systemctl"), enabled ? QStringLiteral("enable") : QStringLiteral("disable"),
                         QStringLiteral("--now"), unit},
            timeout);
    if (!outcome.ran)
        return taskResultJson(false, QStringLiteral("systemctl isn’t available on this system."));
    if (!outcome.succeeded)
        return taskResultJson(false, outcome.problem + QLatin1Char('.'));
    return taskResultJson(true,
        enabled ? QStringLiteral("%1 is switched on.").arg(unit) : QStringLiteral("%1 is switched off.").arg(unit));
}

QJsonObject createMountpoint(const QString& mountRoot, const QString& name, qint64 uid, unsigned callerUid)
{
    if (uid < 0 || (callerUid != 0 && uid != callerUid))
        return mountError(QStringLiteral("A mount point can only be made for yourself."));
    const auto encoded = LocalPath::encode(name);
    if (!encoded || encoded->isEmpty() || encoded->size() > 255 || name.startsWith(QLatin1Char('.'))
        || name.contains(QLatin1Char('/'))
        || std::any_of(name.cbegin(), name.cend(), [](QChar c) { return c.category() == QChar::Other_Control; }))
        return mountError(QStringLiteral("“%1” can’t be the name of a mount point.").arg(name));

    // The folder is made and handed over through descriptors, inside a folder only root may change, so
    // nothing swapped in meanwhile can be given away instead.
    QDir().mkpath(mountRoot);
    const auto rootPath = LocalPath::encode(mountRoot);
    const auto root = rootPath ? FolderHandle::open(*rootPath) : std::nullopt;
    const auto rootStatus = root ? root->status() : std::nullopt;
    if (!rootStatus || rootStatus->uid != 0 || (rootStatus->mode & 022))
        return mountError(QStringLiteral("%1 can’t hold mount points — it must be a folder that only root may change.")
                              .arg(mountRoot));
    const QString path = mountRoot + QLatin1Char('/') + name;
    if (const auto existing = root->childStatus(*encoded)) {
        // An empty folder of this user left by an earlier mount is taken as it is.
        if (existing->isDirectory() && existing->uid == uid && QDir(path).isEmpty())
            return {{QStringLiteral("path"), path}};
        return mountError(QStringLiteral("Something else is already at %1.").arg(path));
    }
    if (!root->openOwnedChild(*encoded, unsigned(uid)))
        return mountError(systemErrorSentence(errno));
    return {{QStringLiteral("path"), path}};
}
