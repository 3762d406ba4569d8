#pragma once

#include <cstdint>

// The numeric id of the user Velloru runs as.
std::uint32_t currentUserID();

// Whether `uid` is root or an account the system runs services under rather than a person's: outside the
// range of user ids that /etc/login.defs gives people (UID_MIN to UID_MAX, 1000 to 60000 by default).
bool isSystemAccount(std::uint32_t uid);
