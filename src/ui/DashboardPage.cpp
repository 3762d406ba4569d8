#include "ui/DashboardPage.h"

#include "app/AppState.h"
#include "app/UserDefaults.h"
#include "common/BackgroundTask.h"
#include "common/ByteCount.h"
#include "ui/Headings.h"
#include "ui/SmartScanPanel.h"

#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QVBoxLayout>

DashboardPage::DashboardPage(AppState& state, QWidget* parent)
    : QWidget(parent)
    , m_state(state)
{
    setObjectName(QStringLiteral("page-dashboard"));
    auto* layout = new QVBoxLayout(this);
    auto* title = makeHeading(QStringLiteral("Dashboard"), this);
    layout->addWidget(title);

    m_totals = new QLabel(this);
    m_totals->setObjectName(QStringLiteral("cleanedTotals"));
    layout->addWidget(m_totals);

    auto* smartScan = new QGroupBox(QStringLiteral("Smart Scan"), this);
    auto* smartScanLayout = new QVBoxLayout(smartScan);
    m_smartScan = new SmartScanPanel(state.smartScan(), smartScan);
    smartScanLayout->addWidget(m_smartScan);
    layout->addWidget(smartScan, 1);
    connect(m_smartScan, &SmartScanPanel::activityRequested, this, [this] { m_state.navigate(Destination::auditLog); });

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
    // Emptying deletes for good, as root where root-owned items lie; that is the privileged helper's job.
    m_emptyTrash->setEnabled(false);
    trashLayout->addWidget(m_emptyTrash, 0, Qt::AlignLeft);
    connect(m_emptyTrash, &QPushButton::clicked, this, &DashboardPage::confirmEmptyTrash);
    layout->addWidget(trash);

    connect(&state.audit(), &AuditLog::changed, this, &DashboardPage::showTotals);
    connect(&state.trashWatcher(), &TrashWatcher::revisionChanged, this, &DashboardPage::refreshTrash);
    connect(&state.audit(), &AuditLog::changed, this, &DashboardPage::refreshTrash);
    showTotals();
    refreshTrash();
}

DashboardPage::~DashboardPage() = default;

void DashboardPage::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    // A developer switch: scan straight away, as if the user had pressed Scan.
    if (QSettings().value(DefaultsKey::debugAutoScan, false).toBool() && m_state.smartScan().isIdle())
        m_state.smartScan().scan();
}

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

void DashboardPage::confirmEmptyTrash()
{
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Empty the Trash?"), QStringLiteral("Empty the Trash?"),
        QMessageBox::Cancel, this);
    box.setInformativeText(TrashLocations::emptyWarning(m_lastSummary));
    QPushButton* empty = box.addButton(QStringLiteral("Empty Trash"), QMessageBox::DestructiveRole);
    box.setDefaultButton(QMessageBox::Cancel);
    box.exec();
    if (box.clickedButton() != empty)
        return;
    m_emptyTrash->setEnabled(false);
    m_state.helper().emptyTrash(std::chrono::minutes(5), [this](TaskResult result) {
        m_state.audit().recordAction(QStringLiteral("Trash"), QStringLiteral("Empty Trash"),
            result.success ? result.message : QStringLiteral("Failed: ") + result.message);
        if (!result.success)
            QMessageBox::warning(this, QStringLiteral("The Trash wasn’t emptied"), result.message);
        refreshTrash();
    });
}

void DashboardPage::showTrash(const TrashLocations::Summary& summary)
{
    m_lastSummary = summary;
    const bool helperReady = m_state.helper().state() == HelperManager::State::ready;
    m_emptyTrash->setEnabled(summary.items > 0 && helperReady);
    m_emptyTrash->setToolTip(helperReady ? QString()
                                         : QStringLiteral("Emptying the Trash needs the Maintenance Helper — set it up "
                                                          "on the Maintenance page."));
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
