#include "removal/AuditLog.h"

#include "common/AtomicFile.h"
#include "common/ByteCount.h"
#include "common/JsonFile.h"
#include "common/JsonText.h"
#include "common/Log.h"
#include "removal/ItemSize.h"

#include <QDir>
#include <QJsonArray>
#include <QSet>

AuditLog::AuditLog(QString folder, QObject* parent)
    : QObject(parent)
    , m_folder(std::move(folder))
{
    if (!QDir().mkpath(m_folder))
        logLine(QStringLiteral("activity log folder could not be created path=%1").arg(m_folder));
    load();
    loadTotals();
}

QString AuditLog::logPath() const
{
    return m_folder + QStringLiteral("/audit-log.json");
}

QString AuditLog::totalsPath() const
{
    return m_folder + QStringLiteral("/audit-totals.json");
}

void AuditLog::load()
{
    const JsonLoad loaded = loadJsonFile(logPath());
    if (loaded.status != JsonLoad::Status::loaded)
        return;
    if (!loaded.document.isArray()) {
        setAsideUnusableFile(logPath(), QStringLiteral("not a list of entries"));
        return;
    }

    const QJsonArray array = loaded.document.array();
    m_entries.reserve(array.size());
    for (const QJsonValue& value : array) {
        if (auto entry = AuditEntry::fromJson(value.toObject()))
            m_entries.append(std::move(*entry));
    }

    const qsizetype skipped = array.size() - m_entries.size();
    if (skipped > 0) {
        // Keep the original for the record, then write back what could be read so the readable entries
        // are not lost with it.
        setAsideUnusableFile(logPath(), QStringLiteral("%1 entries could not be read").arg(skipped));
        save(Files::log);
    }
}

void AuditLog::loadTotals()
{
    const JsonLoad loaded = loadJsonFile(totalsPath());
    const QJsonValue lifetime = loaded.document.object().value(u"lifetimeCleaned");
    if (loaded.status == JsonLoad::Status::loaded && lifetime.isDouble()) {
        m_lifetimeCleaned = lifetime.toInteger();
        return;
    }
    if (loaded.status == JsonLoad::Status::loaded)
        setAsideUnusableFile(totalsPath(), QStringLiteral("no lifetimeCleaned number"));

    // Rebuild from the log: only moves cleaned space; failures and put-backs count for nothing.
    qint64 sum = 0;
    for (const AuditEntry& entry : m_entries)
        if (entry.outcome == AuditOutcome::movedToTrash)
            sum = checkedAdd(sum, entry.size);
    m_lifetimeCleaned = sum;
    if (!m_entries.isEmpty())
        logLine(QStringLiteral("activity totals rebuilt from the log lifetimeCleaned=%1 entries=%2")
                    .arg(sum)
                    .arg(m_entries.size()));
    save(Files::totals);
}

AuditEntry& AuditLog::append(const QString& feature, const QString& path, qint64 size, const QString& outcome)
{
    AuditEntry entry;
    entry.id = QUuid::createUuid();
    entry.date = QDateTime::currentDateTimeUtc();
    entry.path = expandTilde(path);
    entry.size = size;
    entry.feature = feature;
    entry.outcome = outcome;
    entry.subjectKind = AuditSubject::file;
    m_recordedThisSession.append(entry.id);
    m_entries.append(std::move(entry));
    return m_entries.last();
}

void AuditLog::recordMoves(const QString& feature, const QList<MovedItem>& items)
{
    if (items.isEmpty())
        return;
    for (const MovedItem& item : items) {
        append(feature, item.path, item.size, AuditOutcome::movedToTrash).trashPath = item.trashPath;
        m_sessionCleaned = checkedAdd(m_sessionCleaned, item.size);
        m_lifetimeCleaned = checkedAdd(m_lifetimeCleaned, item.size);
    }
    save(Files::logAndTotals);
    Q_EMIT changed();
}

void AuditLog::recordFailures(const QString& feature, const QList<FailedItem>& items)
{
    if (items.isEmpty())
        return;
    for (const FailedItem& item : items) {
        const QString path = expandTilde(item.path);
        append(feature, path, measureItemSize(path), AuditOutcome::failed);
        logLine(QStringLiteral("action failed feature=%1 path=%2 reason=\"%3\"").arg(feature, path, item.reason));
    }
    save(Files::log);
    Q_EMIT changed();
}

void AuditLog::recordAction(const QString& feature, const QString& subject, const QString& outcome)
{
    AuditEntry& entry = append(feature, subject, 0, outcome);
    entry.subjectKind = AuditSubject::action;
    save(Files::log);
    Q_EMIT changed();
}

void AuditLog::markRecovered(const QList<QUuid>& entryIds)
{
    const QSet<QUuid> wanted(entryIds.begin(), entryIds.end());
    bool marked = false;
    for (AuditEntry& entry : m_entries) {
        if (wanted.contains(entry.id) && entry.outcome != AuditOutcome::recovered) {
            entry.outcome = AuditOutcome::recovered;
            marked = true;
        }
    }
    if (!marked)
        return;
    save(Files::log);
    Q_EMIT changed();
}

void AuditLog::clear()
{
    m_entries.clear();
    save(Files::log);
    Q_EMIT changed();
}

void AuditLog::save(Files files)
{
    // After a failed save either file may be behind, so the next save writes both.
    if (m_lastSaveProblem)
        files = Files::logAndTotals;
    std::optional<QString> problem;
    if (files == Files::logAndTotals || files == Files::log) {
        QList<QByteArray> objects;
        objects.reserve(m_entries.size());
        for (const AuditEntry& entry : m_entries)
            objects.append(entry.toJson());
        problem = writeFileAtomically(logPath(), jsonArray(objects));
    }
    if (files == Files::logAndTotals || files == Files::totals) {
        const QByteArray json = JsonObjectWriter().add(u"lifetimeCleaned", m_lifetimeCleaned).finish() + '\n';
        if (auto totalsProblem = writeFileAtomically(totalsPath(), json); totalsProblem && !problem)
            problem = totalsProblem;
    }
    if (problem)
        logLine(QStringLiteral("activity log save failed reason=\"%1\"").arg(*problem));
    m_lastSaveProblem = problem;
}
