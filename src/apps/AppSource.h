#pragma once

#include <QString>

// Where an installed app comes from. On Linux: the distribution's own packages (`system`), an app store
// (Flatpak or Snap, `appStore`), a third-party package repository (`developerID`), or anything else,
// such as an entry the user wrote by hand (`unsignedApp`, raw value "unsigned").
enum class AppSource { system, appStore, developerID, unsignedApp };

// The persisted raw value ("system", "appStore", "developerID", "unsigned").
QString appSourceName(AppSource source);
