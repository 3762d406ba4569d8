#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

// Where Smart Scan looks. The rules take these as input, so that tests can hand them any tree.
struct SmartScanLocations {
    // Folders whose entries are named files of named apps or programs.
    struct LogSource {
        QString folder;
        QStringList nameFilters; // wildcard patterns; empty means every entry
    };
    // A place searched for broken symbolic links, and how many folder levels below it are searched.
    struct LinkPlace {
        QString folder;
        int depth = 1;
    };

    QStringList cacheFolders;                // every entry is an app's (or a shared) cache
    QString flatpakAppsFolder;               // <id>/cache below it is the cache of the Flatpak app <id>
    QList<LogSource> logSources;             // every matching entry is a log
    QStringList crashFolders;                // every entry is a crash report
    std::optional<std::uint32_t> crashOwner; // when set, only crash reports this user owns
    QStringList savedStateFolders;           // every entry is an app's saved session state
    QList<LinkPlace> linkPlaces;
    QStringList startupFolders; // systemd user units and autostart entries

    // The Linux desktop's locations for the home folder `home` and the XDG folders of the environment.
    static SmartScanLocations forHome(const QString& home);
};
