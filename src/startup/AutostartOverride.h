#pragma once

#include <QString>

#include <optional>

// Switches an autostart entry off or on from the user's own autostart folder, never touching a system file:
// off writes Hidden=true into the same-named file there (created when missing), which the session managers
// and systemd's autostart generator both honour; on takes that key out again, and removes the file when
// nothing but the switch was in it. Every write is atomic.
namespace AutostartOverride {

// Nothing on success (switching to the state it is already in included), or the reason it failed.
std::optional<QString> apply(const QString& userFolder, const QString& fileName, bool on);

// The Hidden=true / X-GNOME-Autostart-enabled=false state of an entry's text.
bool switchesOff(const QByteArray& content);

} // namespace AutostartOverride
