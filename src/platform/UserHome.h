#pragma once

#include <QString>

#include <optional>

// The home folder of a user, from the password database.
std::optional<QString> homeFolderOf(unsigned uid);
