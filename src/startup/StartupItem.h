#pragma once

#include <QString>

#include <optional>

// What kind of thing starts by itself; the raw value is the label shown.
enum class StartupKind { app, loginItem, agent, daemon };
// How its switch works: a unit of the user's service manager, a system unit (through the helper), or an
// autostart entry of the desktop session.
enum class StartupControl { userLaunchd, systemLaunchd, loginApp };
// What Remove does with it.
enum class StartupRemoval { trashPlist, trashPlistAsRoot, loginAppEntry, ownedByApp };
enum class StartupHealth { ok, programMissing, appInTrash };

namespace StartupNames {
QString kindLabel(StartupKind kind);
QString controlName(StartupControl control);
QString removalName(StartupRemoval removal);
QString healthName(StartupHealth health);
} // namespace StartupNames

struct StartupItem {
    QString id; // the unit's name, or "app:" and the autostart entry's path
    QString name;
    std::optional<QString> developer;
    QString detail; // the secondary line: the program it starts
    StartupKind kind = StartupKind::agent;
    StartupControl control = StartupControl::userLaunchd;
    StartupRemoval removal = StartupRemoval::trashPlist;
    bool enabled = false;
    StartupHealth health = StartupHealth::ok;
    bool systemSettingsDisagrees = false; // switched off, yet the service manager reports it running
    std::optional<QString> revealURL;     // the file that defines it
    QString program;                      // the program it starts, or "(no program)"

    // Which of the page's three lists it belongs to.
    bool isLeftover() const { return health != StartupHealth::ok; }
    bool opensApp() const { return kind == StartupKind::app; }
};
