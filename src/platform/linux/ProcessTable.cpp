#include "platform/ProcessTable.h"

#include <QDir>
#include <QFile>

#include <climits>
#include <unistd.h>

namespace {

QByteArray readSmallFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.read(64 * 1024);
}

// Flatpak runs each app in a systemd scope named "app-flatpak-<app id>-<number>.scope".
QString flatpakAppFromControlGroup(const QByteArray& cgroup)
{
    static const QByteArray marker = "app-flatpak-";
    const qsizetype start = cgroup.indexOf(marker);
    if (start < 0)
        return {};
    const qsizetype idStart = start + marker.size();
    const qsizetype scopeEnd = cgroup.indexOf(".scope", idStart);
    if (scopeEnd < 0)
        return {};
    const QByteArray scope = cgroup.mid(idStart, scopeEnd - idStart);
    const qsizetype dash = scope.lastIndexOf('-');
    return QString::fromUtf8(dash > 0 ? scope.left(dash) : scope);
}

} // namespace

std::optional<QString> executablePathOf(int pid, const QString& procRoot)
{
    const QByteArray link = QFile::encodeName(procRoot + QStringLiteral("/%1/exe").arg(pid));
    char target[PATH_MAX];
    const ssize_t length = ::readlink(link.constData(), target, sizeof target);
    if (length < 1)
        return std::nullopt;
    return QString::fromUtf8(target, length);
}

ProcessInfo readProcessInfo(int pid, const QString& procRoot)
{
    const QString base = procRoot + QLatin1Char('/') + QString::number(pid);
    ProcessInfo info;
    info.executablePath = executablePathOf(pid, procRoot).value_or(QString());
    const QByteArray commandLine = readSmallFile(base + QStringLiteral("/cmdline"));
    info.firstArgument = QString::fromUtf8(commandLine.left(commandLine.indexOf('\0')));
    info.flatpakAppID = flatpakAppFromControlGroup(readSmallFile(base + QStringLiteral("/cgroup")));
    return info;
}

QList<ProcessInfo> listProcesses(const QString& procRoot)
{
    QList<ProcessInfo> processes;
    const QStringList entries = QDir(procRoot).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& entry : entries) {
        bool isPid = false;
        const int pid = entry.toInt(&isPid);
        if (!isPid)
            continue;
        ProcessInfo info = readProcessInfo(pid, procRoot);
        if (!info.executablePath.isEmpty() || !info.firstArgument.isEmpty() || !info.flatpakAppID.isEmpty())
            processes.append(std::move(info));
    }
    return processes;
}
