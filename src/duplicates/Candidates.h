#pragma once

#include "duplicates/ContentHash.h"

#include <cstdint>
#include <vector>

// The files that share their size with at least one other, in size then inventory order, with what the
// sampling stage learns about each. Positions in these lists are what the stages pass around.
struct Candidates {
    enum class State : std::uint8_t {
        unsampled,
        sampled, // read in this run
        cached,  // taken from the hash cache
        leftOut, // changed, unreadable or not present locally
    };

    std::vector<std::uint32_t> records; // indices into Inventory::records
    std::vector<ContentHash> samples;
    std::vector<State> states;

    std::size_t size() const { return records.size(); }
};
