#pragma once

#include <QString>

// What the helper client says when a call cannot be completed.
namespace HelperTexts {

inline QString notSetUp()
{
    return QStringLiteral("The maintenance helper isn’t set up yet.");
}
inline QString unavailable()
{
    return QStringLiteral("The maintenance helper is unavailable.");
}
inline QString noAnswer()
{
    return QStringLiteral("The maintenance helper didn’t respond.");
}
inline QString contactLost(const QString& description)
{
    return QStringLiteral("Couldn’t reach the maintenance helper: ") + description;
}

inline QString firstAidTooLong()
{
    return QStringLiteral("First Aid didn’t finish in time.");
}
// Jobs that write a whole drive, and the contents clone.
inline QString driveJobNotSetUp()
{
    return QStringLiteral("The helper isn’t set up yet.");
}
inline QString driveJobUnavailable()
{
    return QStringLiteral("The helper is unavailable.");
}
inline QString driveJobContactLost(const QString& description)
{
    return QStringLiteral("Lost contact with the helper: ") + description;
}
// A process of another user while the helper is missing.
inline QString systemProcess()
{
    return QStringLiteral("That process belongs to the system — install the Maintenance Helper to manage it.");
}

// The helper row of Settings → Services.
inline QString explanation()
{
    return QStringLiteral("Tasks that need administrator rights run through Velloru’s helper. You approve it once, "
                          "then it’s just a button.");
}
inline QString heading()
{
    return QStringLiteral("Maintenance Helper");
}
inline QString readyStatus()
{
    return QStringLiteral("Helper installed and ready");
}
inline QString notInstalledStatus()
{
    return QStringLiteral("Helper not installed yet");
}
inline QString installFailedStatus()
{
    return QStringLiteral("Helper couldn’t be installed");
}
inline QString unreachableStatus()
{
    return QStringLiteral("The helper is registered but isn’t responding.");
}
inline QString staleStatus()
{
    return QStringLiteral("The helper needs updating to match this version of Velloru.");
}
inline QString updatingStatus()
{
    return QStringLiteral("Updating the helper…");
}
// Follows the stale status, naming the version that is running.
inline QString outOfStep(const QString& installedVersion)
{
    return QStringLiteral("Out of step: the helper is from Velloru ") + installedVersion + QLatin1Char('.');
}
// Installed but its socket unit is switched off.
inline QString needsApprovalStatus()
{
    return QStringLiteral("The helper is installed but switched off — run “velloru helper install” to switch it on.");
}

} // namespace HelperTexts
