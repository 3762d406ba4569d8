#pragma once

#include <QString>
#include <QStringList>

// Where startup items are found. The scanner and the switches take these as input, so tests can hand them
// any tree.
struct StartupLocations {
    QString userUnits;           // the user's own units (~/.config/systemd/user)
    QStringList globalUserUnits; // units for every user: the administrator's, then the packages'
    QStringList systemUnits;     // system units: the administrator's, then the packages'
    QString userAutostart;       // the user's autostart entries and overrides (~/.config/autostart)
    QStringList systemAutostart; // autostart entries placed by software (/etc/xdg/autostart)
    QStringList flatpakApps;     // Flatpak's installation folders of apps, the user's first
    QString homeTrash;           // the home Trash ($XDG_DATA_HOME/Trash)
    QString dpkgFolder;          // dpkg's database, which tells the operating system's own files

    // The folders of this machine for the user whose home and XDG folders are set in the environment.
    static StartupLocations forThisUser();
};
