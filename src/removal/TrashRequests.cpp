#include "removal/TrashRequests.h"

#include "removal/AuditLog.h"
#include "removal/ItemSize.h"

#include <QDir>

namespace TrashRequests {

QList<TrashItem> measured(const QStringList& paths)
{
    QList<TrashItem> items;
    for (const QString& path : paths) {
        const QString absolute = QDir::cleanPath(QDir::current().absoluteFilePath(expandTilde(path)));
        items.append({absolute, measureItemSize(absolute)});
    }
    return items;
}

std::optional<AuditEntry> findEntry(const AuditLog& log, const QString& text)
{
    const QString wanted = text.trimmed().toUpper().remove(QLatin1Char('{')).remove(QLatin1Char('}'));
    if (wanted.isEmpty())
        return std::nullopt;
    std::optional<AuditEntry> found;
    for (const AuditEntry& entry : log.entries()) {
        if (!uuidText(entry.id).startsWith(wanted))
            continue;
        if (found)
            return std::nullopt; // the start names more than one entry
        found = entry;
    }
    return found;
}

} // namespace TrashRequests
