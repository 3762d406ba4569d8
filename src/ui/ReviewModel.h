#pragma once

#include "scan/ScanSelection.h"

#include <QAbstractItemModel>

#include <functional>

// A scan result as a two-level tree: groups with tri-state boxes, and their items with ticks, reasons,
// risk badges and sizes. The selection lives here while the list is shown.
class ReviewModel : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Column { name, detail, risk, size, columnTotal };
    static constexpr int riskRole = Qt::UserRole + 1;

    explicit ReviewModel(QObject* parent = nullptr);

    void setResult(QList<ScanGroup> groups, ScanSelection selection);
    // How an item's row is named; by default the last part of its path.
    void setNameOf(std::function<QString(const ScanItem&)> nameOf) { m_nameOf = std::move(nameOf); }
    // The item of a row, when the row is an item rather than a group.
    const ScanItem* itemAt(const QModelIndex& index) const;
    const QList<ScanGroup>& groups() const { return m_groups; }
    const ScanSelection& selection() const { return m_selection; }

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

Q_SIGNALS:
    void selectionChanged();

private:
    // Item rows carry their group's row + 1 as internal id; group rows carry 0.
    static bool isGroup(const QModelIndex& index) { return index.internalId() == 0; }
    const ScanGroup& groupOf(const QModelIndex& index) const;
    void announceGroupChanged(int groupRow);

    QList<ScanGroup> m_groups;
    ScanSelection m_selection;
    std::function<QString(const ScanItem&)> m_nameOf;
};
