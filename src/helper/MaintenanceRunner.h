#pragma once

#include "helper/HelperManager.h"
#include "helper/Maintenance.h"

#include <functional>

class AuditLog;

// The two figures the maintenance page keeps an eye on.
struct LiveReading {
    std::optional<qint64> freeSpace;    // on the root file system
    std::optional<qint64> cachedMemory; // cached file memory
};
LiveReading readLiveMeter();

struct MaintenanceOutcome {
    bool success = false;
    QString line; // the helper's message, with the measured change where there is one
};

// Runs one task through the helper: reads the meter, asks the helper (two minutes at most, each command
// it starts reported to `onStep`), measures again, writes the activity entry and answers with the card's line.
void runMaintenanceTask(HelperManager& helper, AuditLog& log, const MaintenanceTask& task,
    std::function<void(TaskStep)> onStep, std::function<void(MaintenanceOutcome)> done);
