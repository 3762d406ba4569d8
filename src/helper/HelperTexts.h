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

// The helper row of Settings → Services.
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
// Installed but its socket unit is switched off.
inline QString needsApprovalStatus()
{
    return QStringLiteral("The helper is installed but switched off — run “velloru helper install” to switch it on.");
}

} // namespace HelperTexts
