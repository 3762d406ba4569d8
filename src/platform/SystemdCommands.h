#pragma once

#include "platform/ToolCommand.h"

// The systemctl command lines that read and switch the user's systemd units. systemctl is found on PATH.
namespace SystemdCommands {

// How a user unit is switched: its own enablement links, or a mask in the user's folder for a unit that an
// administrator enabled for every user (which the user cannot disable, only mask).
enum class UserSwitch { enablement, mask };

ToolCommand switchUserUnit(const QString& unit, bool on, UserSwitch how);
// Stops a unit being switched off, so that it does not run on until the next login.
ToolCommand stopUserUnit(const QString& unit);
// Prints the unit's enablement state ("enabled", "disabled", "masked" …).
ToolCommand userUnitState(const QString& unit);
// Every unit the user's running service manager has loaded, with whether it is active, as JSON. Unlike the
// commands that read unit files, it fails when no service manager runs for the user.
ToolCommand loadedUserUnits();

} // namespace SystemdCommands
