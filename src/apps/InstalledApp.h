#pragma once

#include "apps/AppSource.h"

#include <QStringList>

#include <optional>

// One installed application, read from its desktop entry.
struct InstalledApp {
    QString id;                      // the entry's path with symbolic links resolved: the app's identity
    QString name;                    // Name in the user's locale, else the file name without ".desktop"
    std::optional<QString> bundleID; // the Flatpak app id, else the desktop-file id
    std::optional<QString> vendor;   // the domain a reverse-DNS identifier names ("mozilla.org")
    AppSource source = AppSource::unsignedApp;
    QStringList appGroups;    // Linux has no app-group entitlements, so this stays empty
    bool isProtected = false; // installed under /usr by the package manager: only root can remove it
    qint64 size = 0;          // the size of the program file the entry starts, 0 when it cannot be found
    // What the running-apps monitor matches processes against; never serialised.
    QString executableName; // the file name of the program the entry starts (Flatpak: empty)
    QString programPath;    // that program with symbolic links resolved, empty when it cannot be found

    friend bool operator==(const InstalledApp&, const InstalledApp&) = default;
};

// The app as one JSON object with the keys above, in order, from `id` to `size`.
QByteArray installedAppJson(const InstalledApp& app);
