#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// One of the user's startup items as read from its file: a systemd user service or an XDG autostart entry.
struct LaunchAgentInfo {
    QString id;             // the file's path
    QString label;          // the unit's file name, or the autostart entry's Name
    QString program;        // the program it starts, or "(no program)" when the file names none
    bool runAtLoad = false; // starts with the session: the unit has an [Install] target, the entry is enabled
    bool keepAlive = false; // the unit restarts its program when it exits
    bool broken = false;    // the program's file does not exist

    static QString noProgram() { return QStringLiteral("(no program)"); }
};

// Reads a "*.service" unit or a "*.desktop" autostart entry. Nothing for other files, files that cannot be
// read, and autostart entries switched off with Hidden=true.
std::optional<LaunchAgentInfo> readLaunchAgent(const QString& path);

// Every startup item directly inside `folders` (links, such as the units a package enabled, and names that
// aren't valid UTF-8 excluded).
QList<LaunchAgentInfo> readLaunchAgents(const QStringList& folders);
