#include "platform/MaintenanceCommands.h"

#include "platform/MemoryStatus.h"

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
    const auto reading = readMemoryInfo();
    return reading ? std::optional(reading->cached) : std::nullopt;
}

bool dropCleanPageCache()
{
    QFile control(QStringLiteral("/proc/sys/vm/drop_caches"));
    return control.open(QIODevice::WriteOnly) && control.write("1\n") == 2;
}
