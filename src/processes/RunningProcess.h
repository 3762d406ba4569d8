#pragma once

#include "platform/ProcessIdentity.h"

#include <QString>

#include <optional>

// One row of the process list.
struct RunningProcess {
    qint32 id = 0;
    QString name;
    QString path; // the program's path, empty when it cannot be read (another user's process)
    std::optional<QString> bundleID;
    qint64 memory = 0; // resident memory, in bytes
    double cpu = 0;    // percent of one core over the time between the last two samples
    quint32 uid = 0;
    qint32 nice = 0;
    bool isApp = false;
    bool isRegularApp = false; // the app's own process, not one that it started
    bool isResponding = true;  // false when stopped, or stuck waiting on a device for more than one sample

    // Told apart from a later process given the same id by the time it started, in clock ticks after boot.
    quint64 startTicks = 0;
    qint32 parentID = 0;
    QString appName;       // the installed app's name, when isApp
    QString user;          // the owner's name
    bool isSystem = false; // owned by root or a service account, and not by the user running Velloru
    // False for a process that /proc hides from this user: its memory (when known) came from the helper, and
    // its CPU share and priority are unknown.
    bool figuresKnown = true;

    ProcessIdentity identity() const { return {id, startTicks}; }
};
