#pragma once

#include <QString>

// The user-defaults keys, stored with QSettings in ~/.config/Velloru/Velloru.conf. Keys beginning with
// "debug" are developer switches and never appear in the settings window.
namespace DefaultsKey {

inline const QString onboardingComplete = QStringLiteral("onboardingComplete");
inline const QString permissionsEverGranted = QStringLiteral("permissionsEverGranted");
inline const QString permissionsRemindSuppressed = QStringLiteral("permissionsRemindSuppressed");
inline const QString debugStartPage = QStringLiteral("debugStartPage");
inline const QString debugPermissions = QStringLiteral("debugPermissions");
inline const QString debugTour = QStringLiteral("debugTour");
// Starts a Smart Scan by itself when the dashboard is shown while no scan has run.
inline const QString debugAutoScan = QStringLiteral("debugAutoScan");
// Raw permission values treated as missing even when granted.
inline const QString debugMissingPermissions = QStringLiteral("debugMissingPermissions");
// The chart style of the disk-usage charts (Settings → Charts): "honeycomb" or "rail".
inline const QString chartStyle = QStringLiteral("chartStyle");

} // namespace DefaultsKey

// Names the application so that QSettings and the XDG folders resolve to Velloru’s own, and sets the
// log line format. Call it once,
// right after the Qt application object is created.
void setApplicationIdentity();

// QSettings rewrites the settings file whole at its first change, silently dropping what it could not read:
// lines it cannot parse, and the bytes of a value that isn't UTF-8. Called before anything opens the user
// defaults, this keeps a dated copy of such a file beside it and writes the file back at once with what could
// be read, so the same file is not copied again at the next start. A file that cannot be opened at all is
// moved aside instead, and the defaults start empty.
void keepUnreadableSettingsAside();
