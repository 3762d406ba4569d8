#include "ui/duplicates/VaultPanel.h"

#include "app/Destination.h"
#include "common/ByteCount.h"
#include "common/ReferenceDate.h"
#include "duplicates/DuplicateVaultController.h"
#include "duplicates/VaultTexts.h"
#include "ui/Icons.h"
#include "ui/duplicates/TreeCells.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/ProgressRow.h"
#include "ui/widgets/WrappedLabel.h"

#include <QFileInfo>
#include <QHeaderView>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

enum Column { fileColumn, sizeColumn, checkColumn };
constexpr int entryRole = Qt::UserRole;
constexpr int progressSteps = 1000;

OutcomeLine::Kind kindOf(VaultVerification::Result result)
{
    switch (result) {
    case VaultVerification::Result::keeperIntact: return OutcomeLine::Kind::success;
    case VaultVerification::Result::unreadable: return OutcomeLine::Kind::note;
    default: return OutcomeLine::Kind::failure;
    }
}

} // namespace

VaultPanel::VaultPanel(DuplicateVaultController& vault, QWidget* parent)
    : QWidget(parent)
    , m_vault(vault)
{
    setObjectName(QStringLiteral("vaultPanel"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_emptyState = new EmptyState(sectionIcon(Destination::duplicates), QStringLiteral("The vault is empty"),
        QStringLiteral("Copies you move out of duplicate sets wait here until you put them back or empty the vault "
                       "to the Trash. Find duplicates to fill it."),
        this);
    connect(m_emptyState->addAction(QStringLiteral("Find Duplicates"), QStringLiteral("vaultFindDuplicates")),
        &QPushButton::clicked, this, &VaultPanel::findDuplicatesRequested);
    layout->addWidget(m_emptyState);

    m_content = new QWidget(this);
    auto* content = new QVBoxLayout(m_content);
    content->setContentsMargins(0, 0, 0, 0);
    content->addWidget(new WrappedLabel(VaultTexts::explanation(), QStringLiteral("vaultIntro"), m_content));
    m_summary = new WrappedLabel({}, QStringLiteral("vaultSummary"), m_content);
    content->addWidget(m_summary);
    m_tree = new QTreeWidget(m_content);
    m_tree->setObjectName(QStringLiteral("vaultEntries"));
    m_tree->setColumnCount(3);
    m_tree->setHeaderLabels({QStringLiteral("Came from"), QStringLiteral("Size"), QStringLiteral("Check")});
    m_tree->header()->setSectionResizeMode(fileColumn, QHeaderView::Stretch);
    m_tree->header()->setSectionResizeMode(sizeColumn, QHeaderView::ResizeToContents);
    m_tree->header()->setSectionResizeMode(checkColumn, QHeaderView::Stretch);
    m_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tree->setUniformRowHeights(true);
    content->addWidget(m_tree, 1);

    auto* buttons = new QHBoxLayout;
    m_verify = new QPushButton(QStringLiteral("Verify"), m_content);
    m_verify->setObjectName(QStringLiteral("verifyVault"));
    m_verify->setToolTip(QStringLiteral("Compares every held copy with the copy that was kept, byte for byte."));
    m_putBack = new QPushButton(QStringLiteral("Put Back"), m_content);
    m_putBack->setObjectName(QStringLiteral("putBack"));
    m_putAllBack = new QPushButton(QStringLiteral("Put Everything Back"), m_content);
    m_putAllBack->setObjectName(QStringLiteral("putEverythingBack"));
    m_empty = new QPushButton(QStringLiteral("Empty to Trash…"), m_content);
    m_empty->setObjectName(QStringLiteral("emptyVault"));
    for (QPushButton* button : {m_verify, m_putBack, m_putAllBack, m_empty})
        buttons->addWidget(button);
    buttons->addStretch();
    content->addLayout(buttons);
    m_progress = new ProgressRow(ProgressRow::Cancel::offered, m_content);
    m_progress->setObjectName(QStringLiteral("vaultProgress"));
    content->addWidget(m_progress);
    m_verdict = new OutcomeLine(QStringLiteral("vaultVerdict"), m_content);
    content->addWidget(m_verdict);
    layout->addWidget(m_content, 1);
    // What the last operation did, under the buttons and also when it emptied the vault.
    m_notice = new OutcomeLine(QStringLiteral("vaultNotice"), this);
    layout->addWidget(m_notice);

    connect(m_verify, &QPushButton::clicked, &m_vault, &DuplicateVaultController::verifyAll);
    connect(m_putBack, &QPushButton::clicked, this, &VaultPanel::putBackSelected);
    connect(m_putAllBack, &QPushButton::clicked, &m_vault, &DuplicateVaultController::restoreAll);
    connect(m_empty, &QPushButton::clicked, this, &VaultPanel::confirmEmpty);
    connect(m_progress, &ProgressRow::cancelRequested, &m_vault, &DuplicateVaultController::cancel);
    connect(m_tree, &QTreeWidget::itemSelectionChanged, this, &VaultPanel::showWork);
    connect(&m_vault, &DuplicateVaultController::changed, this, &VaultPanel::showEntries);
    connect(&m_vault, &DuplicateVaultController::progressChanged, this,
        [this] { m_progress->setProgress(qint64(m_vault.verifyProgress() * progressSteps), progressSteps); });
    showEntries();
}

void VaultPanel::showEntries()
{
    m_tree->clear();
    const QIcon folder = style()->standardIcon(QStyle::SP_DirIcon);
    for (const DuplicateVaultController::Batch& batch : m_vault.batches()) {
        auto* top = new QTreeWidgetItem(m_tree);
        const QString when = QLocale().toString(
            ReferenceDate::fromSecondsSinceReference(batch.movedAt).toLocalTime(), QLocale::ShortFormat);
        setTreeCell(
            top, fileColumn, QStringLiteral("Moved %1 · %2").arg(when, VaultTexts::copies(batch.entries.size())));
        top->setIcon(fileColumn, folder);
        top->setFlags(Qt::ItemIsEnabled);
        std::int64_t bytes = 0;
        for (const VaultEntry& entry : batch.entries) {
            bytes += entry.reclaimable;
            auto* item = new QTreeWidgetItem(top);
            item->setData(fileColumn, entryRole, entry.id);
            setTreeCell(item, fileColumn, QFileInfo(entry.originalPath).fileName(), entry.originalPath);
            setTreeCell(item, sizeColumn, formatBytes(entry.size));
            const auto verification = m_vault.verifications().constFind(entry.id);
            if (verification != m_vault.verifications().cend()) {
                setTreeCell(item, checkColumn, verification->sentence());
                item->setIcon(checkColumn, OutcomeLine::iconFor(kindOf(verification->result)));
            } else {
                setTreeCell(item, checkColumn, QStringLiteral("Not checked yet"),
                    QStringLiteral("The copy kept is at %1").arg(entry.keeperPath));
            }
        }
        setTreeCell(top, sizeColumn, formatBytes(bytes));
    }
    m_tree->expandAll();

    const bool empty = m_vault.entries().isEmpty();
    m_emptyState->setVisible(empty);
    m_content->setVisible(!empty);
    m_summary->setText(QStringLiteral("%1 held · %2 will be freed once you empty the vault and then the Trash.")
                           .arg(VaultTexts::copies(m_vault.entries().size()), formatBytes(m_vault.bytesHeld())));
    if (const std::optional<QString> verdict = m_vault.verificationSummary()) {
        const qsizetype failing = std::count_if(
            m_vault.verifications().cbegin(), m_vault.verifications().cend(), [](const VaultVerification& v) {
                return v.result == VaultVerification::Result::keeperMissing
                    || v.result == VaultVerification::Result::keeperChanged;
            });
        if (*verdict == VaultTexts::allIntact())
            m_verdict->showSuccess(
                QStringLiteral("All %1 %2.").arg(VaultTexts::copies(m_vault.verifications().size()), *verdict));
        else
            m_verdict->showFailure(
                QStringLiteral("%1 %2 %3").arg(VaultTexts::copies(failing), failing == 1 ? "has" : "have", *verdict));
    } else {
        m_verdict->clear();
    }
    showWork();
}

void VaultPanel::showWork()
{
    const bool working = m_vault.isWorking();
    if (working && !m_progress->isRunning()) {
        m_progress->start(m_vault.workLabel());
        m_progress->cancelButton()->setVisible(m_vault.workLabel() == VaultTexts::verifying());
        m_notice->clear();
    } else if (!working && m_progress->isRunning()) {
        m_progress->finish();
    }
    // The verdict line already says how a verification went.
    if (!working && m_vault.notice() && !m_vault.notice()->isEmpty()
        && m_vault.notice() != m_vault.verificationSummary()) {
        const bool failed = m_vault.saveProblem() || (m_vault.lastEmpty() && !m_vault.lastEmpty()->failed.isEmpty())
            || (m_vault.lastRestore() && !m_vault.lastRestore()->failed.isEmpty());
        m_notice->showOutcome(failed ? OutcomeLine::Kind::failure : OutcomeLine::Kind::note, *m_vault.notice());
    }
    const bool any = !m_vault.entries().isEmpty();
    m_verify->setEnabled(!working && any);
    m_putBack->setEnabled(!working && !m_tree->selectedItems().isEmpty());
    m_putAllBack->setEnabled(!working && any);
    m_empty->setEnabled(!working && any);
}

void VaultPanel::confirmEmpty()
{
    QMessageBox box(QMessageBox::Question, QStringLiteral("Empty the Vault"), VaultTexts::confirmEmpty(),
        QMessageBox::Cancel, this);
    box.setInformativeText(VaultTexts::emptyExplanation());
    QPushButton* move = box.addButton(QStringLiteral("Move to Trash"), QMessageBox::AcceptRole);
    box.setDefaultButton(QMessageBox::Cancel);
    box.exec();
    if (box.clickedButton() == move)
        m_vault.emptyToTrash();
}

void VaultPanel::putBackSelected()
{
    QList<QUuid> ids;
    for (const QTreeWidgetItem* item : m_tree->selectedItems())
        if (const QUuid id = item->data(fileColumn, entryRole).toUuid(); !id.isNull())
            ids.append(id);
    m_vault.restore(ids);
}
