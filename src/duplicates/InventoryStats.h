#pragma once

#include <array>
#include <cstdint>
#include <string>

// Counters of one inventory run, shown while it runs and in the summary of what was not looked at.
struct InventoryStats {
    std::int64_t filesIndexed = 0;
    std::int64_t bytesIndexed = 0;
    std::int64_t directoriesRead = 0;
    std::int64_t directoriesDiscovered = 0;
    std::int64_t datalessSkipped = 0;
    std::int64_t packagesHalted = 0;
    std::int64_t unreadableDirectories = 0;
    // Names that aren't valid UTF-8 have no exact text form, so these are left out rather than guessed at; a
    // folder's whole contents go with it.
    std::int64_t badNameFilesSkipped = 0;
    std::int64_t badNameFoldersSkipped = 0;
    std::int64_t belowFloorSkipped = 0;
    std::int64_t aliasesCollapsed = 0;
    std::string scanning; // the folder just read, for display
    std::array<std::int32_t, 32> sizeHistogram{};
};

// The histogram bucket of a file size: the power of two at or below it, so bucket n holds sizes from 2^n to
// 2^(n+1) - 1 (bucket 12 holds 4 KiB up to 8 KiB, bucket 0 also the empty file); 2 GiB and more share 31.
int sizeBucket(std::uint64_t size);
