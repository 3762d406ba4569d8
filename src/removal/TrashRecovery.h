#pragma once

#include "removal/AuditEntry.h"

#include <QList>

#include <optional>

class AuditLog;

// Putting items back from the Trash, using the place the activity log recorded for each.
namespace TrashRecovery {

struct Failure {
    enum class Kind { destinationOccupied, couldNotCreateParent, moveFailed, notInTrash };
    Kind kind;
    QString detail; // the path or the system's description the sentence names

    QString sentence() const;
};

// The "Moved to Trash" entries whose item is still in the Trash.
QList<AuditEntry> recoverableEntries(const AuditLog& log);
// The same from a copy of the entries, for a worker thread: the check looks at every item in the Trash.
QList<AuditEntry> recoverableEntries(const QList<AuditEntry>& entries);

// Puts the entry's item back where it was, recreating missing folders and never replacing anything. On
// success the entry is marked "Recovered"; on failure the item and the entry stay as they were.
std::optional<Failure> putBack(AuditLog& log, const AuditEntry& entry);

} // namespace TrashRecovery
