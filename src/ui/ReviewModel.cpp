#include "ui/ReviewModel.h"

#include "common/ByteCount.h"

#include <QFileInfo>
#include <QFont>

ReviewModel::ReviewModel(QObject* parent)
    : QAbstractItemModel(parent)
{
}

void ReviewModel::setResult(QList<ScanGroup> groups, ScanSelection selection)
{
    beginResetModel();
    m_groups = std::move(groups);
    m_selection = std::move(selection);
    endResetModel();
    Q_EMIT selectionChanged();
}

QModelIndex ReviewModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    if (!parent.isValid())
        return createIndex(row, column, quintptr(0));
    return createIndex(row, column, quintptr(parent.row() + 1));
}

QModelIndex ReviewModel::parent(const QModelIndex& child) const
{
    if (!child.isValid() || isGroup(child))
        return {};
    return createIndex(int(child.internalId() - 1), 0, quintptr(0));
}

int ReviewModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return int(m_groups.size());
    if (isGroup(parent) && parent.column() == 0)
        return int(m_groups[parent.row()].items.size());
    return 0;
}

int ReviewModel::columnCount(const QModelIndex&) const
{
    return Column::columnTotal;
}

const ScanGroup& ReviewModel::groupOf(const QModelIndex& index) const
{
    return m_groups[isGroup(index) ? index.row() : int(index.internalId() - 1)];
}

QVariant ReviewModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const ScanGroup& group = groupOf(index);

    if (isGroup(index)) {
        if (role == Qt::CheckStateRole && index.column() == Column::name) {
            switch (m_selection.tickState(group)) {
            case TickState::all: return Qt::Checked;
            case TickState::some: return Qt::PartiallyChecked;
            case TickState::none: return Qt::Unchecked;
            }
        }
        if (role == Qt::DisplayRole && index.column() == Column::name)
            return group.title;
        if (role == Qt::FontRole) {
            QFont bold;
            bold.setBold(true);
            return bold;
        }
        if (role == Qt::DisplayRole && index.column() == Column::size)
            return formatBytes(group.size());
        if (role == Qt::DisplayRole && index.column() == Column::detail)
            return group.items.size() == 1 ? QStringLiteral("1 item")
                                           : QStringLiteral("%1 items").arg(group.items.size());
    } else {
        const ScanItem& item = group.items[index.row()];
        if (role == Qt::CheckStateRole && index.column() == Column::name)
            return m_selection.isTicked(item.id) ? Qt::Checked : Qt::Unchecked;
        if (role == Qt::DisplayRole) {
            switch (index.column()) {
            case Column::name: return m_nameOf ? m_nameOf(item) : QFileInfo(item.url.toLocalFile()).fileName();
            case Column::detail: return item.detail;
            case Column::risk: return riskBadge(item.risk);
            case Column::size: return formatBytes(item.size);
            }
        }
        // The whole path and the whole reason, whichever column is cut short.
        if (role == Qt::ToolTipRole)
            return QStringLiteral("%1\n%2").arg(item.url.toLocalFile(), item.detail);
        if (role == riskRole)
            return static_cast<int>(item.risk);
    }
    if (role == Qt::TextAlignmentRole && index.column() == Column::size)
        return int(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

const ScanItem* ReviewModel::itemAt(const QModelIndex& index) const
{
    if (!index.isValid() || isGroup(index))
        return nullptr;
    return &groupOf(index).items[index.row()];
}

bool ReviewModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || role != Qt::CheckStateRole || index.column() != Column::name)
        return false;
    const ScanGroup& group = groupOf(index);
    if (isGroup(index))
        m_selection.toggleGroup(group);
    else
        m_selection.setTicked(group.items[index.row()].id, value.toInt() == Qt::Checked);
    announceGroupChanged(isGroup(index) ? index.row() : int(index.internalId() - 1));
    Q_EMIT selectionChanged();
    return true;
}

void ReviewModel::announceGroupChanged(int groupRow)
{
    const QModelIndex group = index(groupRow, Column::name);
    Q_EMIT dataChanged(group, group, {Qt::CheckStateRole});
    const int items = rowCount(group);
    if (items > 0)
        Q_EMIT dataChanged(index(0, Column::name, group), index(items - 1, Column::name, group), {Qt::CheckStateRole});
}

Qt::ItemFlags ReviewModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == Column::name)
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

QVariant ReviewModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Column::name: return QStringLiteral("Item");
    case Column::detail: return QStringLiteral("Why");
    case Column::risk: return QStringLiteral("Risk");
    case Column::size: return QStringLiteral("Size");
    }
    return {};
}
