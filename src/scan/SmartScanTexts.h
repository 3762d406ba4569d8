#pragma once

#include "common/ByteCount.h"

#include <QString>

// The group titles and item reasons of Smart Scan, and the texts of its screens.
namespace SmartScanTexts {

inline QString appCachesTitle()
{
    return QStringLiteral("App Caches");
}
inline QString thumbnailsTitle()
{
    return QStringLiteral("Thumbnails");
}
inline QString logsTitle()
{
    return QStringLiteral("Logs");
}
inline QString crashReportsTitle()
{
    return QStringLiteral("Crash Reports");
}
inline QString savedStatesTitle()
{
    return QStringLiteral("Saved App States");
}
inline QString brokenItemsTitle()
{
    return QStringLiteral("Broken Items");
}

inline QString cacheInstalledNotRunning()
{
    return QStringLiteral("Cache — app installed and not running");
}
inline QString cacheSystem()
{
    return QStringLiteral("System cache — review before removing");
}
inline QString cacheInUse()
{
    return QStringLiteral("App or background service is running — quit it first");
}
inline QString cacheShared()
{
    return QStringLiteral("Shared cache folder — review before removing");
}
inline QString unclaimed()
{
    return QStringLiteral("No installed app claims this — review before removing");
}
inline QString thumbnailCache()
{
    return QStringLiteral("Thumbnail cache — your desktop rebuilds it on demand");
}
inline QString log()
{
    return QStringLiteral("Log");
}
inline QString crashReport()
{
    return QStringLiteral("Crash report");
}
inline QString savedState()
{
    return QStringLiteral("Saved window state");
}
inline QString savedStateSystem()
{
    return QStringLiteral("System window state — review before removing");
}
inline QString savedStateInUse()
{
    return QStringLiteral("App is running — quit it first");
}
inline QString savedStateUnrecognised()
{
    return QStringLiteral("Unrecognised window state — review before removing");
}
inline QString brokenLink(const QString& target)
{
    return QStringLiteral("Broken symlink → ") + target;
}
inline QString startupProgramMissing()
{
    return QStringLiteral("Startup item — program missing");
}

// What the Smart Scan card promises.
inline QString cardText()
{
    return QStringLiteral("Finds caches, logs, crash reports, broken items, and data left behind by apps you’ve "
                          "already removed.\n\nVelloru pre-ticks an app’s cache only when that app is installed, "
                          "third-party and not running, plus thumbnail caches your desktop rebuilds by itself. "
                          "Anything still in use stays listed, unticked, for you to decide.");
}
inline QString willMove()
{
    return QStringLiteral("will move to the Trash");
}
inline QString moved()
{
    return QStringLiteral("moved to the Trash. Empty the Trash to reclaim the space — or restore anything you "
                          "change your mind about.");
}
// "2 items, 420.0 kB, moved to the Trash. …": what a finished clean says, in the window and headless.
inline QString removalSummary(qint64 items, qint64 bytes)
{
    return QStringLiteral("%1 %2, %3, %4")
        .arg(items)
        .arg(items == 1 ? QStringLiteral("item") : QStringLiteral("items"))
        .arg(formatBytes(bytes), moved());
}

// The same once the Trash has been emptied since: the space is free now.
inline QString removalEmptiedSummary(qint64 items, qint64 bytes)
{
    return QStringLiteral("%1 %2, %3, moved to the Trash, which has been emptied since — the space is free again.")
        .arg(items)
        .arg(items == 1 ? QStringLiteral("item") : QStringLiteral("items"))
        .arg(formatBytes(bytes));
}

inline QString nothingSelected()
{
    return QStringLiteral("Nothing selected");
}
inline QString tickHint()
{
    return QStringLiteral("Tick anything you’d like to remove");
}

// The feature name under which Smart Scan's removals are written to the activity log.
inline QString feature()
{
    return QStringLiteral("Smart Scan");
}

} // namespace SmartScanTexts
