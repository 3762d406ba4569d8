#include "ui/ActivityPage.h"

#include "common/BackgroundTask.h"
#include "common/ByteCount.h"
#include "removal/AuditLog.h"
#include "removal/TrashRecovery.h"
#include "removal/TrashWatcher.h"
#include "ui/ActivityTableModel.h"
#include "ui/Headings.h"
#include "ui/Icons.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/WrappedLabel.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSortFilterProxyModel>
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
    header->addWidget(makeHeading(QStringLiteral("Activity"), this));
    header->addStretch();
    m_search = new QLineEdit(this);
    m_search->setObjectName(QStringLiteral("activitySearch"));
    m_search->setPlaceholderText(QStringLiteral("Search by item, feature or outcome"));
    m_search->setClearButtonEnabled(true);
    m_search->setMinimumWidth(220);
    header->addWidget(m_search);
    m_putBack = new QPushButton(QStringLiteral("Put Back"), this);
    m_putBack->setObjectName(QStringLiteral("putBack"));
    m_putBack->setToolTip(QStringLiteral("Moves the selected item from the Trash back to where it was."));
    header->addWidget(m_putBack);
    m_clear = new QPushButton(QStringLiteral("Clear…"), this);
    m_clear->setObjectName(QStringLiteral("clearActivity"));
    header->addWidget(m_clear);
    layout->addLayout(header);
    m_putBackOutcome = new OutcomeLine(QStringLiteral("putBackOutcome"), this);
    layout->addWidget(m_putBackOutcome);

    m_totals = new WrappedLabel({}, QStringLiteral("activityTotals"), this);
    layout->addWidget(m_totals);

    m_body = new QStackedWidget(this);
    m_empty = new EmptyState(sectionIcon(Destination::auditLog), QStringLiteral("Nothing here yet"),
        QStringLiteral("Everything Velloru moves to the Trash, everything it could not move and every maintenance "
                       "task it runs is listed here. Run Smart Scan on the Dashboard to start."),
        m_body);
    m_body->addWidget(m_empty);

    m_model = new ActivityTableModel(log, this);
    m_filter = new QSortFilterProxyModel(this);
    m_filter->setSourceModel(m_model);
    m_filter->setFilterKeyColumn(-1);
    m_filter->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_table = new QTableView(m_body);
    m_table->setObjectName(QStringLiteral("activityTable"));
    m_table->setModel(m_filter);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->verticalHeader()->hide();
    m_table->setWordWrap(false);
    // Paths keep their beginning and their name; every cell cut short is whole in its tooltip.
    m_table->setTextElideMode(Qt::ElideMiddle);
    // Date, feature and size take what they need; outcome and item share the rest, at every width and after
    // every change, so a long outcome never pushes the item out of view.
    QHeaderView* columns = m_table->horizontalHeader();
    columns->setSectionResizeMode(QHeaderView::ResizeToContents);
    columns->setSectionResizeMode(ActivityTableModel::Column::outcome, QHeaderView::Stretch);
    columns->setSectionResizeMode(ActivityTableModel::Column::path, QHeaderView::Stretch);
    m_body->addWidget(m_table);
    layout->addWidget(m_body, 1);

    connect(m_search, &QLineEdit::textChanged, m_filter, &QSortFilterProxyModel::setFilterFixedString);
    connect(m_clear, &QPushButton::clicked, this, &ActivityPage::confirmClear);
    connect(m_putBack, &QPushButton::clicked, this, &ActivityPage::putBackSelected);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this, &ActivityPage::updatePutBack);
    connect(&log, &AuditLog::changed, this, &ActivityPage::refresh);
    connect(&trashWatcher, &TrashWatcher::revisionChanged, this, &ActivityPage::lookUpRecoverable);
    refresh();
}

ActivityPage::~ActivityPage() = default;

void ActivityPage::refresh()
{
    QString totals = QStringLiteral("Moved to the Trash this session: %1 · All time: %2")
                         .arg(formatBytes(m_log.sessionCleaned()), formatBytes(m_log.lifetimeCleaned()));
    if (m_log.lastSaveProblem())
        totals += QStringLiteral("\n") + *m_log.lastSaveProblem();
    m_totals->setText(totals);
    const bool hasEntries = !m_log.entries().isEmpty();
    m_body->setCurrentIndex(hasEntries ? 1 : 0);
    m_clear->setEnabled(hasEntries);
    m_search->setEnabled(hasEntries);
    // The table was rebuilt from the log, which drops the selection without saying so.
    updatePutBack();
    lookUpRecoverable();
}

void ActivityPage::lookUpRecoverable()
{
    // Whether each moved item is still in the Trash is a look at the disk per entry: off the main thread.
    if (m_lookup) {
        m_lookUpAgain = true;
        return;
    }
    m_lookup = runInBackground(
        this, [entries = m_log.entries()] { return TrashRecovery::recoverableEntries(entries); },
        [this](QList<AuditEntry> recoverable) {
            m_lookup.reset();
            QSet<QUuid> ids;
            for (const AuditEntry& entry : recoverable)
                ids.insert(entry.id);
            m_model->setRecoverable(std::move(ids));
            updatePutBack();
            if (std::exchange(m_lookUpAgain, false))
                return lookUpRecoverable();
            Q_EMIT recoverableShown();
        });
}

std::optional<AuditEntry> ActivityPage::selectedEntry() const
{
    const QModelIndexList rows = m_table->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return std::nullopt;
    return m_model->entryAt(m_filter->mapToSource(rows.first()).row());
}

void ActivityPage::updatePutBack()
{
    const std::optional<AuditEntry> entry = selectedEntry();
    // An entry just put back is no longer a move, whatever the last look at the Trash found.
    m_putBack->setEnabled(entry && entry->outcome == AuditOutcome::movedToTrash && m_model->isRecoverable(entry->id));
}

void ActivityPage::putBackSelected()
{
    const std::optional<AuditEntry> entry = selectedEntry();
    if (!entry)
        return;
    if (const auto failure = TrashRecovery::putBack(m_log, *entry)) {
        m_putBackOutcome->showFailure(failure->sentence());
        lookUpRecoverable();
        return;
    }
    m_putBackOutcome->showSuccess(QStringLiteral("Put back: %1").arg(entry->path));
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
