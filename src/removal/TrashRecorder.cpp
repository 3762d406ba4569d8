#include "removal/TrashRecorder.h"

#include "common/Log.h"
#include "removal/ItemSize.h"

TrashRecorder::TrashRecorder(const ActivityJournal& journal, QString feature)
    : m_journal(journal)
    , m_feature(std::move(feature))
{
}

AuditEntry TrashRecorder::makeEntry(const QString& path, qint64 size, const QString& outcome)
{
    AuditEntry entry = AuditEntry::make(m_feature, path, size, outcome);
    m_ids.insert(entry.id);
    return entry;
}

void TrashRecorder::willMove(const TrashItem& item, const QString& trashedPath)
{
    // Another mover took the name first: the first try is dropped and the move journaled again.
    didNotMove(item);
    AuditEntry entry = makeEntry(item.path, item.size, AuditOutcome::movedToTrash);
    entry.trashPath = trashedPath;
    // Without its pending line the move is still recorded when it is confirmed; only a crash in between
    // would then lose it.
    if (const auto problem = m_journal.appendPending(entry))
        m_problem = problem;
    m_pending.insert(item.path, entry);
}

void TrashRecorder::moved(const TrashItem& item, const QString& trashedPath)
{
    AuditEntry entry = m_pending.take(item.path);
    if (entry.id.isNull()) {
        entry = makeEntry(item.path, item.size, AuditOutcome::movedToTrash);
        entry.trashPath = trashedPath;
    }
    keep(m_journal.appendEntry(entry), entry);
}

void TrashRecorder::didNotMove(const TrashItem& item)
{
    const AuditEntry entry = m_pending.take(item.path);
    if (!entry.id.isNull())
        if (const auto problem = m_journal.appendDropped(entry.id))
            m_problem = problem;
}

void TrashRecorder::failed(const TrashItem& item, const QString& reason)
{
    const QString path = expandTilde(item.path);
    const AuditEntry entry = makeEntry(path, measureItemSize(path), AuditOutcome::failed);
    logLine(QStringLiteral("action failed feature=%1 path=%2 reason=%3")
                .arg(logValue(m_feature), logValue(path), logValue(reason)));
    keep(m_journal.appendEntry(entry), entry);
}

void TrashRecorder::keep(const std::optional<QString>& problem, const AuditEntry& entry)
{
    if (!problem)
        return;
    m_problem = problem;
    m_unwritten.append(entry);
}
