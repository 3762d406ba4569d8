#pragma once

#include <QAbstractTableModel>

class AuditLog;
struct AuditEntry;

// The activity log as a table, newest entry first.
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

private:
    const AuditLog& m_log;
};
