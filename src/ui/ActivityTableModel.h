#pragma once

#include <QAbstractTableModel>
#include <QSet>
#include <QUuid>

#include <optional>

class AuditLog;
struct AuditEntry;

// The activity log as a table, newest entry first. Each outcome carries the icon and colour of what
// happened; a move whose item has left the Trash since says so.
class ActivityTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { date, feature, outcome, size, path, columnTotal };

    explicit ActivityTableModel(const AuditLog& log, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    const AuditEntry& entryAt(int row) const;
    // The moves whose item is still in the Trash, once they have been looked up.
    void setRecoverable(QSet<QUuid> recoverable);
    bool isRecoverable(const QUuid& id) const { return m_recoverable && m_recoverable->contains(id); }

    // A move whose item is no longer in the Trash, once the Trash has been looked at.
    bool hasLeftTheTrash(const AuditEntry& entry) const;
    // What the Outcome column says for an entry.
    QString outcomeText(const AuditEntry& entry) const;

private:
    const AuditLog& m_log;
    std::optional<QSet<QUuid>> m_recoverable; // nothing until looked up
};
