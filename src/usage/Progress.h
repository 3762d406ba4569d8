#pragma once

#include "usage/DirNode.h"
#include "usage/LargestFiles.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// One value of a walk's stream.
struct Progress {
    std::optional<std::string> scanning; // the first top-level folder, in listing order, still being measured
    std::vector<std::shared_ptr<const DirNode>> measured; // finished top-level folders, in order of completion
    std::int64_t measuredTotal = 0;
    bool finished = false;
    // The items lying directly in the root belong to no top-level folder: they are reported here, with the
    // root folder's own allocation, so that measuredTotal + rootFileBytes is the whole tree.
    std::int64_t rootFileBytes = 0;
    std::int64_t rootFileCount = 0;
    // Folders that could not be listed (or not to the end), sorted; what they hold is missing from the totals.
    // Set in the finished value only.
    std::vector<std::string> unreadableFolders;
    // The largest files of the whole tree, largest first (a file with several names may appear under each).
    // Set in the finished value only.
    std::vector<SizedFile> largestFiles;
};

// Live counters for a progress display, sampled while the walk runs.
struct WalkCounters {
    std::int64_t foldersListed = 0;
    std::int64_t filesCounted = 0;
    std::int64_t bytesCounted = 0;
};
