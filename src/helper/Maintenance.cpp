#include "helper/Maintenance.h"

#include "common/ByteCount.h"

namespace Maintenance {

const QList<MaintenanceTask>& tasks()
{
    static const QList<MaintenanceTask> all{
        {QStringLiteral("thinSnapshots"), QStringLiteral("Reclaim Purgeable Space"),
            QStringLiteral("arrow.2.circlepath"),
            QStringLiteral("Deletes old journal files and asks the package manager for cached space back."),
            QStringLiteral("Deletes old system journal files and asks the package manager to hand back cached app "
                           "data. Backups on your backup drive are untouched, and downloaded music and video are never "
                           "removed. Reports the space actually measured, which is often zero — purgeable is mostly an "
                           "estimate, not deletable files."),
            MaintenanceTask::Measure::freeSpace},
        {QStringLiteral("purgeMemory"), QStringLiteral("Purge Inactive Memory"), QStringLiteral("memorychip"),
            QStringLiteral("Releases cached file memory."),
            QStringLiteral("Releases cached file memory and reports the measured change. Rarely worth doing — Linux "
                           "reclaims these pages the moment an app needs them — but the Cached Files figure above will "
                           "move if there is anything to release."),
            MaintenanceTask::Measure::cachedMemory},
        {QStringLiteral("flushDNS"), QStringLiteral("Flush DNS Cache"), QStringLiteral("network"),
            QStringLiteral("Fixes sites that won’t load after a network or DNS change."),
            QStringLiteral("Clears cached domain lookups. Fixes sites that won’t load after switching networks or "
                           "changing DNS.")},
        {QStringLiteral("rebuildSpotlight"), QStringLiteral("Rebuild File Search Index"),
            QStringLiteral("magnifyingglass"), QStringLiteral("Fixes missing or wrong file search results."),
            QStringLiteral("Erases and rebuilds the search index. Fixes missing or wrong file search results. Takes a "
                           "while and works in the background.")},
        {QStringLiteral("rebuildFontCaches"), QStringLiteral("Rebuild Font Caches"), QStringLiteral("textformat"),
            QStringLiteral("Fixes garbled or missing fonts."),
            QStringLiteral("Clears and rebuilds font caches. Fixes garbled or missing fonts. A restart is recommended "
                           "afterwards.")},
    };
    return all;
}

std::optional<MaintenanceTask> task(const QString& rawValue)
{
    for (const MaintenanceTask& candidate : tasks())
        if (candidate.rawValue == rawValue)
            return candidate;
    return std::nullopt;
}

std::optional<QString> measuredChange(
    const MaintenanceTask& task, std::optional<qint64> before, std::optional<qint64> after)
{
    if (task.measure == MaintenanceTask::Measure::none || !before || !after)
        return std::nullopt;
    const qint64 change = task.measure == MaintenanceTask::Measure::freeSpace ? *after - *before : *before - *after;
    const QString amount = formatBytes(std::max<qint64>(0, change));
    return amount
        + (task.measure == MaintenanceTask::Measure::freeSpace ? QStringLiteral(" back") : QStringLiteral(" released"));
}

} // namespace Maintenance
