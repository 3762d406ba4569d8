#pragma once

#include "processes/ProcessGroup.h"
#include "processes/ProcessList.h"

#include <QAbstractItemModel>
#include <QHash>

#include <optional>

// The process list as a tree: each app is a row with its processes beneath it and their totals beside it; a
// process that belongs to no app is a row of its own. A new sample updates the rows in place, so selection
// and expanded rows stay as they were.
class ProcessTreeModel : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Column { name, pid, user, cpu, memory, priority, status, columnTotal };
    static constexpr int sortRole = Qt::UserRole;

    explicit ProcessTreeModel(QObject* parent = nullptr);

    // Takes a new sample. The groups of system processes are left out unless shown.
    void setGroups(const QList<ProcessGroup>& groups);
    void setShowSystem(bool show);
    bool showsSystem() const { return m_showSystem; }

    // The row's word on its last action ("Quitting…", or why it failed); empty clears it.
    void setMessage(const QString& key, const QString& message, bool failed);
    QString keyAt(const QModelIndex& index) const;
    std::optional<ProcessTarget> targetAt(const QModelIndex& index) const;
    // What the detail line says of a row: its whole name, program and owner.
    QString describe(const QModelIndex& index) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    struct Row {
        quint64 serial = 0; // names the row to its children's indexes; never 0
        ProcessGroup group;
    };
    struct Message {
        QString text;
        bool failed = false;
    };

    void sync(const QList<ProcessGroup>& groups);
    // Whether any child row changed.
    bool syncChildren(int row, const QList<RunningProcess>& processes);
    void announceChanges(const QModelIndex& parent, const QList<bool>& changed);
    const RunningProcess* processAt(const QModelIndex& index) const;
    QVariant display(const ProcessGroup& group, const RunningProcess* process, int column) const;
    QVariant sortValue(const ProcessGroup& group, const RunningProcess* process, int column) const;
    QString statusOf(const QString& key, const RunningProcess* process) const;
    void reindex();

    QList<Row> m_rows;
    QHash<quint64, int> m_rowOfSerial;
    quint64 m_nextSerial = 1;
    QList<ProcessGroup> m_all;
    bool m_showSystem = false;
    QHash<QString, Message> m_messages;
};
