#pragma once

#include "removal/ActivityJournal.h"
#include "removal/TrashResult.h"

#include <QHash>
#include <QList>
#include <QSet>

// Writes one batch of moves to the activity journal while it runs, on the mover's thread: each move is
// journaled once its name in the Trash is chosen, before its put-back record is made and the item moves,
// and confirmed after. A crash at any
// moment therefore leaves every item that reached the Trash on record. Hand it to the activity log when the
// batch is done (AuditLog::record), on the main thread.
class TrashRecorder {
public:
    TrashRecorder(const ActivityJournal& journal, QString feature);

    const QString& feature() const { return m_feature; }

    void willMove(const TrashItem& item, const QString& trashedPath);
    void moved(const TrashItem& item, const QString& trashedPath);
    void didNotMove(const TrashItem& item);
    // The size of a failed item is measured now.
    void failed(const TrashItem& item, const QString& reason);

    // Every entry this batch made, and those of them whose lines could not be written.
    const QSet<QUuid>& entryIds() const { return m_ids; }
    const QList<AuditEntry>& unwritten() const { return m_unwritten; }
    // Why the last line could not be written.
    const std::optional<QString>& problem() const { return m_problem; }

private:
    AuditEntry makeEntry(const QString& path, qint64 size, const QString& outcome);
    void keep(const std::optional<QString>& problem, const AuditEntry& entry);

    const ActivityJournal& m_journal;
    QString m_feature;
    QHash<QString, AuditEntry> m_pending; // item path → its pending move, until confirmed or dropped
    QSet<QUuid> m_ids;
    QList<AuditEntry> m_unwritten;
    std::optional<QString> m_problem;
};
