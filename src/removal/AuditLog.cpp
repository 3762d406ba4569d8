#include "removal/AuditLog.h"

#include "common/AtomicFile.h"
#include "common/ByteCount.h"
#include "common/JsonFile.h"
#include "common/JsonText.h"
#include "common/LocalPath.h"
#include "common/Log.h"
#include "platform/FileLock.h"
#include "platform/FileStatus.h"
#include "platform/TrashStore.h"
#include "removal/ItemSize.h"
#include "removal/TrashRecorder.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>

#include <cmath>
#include <fcntl.h>

namespace {

// Byte totals are whole numbers that a JSON number holds exactly.
constexpr double largestExactTotal = 9007199254740992.0; // 2^53

// What identifies one version of a file: a rewrite (which replaces it) or an edit changes it.
QByteArray fileStamp(const QString& path)
{
    const auto status = statusAt(AT_FDCWD, QFile::encodeName(path).constData(), StatDetail::full);
    if (!status)
        return {};
    return QByteArray::number(status->inode) + ':' + QByteArray::number(status->size) + ':'
        + QByteArray::number(status->modifiedSeconds) + '.' + QByteArray::number(status->modifiedNanoseconds) + ':'
        + QByteArray::number(status->changedSeconds);
}

bool existsWithoutFollowing(const QString& path)
{
    const auto encoded = LocalPath::encode(path);
    return encoded && statusAt(AT_FDCWD, encoded->constData(), StatDetail::identity).has_value();
}

qint64 movedBytes(const QList<AuditEntry>& entries)
{
    qint64 sum = 0;
    for (const AuditEntry& entry : entries)
        if (entry.outcome == AuditOutcome::movedToTrash)
            sum = checkedAdd(sum, entry.size);
    return sum;
}

// The lifetime total: from its file, or rebuilt from the log when the file is missing or unusable (only
// moves cleaned space; failures and put-backs count for nothing). Sets `rebuilt` in the second case.
qint64 readLifetime(const QString& path, const QList<AuditEntry>& logged, bool& rebuilt)
{
    const JsonLoad loaded = loadJsonFile(path);
    const QJsonValue value = loaded.document.object().value(u"lifetimeCleaned");
    const double number = value.toDouble(-1);
    if (loaded.status == JsonLoad::Status::loaded && value.isDouble() && number >= 0 && number <= largestExactTotal
        && std::floor(number) == number) {
        rebuilt = false;
        return qint64(number);
    }
    if (loaded.status == JsonLoad::Status::loaded)
        setAsideUnusableFile(path, QStringLiteral("no lifetimeCleaned byte count"));
    rebuilt = true;
    const qint64 sum = movedBytes(logged);
    if (!logged.isEmpty())
        logLine(QStringLiteral("activity totals rebuilt from the log lifetimeCleaned=%1 entries=%2")
                    .arg(sum)
                    .arg(logged.size()));
    return sum;
}

} // namespace

AuditLog::AuditLog(QString folder, QObject* parent)
    : QObject(parent)
    , m_folder(std::move(folder))
    , m_journal(m_folder)
{
    if (!QDir().mkpath(m_folder))
        logLine(QStringLiteral("activity log folder could not be created path=%1").arg(logValue(m_folder)));
    fold();
}

QString AuditLog::logPath() const
{
    return m_folder + QStringLiteral("/audit-log.json");
}

QString AuditLog::totalsPath() const
{
    return m_folder + QStringLiteral("/audit-totals.json");
}

void AuditLog::reloadLogIfChanged()
{
    const QByteArray stamp = fileStamp(logPath());
    if (!stamp.isEmpty() && stamp == m_diskStamp)
        return;
    m_diskEntries.clear();
    m_diskStamp = stamp;
    const JsonLoad loaded = loadJsonFile(logPath());
    if (loaded.status != JsonLoad::Status::loaded)
        return;
    if (!loaded.document.isArray()) {
        setAsideUnusableFile(logPath(), QStringLiteral("not a list of entries"));
        m_diskStamp.clear();
        return;
    }
    const QJsonArray array = loaded.document.array();
    m_diskEntries.reserve(array.size());
    for (const QJsonValue& value : array)
        if (auto entry = AuditEntry::fromJson(value.toObject()))
            m_diskEntries.append(std::move(*entry));
    if (const qsizetype skipped = array.size() - m_diskEntries.size(); skipped > 0) {
        // Keep the original for the record; the readable entries are written back by this fold.
        setAsideUnusableFile(logPath(), QStringLiteral("%1 entries could not be read").arg(skipped));
        m_diskStamp.clear();
    }
}

void AuditLog::fold()
{
    using Line = ActivityJournal::Line;
    // Without the lock nothing may be written, but what is there can still be read.
    const auto lock = FileLock::acquire(m_journal.lockPath(), FileLock::Mode::exclusive);
    std::optional<QString> problem;
    if (!lock)
        problem = QStringLiteral("Couldn’t lock the Activity log in %1 — %2.").arg(m_folder, qt_error_string(errno));

    reloadLogIfChanged();
    bool logChanged = m_diskStamp.isEmpty() && !m_diskEntries.isEmpty();
    bool totalsChanged = false;
    qint64 lifetime = readLifetime(totalsPath(), m_diskEntries, totalsChanged);

    QList<AuditEntry> merged = m_diskEntries;
    QSet<QUuid> ids;
    for (const AuditEntry& entry : merged)
        ids.insert(entry.id);
    const auto add = [&](const AuditEntry& entry) {
        if (ids.contains(entry.id))
            return;
        ids.insert(entry.id);
        merged.append(entry);
        logChanged = true;
        if (entry.outcome == AuditOutcome::movedToTrash) {
            lifetime = checkedAdd(lifetime, entry.size);
            totalsChanged = true;
        }
    };

    // The journal, line by line: confirmed and finished entries join the log; a pending move stays
    // pending until it is confirmed or dropped.
    const ActivityJournal::Contents journal = m_journal.read();
    QList<Line> pending;
    const auto forget
        = [&pending](const QUuid& id) { pending.removeIf([&id](const Line& l) { return l.entry.id == id; }); };
    for (const Line& line : journal.lines) {
        if (line.kind == Line::Kind::pending) {
            pending.append(line);
            continue;
        }
        forget(line.entry.id);
        if (line.kind == Line::Kind::entry)
            add(line.entry);
    }
    if (journal.unreadable > 0)
        logLine(QStringLiteral("activity journal lines could not be read count=%1").arg(journal.unreadable));

    // A pending move whose process has gone either happened (the item is in the Trash) or did not (its
    // put-back record, if it got that far, is all there is of it, and is removed).
    QList<Line> stillPending;
    for (const Line& line : pending) {
        if (line.writer.isRunning()) {
            stillPending.append(line);
        } else if (line.entry.trashPath && existsWithoutFollowing(*line.entry.trashPath)) {
            add(line.entry);
        } else if (line.entry.trashPath) {
            removeUnfinishedRecord(*line.entry.trashPath, line.entry.path);
        }
    }

    for (const AuditEntry& entry : std::as_const(m_unsaved))
        add(entry);
    for (AuditEntry& entry : merged) {
        if (m_unsavedRecovered.contains(entry.id) && entry.outcome != AuditOutcome::recovered) {
            entry.outcome = AuditOutcome::recovered;
            logChanged = true;
        }
    }
    if (merged.removeIf([this](const AuditEntry& entry) { return m_unsavedCleared.contains(entry.id); }) > 0)
        logChanged = true;

    if (lock && logChanged) {
        QList<QByteArray> objects;
        objects.reserve(merged.size());
        for (const AuditEntry& entry : std::as_const(merged))
            objects.append(entry.toJson());
        problem = writeFileAtomically(logPath(), jsonArray(objects));
    }
    // The log goes first: should the totals then fail, the next fold counts nothing twice.
    if (lock && !problem && totalsChanged)
        problem
            = writeFileAtomically(totalsPath(), JsonObjectWriter().add(u"lifetimeCleaned", lifetime).finish() + '\n');
    if (lock && !problem && (!journal.lines.isEmpty() || journal.unreadable > 0))
        problem = m_journal.replace(stillPending);

    if (lock && !problem) {
        m_diskEntries = merged;
        m_diskStamp = fileStamp(logPath());
        m_unsaved.clear();
        m_unsavedRecovered.clear();
        m_unsavedCleared.clear();
    } else if (problem && (logChanged || totalsChanged)) {
        logLine(QStringLiteral("activity log save failed reason=%1").arg(logValue(*problem)));
    } else {
        problem.reset(); // nothing needed writing
    }
    m_lastSaveProblem = problem;
    adopt(merged, lifetime);
}

void AuditLog::adopt(const QList<AuditEntry>& merged, qint64 lifetime)
{
    for (const AuditEntry& entry : merged) {
        if (!m_ownIds.remove(entry.id))
            continue;
        m_recordedThisSession.append(entry.id);
        if (entry.outcome == AuditOutcome::movedToTrash)
            m_sessionCleaned = checkedAdd(m_sessionCleaned, entry.size);
    }
    m_entries = merged;
    m_lifetimeCleaned = lifetime;
}

AuditEntry AuditLog::makeEntry(const QString& feature, const QString& path, qint64 size, const QString& outcome)
{
    AuditEntry entry = AuditEntry::make(feature, path, size, outcome);
    m_ownIds.insert(entry.id);
    return entry;
}

void AuditLog::record(const TrashRecorder& batch)
{
    m_ownIds.unite(batch.entryIds());
    m_unsaved.append(batch.unwritten());
    fold();
    Q_EMIT changed();
}

void AuditLog::recordMoves(const QString& feature, const QList<MovedItem>& items, const QString& outcome)
{
    if (items.isEmpty())
        return;
    for (const MovedItem& item : items) {
        AuditEntry entry = makeEntry(feature, item.path, item.size, outcome);
        if (!item.trashPath.isEmpty())
            entry.trashPath = item.trashPath;
        m_unsaved.append(entry);
    }
    fold();
    Q_EMIT changed();
}

void AuditLog::recordFailures(const QString& feature, const QList<FailedItem>& items)
{
    if (items.isEmpty())
        return;
    for (const FailedItem& item : items) {
        const QString path = expandTilde(item.path);
        m_unsaved.append(makeEntry(feature, path, measureItemSize(path), AuditOutcome::failed));
        logLine(QStringLiteral("action failed feature=%1 path=%2 reason=%3")
                    .arg(logValue(feature), logValue(path), logValue(item.reason)));
    }
    fold();
    Q_EMIT changed();
}

void AuditLog::recordAction(const QString& feature, const QString& subject, const QString& outcome, qint64 size)
{
    AuditEntry entry = makeEntry(feature, subject, size, outcome);
    entry.path = subject;
    entry.subjectKind = AuditSubject::action;
    m_unsaved.append(entry);
    fold();
    Q_EMIT changed();
}

void AuditLog::markRecovered(const QList<QUuid>& entryIds)
{
    const bool known = std::any_of(m_entries.cbegin(), m_entries.cend(), [&entryIds](const AuditEntry& entry) {
        return entryIds.contains(entry.id) && entry.outcome != AuditOutcome::recovered;
    });
    if (!known)
        return;
    m_unsavedRecovered.unite(QSet<QUuid>(entryIds.cbegin(), entryIds.cend()));
    fold();
    Q_EMIT changed();
}

void AuditLog::clear()
{
    for (const AuditEntry& entry : std::as_const(m_entries))
        m_unsavedCleared.insert(entry.id);
    fold();
    Q_EMIT changed();
}

void AuditLog::refresh()
{
    const qsizetype before = m_entries.size();
    const QByteArray stamp = m_diskStamp;
    fold();
    if (m_entries.size() != before || m_diskStamp != stamp)
        Q_EMIT changed();
}
