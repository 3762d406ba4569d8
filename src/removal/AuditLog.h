#pragma once

#include "removal/ActivityJournal.h"
#include "removal/AuditEntry.h"

#include <QList>
#include <QObject>
#include <QSet>

#include <optional>

class TrashRecorder;

// The record of everything Velloru did to the user's files, and the running totals of space cleaned.
// Lives on the main thread. Several Velloru processes (the window, commands, the background agent) may
// record at once: each change is folded into the two files in the data folder under the folder's lock,
// together with whatever the others appended to the journal meanwhile, so no writer loses another's
// entries.
class AuditLog : public QObject {
    Q_OBJECT

public:
    struct MovedItem {
        QString path;
        qint64 size = 0;
        QString trashPath;
    };
    struct FailedItem {
        QString path;
        QString reason;
    };

    // Loads "audit-log.json" and "audit-totals.json" from `folder`, creating the folder when missing, and
    // folds in what an earlier run left in the journal.
    explicit AuditLog(QString folder, QObject* parent = nullptr);

    const QList<AuditEntry>& entries() const { return m_entries; }
    qint64 sessionCleaned() const { return m_sessionCleaned; }
    qint64 lifetimeCleaned() const { return m_lifetimeCleaned; }
    // The ids of the entries this run has recorded.
    const QList<QUuid>& recordedThisSession() const { return m_recordedThisSession; }
    // The sentence of the last save that failed, until a save succeeds again. What could not be saved is
    // kept and written by the next save that succeeds.
    const std::optional<QString>& lastSaveProblem() const { return m_lastSaveProblem; }

    QString logPath() const;
    QString totalsPath() const;
    const ActivityJournal& journal() const { return m_journal; }

    // Records a batch that a Trash mover wrote to the journal as it went.
    void record(const TrashRecorder& batch);
    // `outcome` names where the items went: the Trash unless said otherwise.
    void recordMoves(
        const QString& feature, const QList<MovedItem>& items, const QString& outcome = AuditOutcome::movedToTrash);
    // Each failed item's size is measured now; the reason goes to the diagnostic log.
    void recordFailures(const QString& feature, const QList<FailedItem>& items);
    void markRecovered(const QList<QUuid>& entryIds);
    // Records an operation as a whole (a maintenance task, say): `subject` names it, `outcome` says how it
    // went.
    // `size` is what the action concerned, when it concerned a measured amount (the Trash it emptied).
    void recordAction(const QString& feature, const QString& subject, const QString& outcome, qint64 size = 0);
    // Empties the log. The lifetime total stays: it counts space that was cleaned, whatever the log shows.
    void clear();
    // Reads what other Velloru processes recorded since the last change.
    void refresh();

    static QString confirmClearText() { return QStringLiteral("Clear the activity log?"); }

Q_SIGNALS:
    void changed();

private:
    struct DiskLog;
    AuditEntry makeEntry(const QString& feature, const QString& path, qint64 size, const QString& outcome);
    // Merges the files, the journal and this process's unsaved changes, and writes the result.
    void fold();
    void adopt(const QList<AuditEntry>& merged, qint64 lifetime);
    void reloadLogIfChanged();

    QString m_folder;
    ActivityJournal m_journal;
    QList<AuditEntry> m_entries;     // what the files hold, with this process's unsaved changes
    QList<AuditEntry> m_diskEntries; // what "audit-log.json" held when last read or written
    QByteArray m_diskStamp;          // identity, size and time of that file then
    qint64 m_sessionCleaned = 0;
    qint64 m_lifetimeCleaned = 0;
    QList<QUuid> m_recordedThisSession;
    QSet<QUuid> m_ownIds; // entries this process made; they count for the session once on record
    QList<AuditEntry> m_unsaved;
    QSet<QUuid> m_unsavedRecovered;
    QSet<QUuid> m_unsavedCleared;
    std::optional<QString> m_lastSaveProblem;
};
