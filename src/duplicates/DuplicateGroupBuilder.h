#pragma once

#include "duplicates/DuplicateGroup.h"
#include "duplicates/VerifiedGroup.h"

#include <QList>

#include <vector>

struct Inventory;
struct UserFolders;

// Turns proven sets into what the user reviews, in two steps so the inventory can be let go between them:
// first each member with its path, other names and reclaimable bytes (nothing of the inventory is needed
// after this), then the keeper chosen, the default ticks set and the sets in display order.
QList<DuplicateGroup> presentDuplicateGroups(const Inventory& inventory, const std::vector<VerifiedGroup>& verified);
void chooseKeepersAndTicks(QList<DuplicateGroup>& groups, const UserFolders& folders);
