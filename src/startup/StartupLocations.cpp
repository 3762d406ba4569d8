#include "startup/StartupLocations.h"

#include "common/StoragePaths.h"
#include "platform/TrashStore.h"

#include <QDir>
#include <QStandardPaths>

StartupLocations StartupLocations::forThisUser()
{
    StartupLocations locations;
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    locations.userUnits = config + QStringLiteral("/systemd/user");
    locations.globalUserUnits = {QStringLiteral("/etc/systemd/user"), QStringLiteral("/usr/lib/systemd/user")};
    locations.systemUnits = {QStringLiteral("/etc/systemd/system"), QStringLiteral("/lib/systemd/system")};
    locations.userAutostart = config + QStringLiteral("/autostart");
    // XDG_CONFIG_DIRS, /etc/xdg by default; the user's own folder comes first in Qt's list and is left out.
    for (const QString& folder : QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation))
        if (folder != config)
            locations.systemAutostart.append(folder + QStringLiteral("/autostart"));
    locations.flatpakApps
        = {StoragePaths::dataHome() + QStringLiteral("/flatpak/app"), QStringLiteral("/var/lib/flatpak/app")};
    locations.homeTrash = homeTrashPath();
    locations.dpkgFolder = QStringLiteral("/var/lib/dpkg");
    return locations;
}
