#pragma once

#include "duplicates/ContentHash.h"

#include <cstdint>
#include <vector>

// Files proven equal byte for byte: indices into the inventory's records, at least two.
struct VerifiedGroup {
    std::vector<std::uint32_t> members;
    ContentHash hash; // of the whole content
    std::uint64_t size = 0;
};
