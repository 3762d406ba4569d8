#include "ui/ActivityTableModel.h"

#include "common/ByteCount.h"
#include "removal/AuditLog.h"
#include "ui/widgets/OutcomeLine.h"

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

void ActivityTableModel::setRecoverable(QSet<QUuid> recoverable)
{
    m_recoverable = std::move(recoverable);
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0, Column::outcome), index(rowCount() - 1, Column::outcome));
}

bool ActivityTableModel::hasLeftTheTrash(const AuditEntry& entry) const
{
    return entry.outcome == AuditOutcome::movedToTrash && m_recoverable && !m_recoverable->contains(entry.id);
}

QString ActivityTableModel::outcomeText(const AuditEntry& entry) const
{
    // The log keeps what Velloru did; the table says where the item is now, since a Trash emptied elsewhere
    // (or by Empty Trash) took it for good.
    return hasLeftTheTrash(entry) ? QStringLiteral("No longer in the Trash") : entry.outcome;
}

QVariant ActivityTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const AuditEntry& entry = entryAt(index.row());
    const bool failed = AuditOutcome::isFailure(entry.outcome);
    // An action's size is what it concerned (the Trash it emptied), shown when it was measured.
    const bool sized = entry.subjectKind == AuditSubject::file || entry.size > 0;
    if (role == Qt::DisplayRole) {
        switch (index.column()) {
        case Column::date: return QLocale().toString(entry.date.toLocalTime(), QLocale::ShortFormat);
        case Column::feature: return entry.feature;
        case Column::outcome: return outcomeText(entry);
        case Column::size: return sized ? formatBytes(entry.size) : QString();
        case Column::path: return entry.path;
        }
    }
    if (role == Qt::ToolTipRole && index.column() == Column::path)
        return entry.trashPath ? QStringLiteral("%1\nIn the Trash: %2").arg(entry.path, *entry.trashPath) : entry.path;
    if (role == Qt::ToolTipRole && index.column() == Column::outcome && hasLeftTheTrash(entry))
        return QStringLiteral("Moved to the Trash, which has since been emptied (or the item was put back with "
                              "another program) — Velloru can’t put it back.");
    if (role == Qt::ToolTipRole && index.column() == Column::outcome)
        return outcomeText(entry);
    if (role == Qt::ForegroundRole && index.column() == Column::outcome && failed)
        return OutcomeLine::colorFor(OutcomeLine::Kind::failure);
    if (role == Qt::DecorationRole && index.column() == Column::outcome) {
        if (failed)
            return OutcomeLine::iconFor(OutcomeLine::Kind::failure);
        if (hasLeftTheTrash(entry))
            return OutcomeLine::iconFor(OutcomeLine::Kind::note);
        if (entry.outcome == AuditOutcome::movedToTrash)
            return QApplication::style()->standardIcon(QStyle::SP_TrashIcon);
        return OutcomeLine::iconFor(OutcomeLine::Kind::success);
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
