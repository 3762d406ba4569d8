#pragma once

#include "removal/AuditEntry.h"

#include <QList>
#include <QObject>

// The record of everything Velloru did to the user's files, and the running totals of space cleaned.
// Lives on the main thread; every change is saved at once to two files in the data folder.
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

    // Loads "audit-log.json" and "audit-totals.json" from `folder`, creating the folder when missing.
    explicit AuditLog(QString folder, QObject* parent = nullptr);

    const QList<AuditEntry>& entries() const { return m_entries; }
    qint64 sessionCleaned() const { return m_sessionCleaned; }
    qint64 lifetimeCleaned() const { return m_lifetimeCleaned; }
    // The ids of the entries this run has recorded.
    const QList<QUuid>& recordedThisSession() const { return m_recordedThisSession; }
    // The sentence of the last save that failed, until a save succeeds again.
    const std::optional<QString>& lastSaveProblem() const { return m_lastSaveProblem; }

    QString logPath() const;
    QString totalsPath() const;

    void recordMoves(const QString& feature, const QList<MovedItem>& items);
    // Each failed item's size is measured now; the reason goes to the diagnostic log.
    void recordFailures(const QString& feature, const QList<FailedItem>& items);
    void markRecovered(const QList<QUuid>& entryIds);
    // Records an operation as a whole (a maintenance task, say): `subject` names it, `outcome` says how it
    // went.
    void recordAction(const QString& feature, const QString& subject, const QString& outcome);
    // Empties the log. The lifetime total stays: it counts space that was cleaned, whatever the log shows.
    void clear();

    static QString confirmClearText() { return QStringLiteral("Clear the activity log?"); }

Q_SIGNALS:
    void changed();

private:
    void load();
    void loadTotals();
    AuditEntry& append(const QString& feature, const QString& path, qint64 size, const QString& outcome);
    enum class Files { log, totals, logAndTotals };
    void save(Files files);

    QString m_folder;
    QList<AuditEntry> m_entries;
    qint64 m_sessionCleaned = 0;
    qint64 m_lifetimeCleaned = 0;
    QList<QUuid> m_recordedThisSession;
    std::optional<QString> m_lastSaveProblem;
};
