#pragma once

#include "startup/StartupItem.h"
#include "startup/StartupLocations.h"

#include <QList>

// Finds everything that starts by itself: the user's systemd units, the units enabled for every user, the
// system's units, and the desktop's autostart entries. Items of the operating system itself are left out,
// decided from the package database, never from names. Runs off the main thread.
class StartupItemScanner {
public:
    struct Result {
        QList<StartupItem> items; // by name
        // False when the user's service manager could not be asked, so its own view of the units is missing.
        bool complete = false;
        // Items that were on while their program lies in a Trash, switched off by this scan.
        QList<StartupItem> switchedOff;
    };

    explicit StartupItemScanner(StartupLocations locations);

    Result scan() const;

private:
    StartupLocations m_locations;
};
