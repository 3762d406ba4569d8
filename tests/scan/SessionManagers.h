#pragma once

#include "TestSupport.h"

#include "apps/AppInventory.h"
#include "removal/AuditLog.h"
#include "removal/Trasher.h"
#include "scan/RunningMonitor.h"

// What a Smart Scan session works with, over a fixture tree: the installed apps are the desktop entries in
// the tree's "applications" folder, and the activity log has a folder of its own.
struct SessionManagers {
    FixtureTree tree;
    FixtureTree data;
    AuditLog audit{data.path()};
    AppInventory inventory{[this] {
        AppSources sources;
        sources.applicationFolders = {tree.path(QStringLiteral("applications"))};
        return sources;
    }};
    RunningMonitor running{inventory};
    Trasher trasher;
};
