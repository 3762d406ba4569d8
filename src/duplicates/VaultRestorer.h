#pragma once

#include "duplicates/VaultResults.h"

#include <QList>
#include <QSet>
#include <QUuid>

#include <optional>

class VaultStore;

// What a restore hands back: the outcome, each file put back (for the activity log) and the list as it
// now stands.
struct VaultRestoreOutcome {
    struct PutBack {
        QString path; // where the file is now
        std::int64_t size = 0;
    };
    VaultRestoreResult result;
    QList<PutBack> putBack;
    QList<VaultEntry> entries;
    std::optional<QString> saveProblem;
};

// Puts the held copies with these ids (every one when `ids` is empty) back where they came from, under the
// store's lock, never over anything: a taken place gets the first free numbered name beside it. Runs on a
// worker thread.
VaultRestoreOutcome restoreEntries(const QSet<QUuid>& ids, const VaultStore& store, VaultProgress& progress);
