#pragma once

#include "removal/AuditEntry.h"
#include "removal/TrashResult.h"

#include <QStringList>

#include <optional>

class AuditLog;

// Small conveniences the front ends share when they trash paths or look up entries by hand.
namespace TrashRequests {

// Each path with its size measured now.
QList<TrashItem> measured(const QStringList& paths);

// The entry whose id is `text`, or starts with it when that start is unique; case does not matter.
std::optional<AuditEntry> findEntry(const AuditLog& log, const QString& text);

} // namespace TrashRequests
