#pragma once

#include "duplicates/VaultEntry.h"

#include <optional>

// The extended attribute every held copy carries: the path it came from, as UTF-8 without a terminator.
// Linux keeps attributes of ordinary users in the "user." namespace.
inline constexpr const char* vaultOriginAttribute = "user.us.ambertrell.Velloru.origin";

// Sets the attribute on the held copy; a volume without user attributes only costs a log line (the list
// still says where the copy came from).
void markOrigin(const VaultEntry& entry);
// Removes it from a copy put back at `path`.
void clearOrigin(const QString& path);
// The attribute's value on `path`, if any.
std::optional<QString> originOf(const QString& path);
