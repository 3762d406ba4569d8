#pragma once

#include "apps/AppSources.h"
#include "apps/InstalledApp.h"

#include <QList>

// Reads every desktop entry of the sources' applications folders and returns the installed apps, each
// listed once by its resolved path. Hidden and NoDisplay entries, entries that are not applications, whose
// TryExec program is missing, or that lie in a Trash, inside another app's mounted bundle (an AppImage's
// /tmp/.mount_ folder) or in a build output folder are never apps. Safe on any thread.
QList<InstalledApp> collectInstalledApps(const AppSources& sources);
