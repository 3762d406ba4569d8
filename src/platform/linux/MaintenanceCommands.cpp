#include "platform/MaintenanceCommands.h"

#include <QFile>

QHash<QString, QList<QStringList>> defaultMaintenanceCommands()
{
    return {
        // Purgeable space on Linux: old journal files and the package manager's download cache.
        {QStringLiteral("thinSnapshots"),
            {{QStringLiteral("journalctl"), QStringLiteral("--vacuum-time=2weeks")},
                {QStringLiteral("apt-get"), QStringLiteral("clean")}}},
        // Inactive memory: write dirty pages out; the helper then drops the clean page cache itself.
        {QStringLiteral("purgeMemory"), {{QStringLiteral("sync")}}},
        {QStringLiteral("flushDNS"), {{QStringLiteral("resolvectl"), QStringLiteral("flush-caches")}}},
        // The file-search index: locate's database.
        {QStringLiteral("rebuildSpotlight"), {{QStringLiteral("updatedb")}}},
        {QStringLiteral("rebuildFontCaches"),
            {{QStringLiteral("fc-cache"), QStringLiteral("-r"), QStringLiteral("-f")}}},
    };
}

QString packageProviding(const QString& program)
{
    static const QHash<QString, QString> packages{
        {QStringLiteral("journalctl"), QStringLiteral("systemd")},
        {QStringLiteral("apt-get"), QStringLiteral("apt")},
        {QStringLiteral("sync"), QStringLiteral("coreutils")},
        {QStringLiteral("resolvectl"), QStringLiteral("systemd-resolved")},
        {QStringLiteral("updatedb"), QStringLiteral("plocate")},
        {QStringLiteral("fc-cache"), QStringLiteral("fontconfig")},
    };
    return packages.value(program, program);
}

std::optional<qint64> cachedFileMemory()
{
    QFile meminfo(QStringLiteral("/proc/meminfo"));
    if (!meminfo.open(QIODevice::ReadOnly))
        return std::nullopt;
    for (const QByteArray& line : meminfo.readAll().split('\n')) {
        if (!line.startsWith("Cached:"))
            continue;
        bool ok = false;
        const qint64 kilobytes = line.mid(7).trimmed().split(' ').first().toLongLong(&ok);
        if (ok)
            return kilobytes * 1024;
    }
    return std::nullopt;
}

bool dropCleanPageCache()
{
    QFile control(QStringLiteral("/proc/sys/vm/drop_caches"));
    return control.open(QIODevice::WriteOnly) && control.write("1\n") == 2;
}
