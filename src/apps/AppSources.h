#pragma once

#include <QSet>
#include <QStringList>

// Where the app inventory looks for desktop entries and what it knows about their origin.
struct AppSources {
    // The applications/ folders in precedence order: an entry hides entries with the same desktop-file id
    // in later folders, as desktop environments do.
    QStringList applicationFolders;
    // Folders among those whose entries were exported by Flatpak or Snap.
    QSet<QString> storeFolders;
    // Desktop entries installed by the distribution's package manager.
    QSet<QString> packagedEntries;
    // Velloru's own desktop-file id, which is never listed.
    QString ownBundleID = QStringLiteral("us.ambertrell.Velloru");

    // $XDG_DATA_HOME, then every folder of $XDG_DATA_DIRS, then the Flatpak and Snap export folders that
    // are not already among them; the package list from dpkg.
    static AppSources forThisSystem();
};
