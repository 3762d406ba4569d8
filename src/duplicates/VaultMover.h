#pragma once

#include "duplicates/DuplicateGroup.h"
#include "duplicates/VaultResults.h"

#include <QList>

#include <optional>

class VaultStore;

// What a move hands back to the vault controller: the outcome, and the list as it now stands (with what
// other Velloru processes added meanwhile).
struct VaultMoveOutcome {
    VaultMoveResult result;
    QList<VaultEntry> entries;
    std::optional<QString> saveProblem;
};

// Moves the ticked copies of `groups`, set by set, into the vault under the store's lock. A copy that may
// not go is skipped with its reason; a copy that is no longer what the scan saw stops the whole move.
// Runs on a worker thread.
VaultMoveOutcome moveTickedCopies(
    const QList<DuplicateGroup>& groups, const VaultStore& store, VaultProgress& progress);
