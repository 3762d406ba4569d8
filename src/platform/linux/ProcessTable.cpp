#include "platform/ProcessTable.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

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

QList<ProcessInfo> listProcesses(const QString& procRoot)
{
    QList<ProcessInfo> processes;
    const QStringList entries = QDir(procRoot).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& entry : entries) {
        bool isPid = false;
        entry.toLongLong(&isPid);
        if (!isPid)
            continue;
        const QString base = procRoot + QLatin1Char('/') + entry;
        ProcessInfo info;
        info.executablePath = QFileInfo(base + QStringLiteral("/exe")).symLinkTarget();
        const QByteArray commandLine = readSmallFile(base + QStringLiteral("/cmdline"));
        info.firstArgument = QString::fromUtf8(commandLine.left(commandLine.indexOf('\0')));
        info.flatpakAppID = flatpakAppFromControlGroup(readSmallFile(base + QStringLiteral("/cgroup")));
        if (!info.executablePath.isEmpty() || !info.firstArgument.isEmpty() || !info.flatpakAppID.isEmpty())
            processes.append(info);
    }
    return processes;
}
