#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// One measured folder. The worker that lists it fills its counts and subfolders; after its branch is
// complete the roll-up sets the totals, and from then on it is only read.
struct DirNode {
    std::string name;
    std::string path;
    bool isPackage = false;
    std::uint64_t fileID = 0;
    std::int64_t directFileBytes = 0; // allocated bytes of the items directly inside that are not folders
    std::int64_t directFileCount = 0;
    std::vector<std::shared_ptr<DirNode>> subdirectories; // emptied for packages by the roll-up
    std::int64_t total = 0;                               // set by the roll-up
    // The blocks of the folder's own listing. `du` counts them, and so does the total, so both agree.
    std::int64_t ownAllocatedSize = 0;
    std::int64_t totalFileCount = 0; // items that are not folders in the whole subtree; set by the roll-up
};

// Sets `total` and `totalFileCount` of every folder of the tree under `branch`, children before parents,
// and empties the subfolder list of each package once its total is known.
void rollUp(DirNode& branch);
