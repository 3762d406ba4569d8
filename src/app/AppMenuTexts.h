#pragma once

#include <QString>

// The texts of the application menu and of the alerts it leads to.
namespace AppMenuTexts {

inline QString about()
{
    return QStringLiteral("About Velloru");
}
inline QString checkForUpdates()
{
    return QStringLiteral("Check for Updates…");
}
inline QString startBackgroundServices()
{
    return QStringLiteral("Start Background Services");
}
inline QString startBackgroundServicesHelp()
{
    return QStringLiteral("Register the mount agent again and reconnect drives set to auto-connect.");
}
inline QString stopBackgroundServices()
{
    return QStringLiteral("Stop Background Services");
}
inline QString stopBackgroundServicesHelp()
{
    return QStringLiteral("Unmount drives, stop the mount agent and exit the privileged helper.");
}
// Background services were stopped while the helper was in the middle of a disk operation.
inline QString helperStillBusy()
{
    return QStringLiteral("The helper is still busy");
}
inline QString helperStillBusyText()
{
    return QStringLiteral("A disk operation is still running, so the privileged helper was left alone. The mount "
                          "agent has stopped and the drives are unmounted.");
}
inline QString settings()
{
    return QStringLiteral("Settings…");
}
inline QString quit()
{
    return QStringLiteral("Quit Velloru");
}
// Velloru is installed and updated by the system's package manager, which owns the update check.
inline QString updatesComeFromPackageManager()
{
    return QStringLiteral("Velloru is updated with the rest of your system — use your software updater.");
}

} // namespace AppMenuTexts
