#include "ui/ActivityTableModel.h"

#include "common/ByteCount.h"
#include "removal/AuditLog.h"

#include <QApplication>
#include <QLocale>
#include <QStyle>

ActivityTableModel::ActivityTableModel(const AuditLog& log, QObject* parent)
    : QAbstractTableModel(parent)
    , m_log(log)
{
    connect(&log, &AuditLog::changed, this, [this] {
        beginResetModel();
        endResetModel();
    });
}

int ActivityTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_log.entries().size());
}

int ActivityTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : Column::columnTotal;
}

const AuditEntry& ActivityTableModel::entryAt(int row) const
{
    const auto& entries = m_log.entries();
    return entries[entries.size() - 1 - row];
}

QVariant ActivityTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const AuditEntry& entry = entryAt(index.row());
    if (role == Qt::DisplayRole) {
        switch (index.column()) {
        case Column::date: return QLocale().toString(entry.date.toLocalTime(), QLocale::ShortFormat);
        case Column::feature: return entry.feature;
        case Column::outcome: return entry.outcome;
        case Column::size: return entry.subjectKind == AuditSubject::file ? formatBytes(entry.size) : QString();
        case Column::path: return entry.path;
        }
    }
    if (role == Qt::ToolTipRole && index.column() == Column::path)
        return entry.trashPath ? QStringLiteral("%1\nIn the Trash: %2").arg(entry.path, *entry.trashPath) : entry.path;
    if (role == Qt::DecorationRole && index.column() == Column::outcome) {
        const QStyle* style = QApplication::style();
        if (entry.outcome == AuditOutcome::failed)
            return style->standardIcon(QStyle::SP_MessageBoxWarning);
        if (entry.outcome == AuditOutcome::movedToTrash)
            return style->standardIcon(QStyle::SP_TrashIcon);
        return style->standardIcon(QStyle::SP_DialogApplyButton);
    }
    if (role == Qt::TextAlignmentRole && index.column() == Column::size)
        return int(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

QVariant ActivityTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Column::date: return QStringLiteral("Date");
    case Column::feature: return QStringLiteral("Feature");
    case Column::outcome: return QStringLiteral("Outcome");
    case Column::size: return QStringLiteral("Size");
    case Column::path: return QStringLiteral("Item");
    }
    return {};
}
