#include "scan/SmartScanLocations.h"

#include "platform/UserIdentity.h"

#include <QStandardPaths>

namespace {

QString xdgFolder(const char* variable, const QString& fallback)
{
    const QString value = qEnvironmentVariable(variable);
    return value.startsWith(QLatin1Char('/')) ? value : fallback;
}

} // namespace

SmartScanLocations SmartScanLocations::forHome(const QString& home)
{
    const QString cache = xdgFolder("XDG_CACHE_HOME", home + QStringLiteral("/.cache"));
    const QString config = xdgFolder("XDG_CONFIG_HOME", home + QStringLiteral("/.config"));
    const QString data = xdgFolder("XDG_DATA_HOME", home + QStringLiteral("/.local/share"));
    const QString state = xdgFolder("XDG_STATE_HOME", home + QStringLiteral("/.local/state"));

    SmartScanLocations locations;
    locations.cacheFolders = {cache};
    locations.flatpakAppsFolder = home + QStringLiteral("/.var/app");
    locations.logSources = {
        {home, {QStringLiteral(".xsession-errors"), QStringLiteral(".xsession-errors.*")}},
        {data + QStringLiteral("/xorg"), {QStringLiteral("*.log"), QStringLiteral("*.log.old")}},
        {state, {QStringLiteral("*.log"), QStringLiteral("*.log.old")}},
    };
    locations.crashFolders = {QStringLiteral("/var/crash")};
    locations.crashOwner = currentUserID();
    locations.savedStateFolders = {config + QStringLiteral("/session")};
    locations.linkPlaces = {{home, 1}, {home + QStringLiteral("/bin"), 1}, {home + QStringLiteral("/.local/bin"), 1},
        {data + QStringLiteral("/applications"), 2}, {config + QStringLiteral("/autostart"), 1},
        {config + QStringLiteral("/systemd/user"), 2}};
    // The user's own folders, where downloads and shortcuts leave links, two levels deep: enough for a link
    // in a folder of downloads, without walking a tree of projects or photos.
    for (const auto place :
        {QStandardPaths::DesktopLocation, QStandardPaths::DocumentsLocation, QStandardPaths::DownloadLocation}) {
        const QString folder = QStandardPaths::writableLocation(place);
        if (!folder.isEmpty() && folder != home)
            locations.linkPlaces.append({folder, 2});
    }
    locations.startupFolders = {config + QStringLiteral("/systemd/user"), config + QStringLiteral("/autostart")};
    return locations;
}
