#include "ui/ActivityPage.h"

#include "common/ByteCount.h"
#include "removal/AuditLog.h"
#include "removal/TrashRecovery.h"
#include "removal/TrashWatcher.h"
#include "ui/ActivityTableModel.h"
#include "ui/Headings.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStackedWidget>
#include <QTableView>
#include <QVBoxLayout>

ActivityPage::ActivityPage(AuditLog& log, TrashWatcher& trashWatcher, QWidget* parent)
    : QWidget(parent)
    , m_log(log)
{
    setObjectName(QStringLiteral("page-auditLog"));
    auto* layout = new QVBoxLayout(this);

    auto* header = new QHBoxLayout;
    auto* title = makeHeading(QStringLiteral("Activity"), this);
    header->addWidget(title);
    header->addStretch();
    m_putBack = new QPushButton(QStringLiteral("Put Back"), this);
    m_putBack->setObjectName(QStringLiteral("putBack"));
    m_putBack->setToolTip(QStringLiteral("Moves the selected item from the Trash back to where it was."));
    header->addWidget(m_putBack);
    m_clear = new QPushButton(QStringLiteral("Clear…"), this);
    m_clear->setObjectName(QStringLiteral("clearActivity"));
    header->addWidget(m_clear);
    layout->addLayout(header);

    m_totals = new QLabel(this);
    m_totals->setObjectName(QStringLiteral("activityTotals"));
    layout->addWidget(m_totals);

    m_body = new QStackedWidget(this);
    auto* empty = new QLabel(QStringLiteral("Nothing yet. Everything Velloru moves to the Trash, and everything "
                                            "it could not move, is listed here."),
        m_body);
    empty->setAlignment(Qt::AlignCenter);
    empty->setWordWrap(true);
    empty->setEnabled(false);
    m_body->addWidget(empty);

    m_model = new ActivityTableModel(log, this);
    m_table = new QTableView(m_body);
    m_table->setObjectName(QStringLiteral("activityTable"));
    m_table->setModel(m_model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setWordWrap(false);
    m_body->addWidget(m_table);
    layout->addWidget(m_body, 1);

    connect(m_clear, &QPushButton::clicked, this, &ActivityPage::confirmClear);
    connect(m_putBack, &QPushButton::clicked, this, &ActivityPage::putBackSelected);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this, &ActivityPage::updatePutBack);
    connect(&log, &AuditLog::changed, this, &ActivityPage::refresh);
    connect(&trashWatcher, &TrashWatcher::revisionChanged, this, &ActivityPage::refresh);
    refresh();
}

void ActivityPage::refresh()
{
    QString totals = QStringLiteral("Cleaned this session: %1 · All time: %2")
                         .arg(formatBytes(m_log.sessionCleaned()), formatBytes(m_log.lifetimeCleaned()));
    if (m_log.lastSaveProblem())
        totals += QStringLiteral("\n") + *m_log.lastSaveProblem();
    m_totals->setText(totals);
    const bool hasEntries = !m_log.entries().isEmpty();
    m_body->setCurrentIndex(hasEntries ? 1 : 0);
    m_clear->setEnabled(hasEntries);
    if (hasEntries)
        m_table->resizeColumnsToContents();

    m_recoverable.clear();
    for (const AuditEntry& entry : TrashRecovery::recoverableEntries(m_log))
        m_recoverable.insert(entry.id);
    updatePutBack();
}

void ActivityPage::updatePutBack()
{
    const QModelIndex current = m_table->selectionModel()->currentIndex();
    const bool selected = current.isValid() && m_table->selectionModel()->isRowSelected(current.row());
    m_putBack->setEnabled(selected && m_recoverable.contains(m_model->entryAt(current.row()).id));
}

void ActivityPage::putBackSelected()
{
    const QModelIndex current = m_table->selectionModel()->currentIndex();
    if (!current.isValid())
        return;
    const AuditEntry entry = m_model->entryAt(current.row());
    if (const auto failure = TrashRecovery::putBack(m_log, entry)) {
        QMessageBox::warning(this, QStringLiteral("Couldn’t put it back"), failure->sentence());
        refresh();
    }
}

void ActivityPage::confirmClear()
{
    QMessageBox box(
        QMessageBox::Warning, AuditLog::confirmClearText(), AuditLog::confirmClearText(), QMessageBox::Cancel, this);
    box.setObjectName(QStringLiteral("confirmClear"));
    box.setInformativeText(QStringLiteral("The items stay where they are; only the record of them goes."));
    QPushButton* clear = box.addButton(QStringLiteral("Clear"), QMessageBox::DestructiveRole);
    box.setDefaultButton(QMessageBox::Cancel);
    box.exec();
    if (box.clickedButton() == clear)
        m_log.clear();
}
