#pragma once

#include "duplicates/VaultEntry.h"

#include <QList>
#include <QString>
#include <QUuid>

#include <cstdint>
#include <mutex>
#include <optional>

// A copy that an operation on the vault left where it was, and why.
struct VaultFailure {
    QString path;
    QString reason;
};

// How one held copy compares with the copy that was kept.
struct VaultVerification {
    enum class Result { unreadable, keeperIntact, keeperMissing, keeperChanged, vaultedFileMissing };

    QUuid id;
    VaultEntry entry;
    Result result = Result::keeperIntact;
    QString unreadableReason; // only for `unreadable`

    // The sentence the vault page shows for this result.
    QString sentence() const;
};

struct VaultMoveResult {
    QList<VaultEntry> moved;
    QList<VaultFailure> failed;
    std::optional<QString> abortedBecause; // why the move stopped before the end
    std::int64_t bytesHeld = 0;            // what the moved copies will free once the vault is emptied
};

struct VaultRestoreResult {
    struct Renamed {
        QString originalPath;
        QString restoredPath;
    };
    int restored = 0;
    QList<Renamed> renamed; // copies that went back under a new name because their place was taken
    QList<VaultFailure> failed;
};

// Progress of the running vault operation: the worker counts, the page's timer reads.
struct VaultProgress {
    std::mutex lock; // guards done and total
    std::int64_t done = 0;
    std::int64_t total = 0;

    void reset(std::int64_t all)
    {
        std::lock_guard guard(lock);
        done = 0;
        total = all;
    }
    void advance()
    {
        std::lock_guard guard(lock);
        ++done;
    }
    double fraction()
    {
        std::lock_guard guard(lock);
        return total > 0 ? double(done) / double(total) : 0.0;
    }
};
