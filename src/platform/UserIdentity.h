#pragma once

#include <cstdint>

// The numeric id of the user Velloru runs as.
std::uint32_t currentUserID();
