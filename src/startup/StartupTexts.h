#pragma once

#include <QString>

// What the Login Items section and the startup command say.
namespace StartupTexts {

inline QString feature()
{
    return QStringLiteral("Login Items");
}
inline QString subtitle()
{
    return QStringLiteral("Everything that starts itself when you log in.");
}
inline QString info()
{
    return QStringLiteral(
        "Switching a background item off disables its systemd unit: systemd then refuses to start that unit, at "
        "this login and every one after it. Your desktop keeps its own record of what runs in the background, in "
        "places only it writes, so a switch there may still read “on” for an item Velloru turned off — the item "
        "is off either way, because systemd is what actually starts it. Apps set to open at login are a separate "
        "list, and Velloru adds and removes those entries directly. System-wide daemons need the Maintenance "
        "Helper.");
}
inline QString protectedNote()
{
    return QStringLiteral("Items that are part of the operating system are left out, and that check reads the file "
                          "system and the package database rather than trusting names.");
}
inline QString reading()
{
    return QStringLiteral("Reading your startup items…");
}
inline QString emptyTitle()
{
    return QStringLiteral("Nothing starts at login");
}
inline QString emptyText()
{
    return QStringLiteral("No apps, background agents or system daemons are set to start when you log in.");
}
inline QString appsSection()
{
    return QStringLiteral("Opens at login");
}
inline QString appsExplanation()
{
    return QStringLiteral("Full apps that launch themselves when you log in. Off removes the entry from that list; "
                          "the app itself stays where it is.");
}
inline QString backgroundSection()
{
    return QStringLiteral("Runs in the background");
}
inline QString backgroundExplanation()
{
    return QStringLiteral(
        "Agents, daemons and the small helper apps bundled inside other apps. Off stops systemd starting them.");
}
inline QString leftoverSection()
{
    return QStringLiteral("Left over from removed apps");
}
inline QString leftoverExplanation()
{
    return QStringLiteral(
        "These don’t run — Velloru switched them off because the program they point at is gone. Your desktop "
        "keeps its own record of them in places only it can write, and that record outlives the app: deleting "
        "it, Trash and all, does not remove the entry. So your desktop’s settings may still show a switch here. "
        "Nothing Velloru can do clears that, and the switch it shows won’t start anything.");
}
inline QString incompleteTitle()
{
    return QStringLiteral("This list is incomplete");
}
inline QString incompleteText()
{
    return QStringLiteral(
        "Your service manager keeps the full record of what it starts, and it didn’t answer. Without it Velloru "
        "can only show the units and autostart entries it can read on disk, so units your desktop generates for "
        "itself are missing.");
}
inline QString readAgain()
{
    return QStringLiteral("Read Again");
}
inline QString programMissingBadge()
{
    return QStringLiteral("Broken — program missing");
}
inline QString appInTrashBadge()
{
    return QStringLiteral("Leftover — app is in the Trash");
}
inline QString disagreesBadge()
{
    return QStringLiteral("Your service manager still shows this on");
}
inline QString switchedOffFromTrash()
{
    return QStringLiteral("Switched off — launching from the Trash");
}
inline QString unitOff(const QString& name)
{
    return QStringLiteral("%1 is off. systemd won’t start it at login.").arg(name);
}
inline QString entryOff(const QString& name)
{
    return QStringLiteral("%1 is off. Your desktop won’t start it at login.").arg(name);
}
inline QString willStartAgain(const QString& name)
{
    return QStringLiteral("%1 will start again at your next login.").arg(name);
}
inline QString couldNotTurn(const QString& name, bool on, const QString& reason)
{
    return QStringLiteral("Couldn’t turn %1 %2 — %3")
        .arg(name, on ? QStringLiteral("on") : QStringLiteral("off"), reason);
}
inline QString daemonNeedsHelper(const QString& name)
{
    return name + QStringLiteral(" runs as a system daemon. Install the Maintenance Helper to switch it off.");
}
inline QString removed(const QString& name)
{
    return QStringLiteral("%1 won’t start any more. The file is in your Trash.").arg(name);
}
inline QString couldNotMove(const QString& name, const QString& reason)
{
    return QStringLiteral("Couldn’t move %1 to the Trash — %2").arg(name, reason);
}
inline QString removeNeedsHelper(const QString& name)
{
    return name + QStringLiteral(" belongs to the system. Install the Maintenance Helper to remove it.");
}
inline QString removedFromLoginItems()
{
    return QStringLiteral("Removed from login items");
}
inline QString noLongerOpens(const QString& name)
{
    return name + QStringLiteral(" no longer opens at login. The app itself is untouched.");
}
inline QString ownedByApp()
{
    return QStringLiteral("Part of the package that installed it")
        + QStringLiteral(". Switching it off stops it; removing it means uninstalling the app.");
}
inline QString confirmRemove(const QString& name)
{
    return QStringLiteral("Move “%1” to the Trash? It won’t start at login any more; you can put it back from "
                          "Activity.")
        .arg(name);
}

} // namespace StartupTexts
