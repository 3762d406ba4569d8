#pragma once

#include "removal/AuditEntry.h"
#include "removal/TrashResult.h"

#include <QStringList>

#include <optional>

class AuditLog;

// Small conveniences the front ends share when they trash paths or look up entries by hand.
namespace TrashRequests {

// Why an argument typed by hand is not moved: an empty name, ".", "..", the folder the command runs in,
// what the Trash mover refuses outright, or something that does not exist. Nothing when it may be tried.
std::optional<QString> refusal(const QString& argument);

// Each path with its size measured now.
QList<TrashItem> measured(const QStringList& paths);

// The entry whose id is `text`, or starts with it when that start is unique; case does not matter.
std::optional<AuditEntry> findEntry(const AuditLog& log, const QString& text);

} // namespace TrashRequests
