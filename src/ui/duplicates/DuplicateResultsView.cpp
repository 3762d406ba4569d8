#include "ui/duplicates/DuplicateResultsView.h"

#include "app/Destination.h"
#include "common/ByteCount.h"
#include "duplicates/DuplicateRules.h"
#include "duplicates/DuplicateScan.h"
#include "duplicates/DuplicateTexts.h"
#include "duplicates/VaultTexts.h"
#include "ui/Icons.h"
#include "ui/duplicates/FilePreview.h"
#include "ui/duplicates/TreeCells.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/ProgressRow.h"
#include "ui/widgets/WrappedLabel.h"

#include <QFileInfo>
#include <QHeaderView>
#include <QPushButton>
#include <QSplitter>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

enum Column { fileColumn, sizeColumn, noteColumn };
constexpr int groupRole = Qt::UserRole;
constexpr int memberRole = Qt::UserRole + 1;
constexpr int pathRole = Qt::UserRole + 2;

// What the list says beside a copy: why it stays or what removing it would free.
QString noteFor(const DuplicateGroup& group, const DuplicateFile& member)
{
    QStringList notes;
    if (member.id == group.keeperID)
        notes.append(QStringLiteral("Kept — the copy that stays"));
    if (const auto reason = DuplicateRules::blockReason(member))
        notes.append(*reason);
    else if (const auto note = DuplicateRules::reclaimNote(member); note && member.id != group.keeperID)
        notes.append(*note);
    if (!member.otherNames.isEmpty())
        notes.append(QStringLiteral("Also named %1").arg(member.otherNames.join(QStringLiteral(", "))));
    return notes.join(QStringLiteral(". "));
}

} // namespace

DuplicateResultsView::DuplicateResultsView(DuplicateScan& scan, QWidget* parent)
    : QWidget(parent)
    , m_scan(scan)
{
    setObjectName(QStringLiteral("duplicateResults"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    m_empty = new EmptyState(sectionIcon(Destination::duplicates), QStringLiteral("No duplicates found"),
        QStringLiteral("Every file in these folders is the only one with its content. Add more folders to look in, or "
                       "look at smaller files too."),
        this);
    connect(m_empty->addAction(QStringLiteral("Change Folders"), QStringLiteral("emptyChangeFolders")),
        &QPushButton::clicked, this, &DuplicateResultsView::changeFoldersRequested);
    layout->addWidget(m_empty);

    m_lists = new QWidget(this);
    auto* lists = new QVBoxLayout(m_lists);
    lists->setContentsMargins(0, 0, 0, 0);
    m_summary = new WrappedLabel({}, QStringLiteral("resultsSummary"), m_lists);
    lists->addWidget(m_summary);
    lists->addWidget(new WrappedLabel(DuplicateTexts::tickInstruction(), QStringLiteral("tickInstruction"), m_lists));
    m_notScanned = new WrappedLabel({}, QStringLiteral("notScanned"), m_lists);
    lists->addWidget(m_notScanned);

    auto* splitter = new QSplitter(Qt::Horizontal, m_lists);
    splitter->setChildrenCollapsible(false);
    m_tree = new QTreeWidget(splitter);
    m_tree->setObjectName(QStringLiteral("duplicateSets"));
    m_tree->setColumnCount(3);
    m_tree->setHeaderLabels({QStringLiteral("File"), QStringLiteral("Size"), QStringLiteral("Note")});
    m_tree->header()->setSectionResizeMode(fileColumn, QHeaderView::Stretch);
    m_tree->header()->setSectionResizeMode(sizeColumn, QHeaderView::ResizeToContents);
    m_tree->header()->setSectionResizeMode(noteColumn, QHeaderView::Stretch);
    m_tree->setUniformRowHeights(true);
    m_tree->setMinimumWidth(320);
    m_preview = new FilePreview(splitter);
    m_preview->setMinimumWidth(200);
    splitter->addWidget(m_tree);
    splitter->addWidget(m_preview);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    lists->addWidget(splitter, 1);

    auto* actions = new QHBoxLayout;
    m_move = new QPushButton(QStringLiteral("Move Ticked Copies to the Vault"), m_lists);
    m_move->setObjectName(QStringLiteral("moveToVault"));
    actions->addWidget(m_move);
    auto* again = new QPushButton(QStringLiteral("Change Folders"), m_lists);
    again->setObjectName(QStringLiteral("changeFolders"));
    actions->addWidget(again);
    actions->addStretch();
    lists->addLayout(actions);
    m_ticked = new WrappedLabel({}, QStringLiteral("tickedTotal"), m_lists);
    lists->addWidget(m_ticked);
    lists->addWidget(new WrappedLabel(VaultTexts::explanation(), QStringLiteral("vaultExplanation"), m_lists));
    m_moveProgress = new ProgressRow(ProgressRow::Cancel::notOffered, m_lists);
    lists->addWidget(m_moveProgress);
    m_moveOutcome = new OutcomeLine(QStringLiteral("moveOutcome"), m_lists);
    lists->addWidget(m_moveOutcome);
    layout->addWidget(m_lists, 1);

    connect(m_move, &QPushButton::clicked, this, &DuplicateResultsView::moveRequested);
    connect(again, &QPushButton::clicked, this, &DuplicateResultsView::changeFoldersRequested);
    connect(m_tree, &QTreeWidget::itemChanged, this, &DuplicateResultsView::itemChanged);
    connect(m_tree, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
        m_preview->showFile(item ? item->data(fileColumn, pathRole).toString() : QString());
    });
}

void DuplicateResultsView::showSets()
{
    m_filling = true;
    m_tree->clear();
    const QList<DuplicateGroup>& groups = m_scan.groups();
    for (int index = 0; index < groups.size(); ++index)
        addSet(index);
    m_tree->expandAll();
    m_filling = false;
    m_empty->setVisible(groups.isEmpty());
    m_lists->setVisible(!groups.isEmpty());
    m_notScanned->setText(m_scan.notScanned());
    m_notScanned->setVisible(!m_scan.notScanned().isEmpty());
    m_preview->showFile({});
    showTotals();
}

void DuplicateResultsView::addSet(int index)
{
    const DuplicateGroup& group = m_scan.groups()[index];
    auto* set = new QTreeWidgetItem(m_tree);
    setTreeCell(
        set, fileColumn, QStringLiteral("%1 copies of %2").arg(group.members.size()).arg(formatBytes(group.size)));
    setTreeCell(set, sizeColumn, formatBytes(group.size));
    setTreeCell(set, noteColumn, QStringLiteral("Frees %1").arg(formatBytes(group.reclaimable())));
    set->setFlags(Qt::ItemIsEnabled);
    const QIcon keep = style()->standardIcon(QStyle::SP_DialogApplyButton);
    // The copy that stays first, then the others in the set's order.
    QList<const DuplicateFile*> members;
    for (const DuplicateFile& member : group.members)
        members.insert(member.id == group.keeperID ? 0 : members.size(), &member);
    for (const DuplicateFile* file : members) {
        const DuplicateFile& member = *file;
        auto* item = new QTreeWidgetItem(set);
        setTreeCell(item, fileColumn, QFileInfo(member.path).fileName(), member.path);
        setTreeCell(item, sizeColumn, formatBytes(member.size));
        setTreeCell(item, noteColumn, noteFor(group, member), member.path);
        item->setData(fileColumn, groupRole, group.id);
        item->setData(fileColumn, memberRole, member.id);
        item->setData(fileColumn, pathRole, member.path);
        const bool keeper = member.id == group.keeperID;
        const bool blocked = DuplicateRules::blockReason(member).has_value();
        Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
        if (keeper) {
            item->setIcon(fileColumn, keep);
        } else {
            if (!blocked)
                flags |= Qt::ItemIsUserCheckable;
            item->setCheckState(fileColumn, group.selected.contains(member.id) ? Qt::Checked : Qt::Unchecked);
        }
        item->setFlags(flags);
    }
}

void DuplicateResultsView::itemChanged(QTreeWidgetItem* item, int column)
{
    if (m_filling || column != fileColumn || !item->parent())
        return;
    const bool ticked = item->checkState(fileColumn) == Qt::Checked;
    if (!m_scan.setTicked(
            item->data(fileColumn, groupRole).toUuid(), item->data(fileColumn, memberRole).toUuid(), ticked)) {
        const QSignalBlocker blocker(m_tree);
        item->setCheckState(fileColumn, Qt::Unchecked);
    }
    showTotals();
}

void DuplicateResultsView::showTotals()
{
    std::int64_t total = 0;
    qsizetype ticked = 0;
    std::int64_t freed = 0;
    for (const DuplicateGroup& group : m_scan.groups()) {
        total += group.reclaimable();
        for (const DuplicateFile& member : group.members) {
            if (group.selected.contains(member.id)) {
                ++ticked;
                freed += member.reclaimable;
            }
        }
    }
    const qsizetype sets = m_scan.groups().size();
    m_summary->setText(QStringLiteral("%1 %2 of identical files · %3 can be freed.")
                           .arg(sets)
                           .arg(sets == 1 ? QStringLiteral("set") : QStringLiteral("sets"))
                           .arg(formatBytes(total)));
    m_ticked->setText(QStringLiteral("%1 ticked — %2 to free once the vault is emptied.")
                          .arg(VaultTexts::copies(ticked), formatBytes(freed)));
    m_move->setEnabled(ticked > 0 && m_scan.phase() != DuplicateScan::Phase::moving);
}
