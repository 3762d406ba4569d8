#pragma once

#include <QHash>
#include <QString>

#include <chrono>
#include <optional>

// What the user's running service manager itself reports about its units (systemctl --user list-units):
// unit name → active state ("active", "inactive", "failed" …). It is the desktop's own record of what runs in
// the background, asked once and kept for two minutes. Safe on any thread.
namespace ServiceManagerRecords {

constexpr std::chrono::seconds limit{60};
constexpr std::chrono::seconds keptFor{120};

// Nothing when the service manager could not be asked (none running for this user, or no answer in time).
std::optional<QHash<QString, QString>> read();
// Parses list-units' JSON; nothing when it isn't that.
std::optional<QHash<QString, QString>> parse(const QByteArray& json);
// Forgets the kept answer, after a switch changed it.
void forget();

} // namespace ServiceManagerRecords
