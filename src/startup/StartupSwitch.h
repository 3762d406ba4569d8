#pragma once

#include "startup/StartupItem.h"
#include "startup/StartupLocations.h"

#include <chrono>

// What a switch or a removal came to: the sentence the user reads.
struct StartupOutcome {
    bool success = false;
    QString message;
};

// Switches the items the user may switch without the helper: the user's units (through systemctl, read back
// afterwards) and autostart entries (an override in the user's folder). Runs its commands and waits, so it
// belongs on a worker thread.
namespace StartupSwitch {

// How long each systemctl command may take.
constexpr std::chrono::seconds commandLimit{15};

StartupOutcome setEnabled(const StartupItem& item, bool on, const StartupLocations& locations);

} // namespace StartupSwitch
