#pragma once

#include "duplicates/DuplicateGroup.h"
#include "duplicates/VerifiedGroup.h"

#include <QList>

#include <vector>

struct Inventory;
struct UserFolders;

// Turns proven sets into what the user reviews: each member with its path, other names and reclaimable
// bytes, the keeper chosen, the default ticks set, and the sets in display order.
QList<DuplicateGroup> buildDuplicateGroups(
    const Inventory& inventory, const std::vector<VerifiedGroup>& verified, const UserFolders& folders);
