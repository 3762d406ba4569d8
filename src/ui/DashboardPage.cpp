#include "ui/DashboardPage.h"

#include "app/AppState.h"
#include "common/BackgroundTask.h"
#include "common/ByteCount.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

DashboardPage::DashboardPage(AppState& state, QWidget* parent)
    : QWidget(parent)
    , m_state(state)
{
    setObjectName(QStringLiteral("page-dashboard"));
    auto* layout = new QVBoxLayout(this);
    auto* title = new QLabel(QStringLiteral("Dashboard"), this);
    QFont font = title->font();
    font.setPointSizeF(font.pointSizeF() * 1.4);
    font.setBold(true);
    title->setFont(font);
    layout->addWidget(title);

    m_totals = new QLabel(this);
    m_totals->setObjectName(QStringLiteral("cleanedTotals"));
    layout->addWidget(m_totals);

    auto* trash = new QGroupBox(QStringLiteral("Trash"), this);
    auto* trashLayout = new QVBoxLayout(trash);
    m_trashSummary = new QLabel(QStringLiteral("Measuring the Trash…"), trash);
    m_trashSummary->setObjectName(QStringLiteral("trashSummary"));
    trashLayout->addWidget(m_trashSummary);
    m_trashWarning = new QLabel(trash);
    m_trashWarning->setObjectName(QStringLiteral("trashWarning"));
    m_trashWarning->setWordWrap(true);
    trashLayout->addWidget(m_trashWarning);
    m_emptyTrash = new QPushButton(QStringLiteral("Empty Trash…"), trash);
    m_emptyTrash->setObjectName(QStringLiteral("emptyTrash"));
    // Emptying deletes for good, as root where other users' items lie; that is the privileged helper's job.
    m_emptyTrash->setEnabled(false);
    m_emptyTrash->setToolTip(QStringLiteral("Emptying the Trash needs the Maintenance Helper, which is not part of "
                                            "this version of Velloru yet."));
    trashLayout->addWidget(m_emptyTrash, 0, Qt::AlignLeft);
    layout->addWidget(trash);
    layout->addStretch();

    connect(&state.audit(), &AuditLog::changed, this, &DashboardPage::showTotals);
    connect(&state.trashWatcher(), &TrashWatcher::revisionChanged, this, &DashboardPage::refreshTrash);
    connect(&state.audit(), &AuditLog::changed, this, &DashboardPage::refreshTrash);
    showTotals();
    refreshTrash();
}

DashboardPage::~DashboardPage() = default;

void DashboardPage::showTotals()
{
    m_totals->setText(
        QStringLiteral("Cleaned this session: %1 · All time: %2")
            .arg(formatBytes(m_state.audit().sessionCleaned()), formatBytes(m_state.audit().lifetimeCleaned())));
}

void DashboardPage::refreshTrash()
{
    // Measuring a large Trash takes a while, so it runs off the main thread, one measurement at a time.
    if (m_trashTask) {
        m_trashChangedMeanwhile = true;
        return;
    }
    m_trashTask = runInBackground(
        this, [] { return TrashLocations::summarize(); },
        [this](TrashLocations::Summary summary) {
            m_trashTask.reset();
            showTrash(summary);
            if (std::exchange(m_trashChangedMeanwhile, false))
                refreshTrash();
        });
}

void DashboardPage::showTrash(const TrashLocations::Summary& summary)
{
    if (summary.items == 0) {
        m_trashSummary->setText(QStringLiteral("The Trash is empty."));
        m_trashWarning->clear();
    } else {
        m_trashSummary->setText(
            QStringLiteral("%1 %2 · %3 in %4 Trash %5")
                .arg(summary.items)
                .arg(summary.items == 1 ? QStringLiteral("item") : QStringLiteral("items"))
                .arg(formatBytes(summary.bytes))
                .arg(summary.locations.size())
                .arg(summary.locations.size() == 1 ? QStringLiteral("folder") : QStringLiteral("folders")));
        m_trashWarning->setText(TrashLocations::emptyWarning(summary));
    }
    Q_EMIT trashSummaryShown();
}
