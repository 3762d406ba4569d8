#pragma once

#include <cstdint>
#include <string>

// One item of a folder listing (see FolderListing for how much is learnt about a subfolder).
struct Entry {
    std::string name;
    bool isDirectory = false;
    bool isSymlink = false;
    std::int64_t allocatedSize = 0; // blocks × 512; for a folder examined in full, the blocks of its own listing
    std::uint64_t device = 0;       // the whole dev_t: a 32-bit number could make two volumes look alike
    std::uint64_t fileID = 0;
    std::uint32_t linkCount = 0; // above 1, the same file has other names that must not be counted again
};
