#include "ui/DashboardPage.h"

#include "app/AppState.h"
#include "app/UserDefaults.h"
#include "common/BackgroundTask.h"
#include "common/ByteCount.h"
#include "platform/SystemOverview.h"
#include "ui/Headings.h"
#include "ui/SmartScanPanel.h"
#include "ui/widgets/HelperSetupButton.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/WrappedLabel.h"

#include <QDir>
#include <QGroupBox>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTimer>
#include <QVBoxLayout>

namespace {

constexpr int overviewIntervalMs = 5000;

QString figure(const std::optional<qint64>& bytes)
{
    return bytes ? formatBytes(*bytes) : QStringLiteral("unknown");
}

} // namespace

DashboardPage::DashboardPage(AppState& state, QWidget* parent)
    : QWidget(parent)
    , m_state(state)
{
    setObjectName(QStringLiteral("page-dashboard"));
    auto* layout = new QVBoxLayout(this);
    auto* title = makeHeading(QStringLiteral("Dashboard"), this);
    layout->addWidget(title);

    m_overview = new WrappedLabel(QStringLiteral("Reading free space and memory…"), QStringLiteral("overview"), this);
    layout->addWidget(m_overview);
    m_totals = new WrappedLabel({}, QStringLiteral("cleanedTotals"), this);
    layout->addWidget(m_totals);

    auto* smartScan = new QGroupBox(QStringLiteral("Smart Scan"), this);
    auto* smartScanLayout = new QVBoxLayout(smartScan);
    m_smartScan = new SmartScanPanel(state.smartScan(), smartScan);
    smartScanLayout->addWidget(m_smartScan);
    layout->addWidget(smartScan, 1);
    connect(m_smartScan, &SmartScanPanel::activityRequested, this, [this] { m_state.navigate(Destination::auditLog); });

    auto* trash = new QGroupBox(QStringLiteral("Trash"), this);
    auto* trashLayout = new QVBoxLayout(trash);
    m_trashSummary = new WrappedLabel(QStringLiteral("Measuring the Trash…"), QStringLiteral("trashSummary"), trash);
    trashLayout->addWidget(m_trashSummary);
    m_trashWarning = new WrappedLabel({}, QStringLiteral("trashWarning"), trash);
    trashLayout->addWidget(m_trashWarning);
    m_emptyTrash = new QPushButton(QStringLiteral("Empty Trash…"), trash);
    m_emptyTrash->setObjectName(QStringLiteral("emptyTrash"));
    // Emptying deletes for good, as root where root-owned items lie; that is the privileged helper's job.
    m_emptyTrash->setEnabled(false);
    trashLayout->addWidget(m_emptyTrash, 0, Qt::AlignLeft);
    m_emptyOutcome = new OutcomeLine(QStringLiteral("emptyTrashOutcome"), trash);
    trashLayout->addWidget(m_emptyOutcome);
    m_trashSetUp = new HelperSetupButton(state.helper(), state.helperService(), trash);
    trashLayout->addWidget(m_trashSetUp);
    connect(m_emptyTrash, &QPushButton::clicked, this, &DashboardPage::confirmEmptyTrash);
    layout->addWidget(trash);

    m_overviewTicker = new QTimer(this);
    m_overviewTicker->setInterval(overviewIntervalMs);
    connect(m_overviewTicker, &QTimer::timeout, this, &DashboardPage::refreshOverview);
    connect(&state.audit(), &AuditLog::changed, this, &DashboardPage::showTotals);
    connect(&state.trashWatcher(), &TrashWatcher::revisionChanged, this, &DashboardPage::refreshTrash);
    connect(&state.audit(), &AuditLog::changed, this, &DashboardPage::refreshTrash);
    connect(&state.helper(), &HelperManager::changed, this, [this] { showTrash(m_lastSummary); });
    showTotals();
    refreshTrash();
    refreshOverview();
}

DashboardPage::~DashboardPage() = default;

void DashboardPage::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_overviewTicker->start();
    // A developer switch: scan straight away, as if the user had pressed Scan.
    if (QSettings().value(DefaultsKey::debugAutoScan, false).toBool() && m_state.smartScan().isIdle())
        m_state.smartScan().scan();
}

void DashboardPage::showTotals()
{
    // Bytes moved to the Trash are not free until the Trash is emptied, so they are called what they are.
    m_totals->setText(
        QStringLiteral("Moved to the Trash this session: %1 · All time: %2")
            .arg(formatBytes(m_state.audit().sessionCleaned()), formatBytes(m_state.audit().lifetimeCleaned())));
}

void DashboardPage::refreshOverview()
{
    if (m_overviewTask)
        return;
    if (!isVisible())
        m_overviewTicker->stop();
    m_overviewTask = runInBackground(
        this, [home = QDir::homePath()] { return readSystemOverview(home); },
        [this](SystemOverview overview) {
            m_overviewTask.reset();
            showOverview(overview);
        });
}

void DashboardPage::showOverview(const SystemOverview& overview)
{
    const std::optional<qint64> memoryUsed = overview.memoryTotal && overview.memoryAvailable
        ? std::optional<qint64>(*overview.memoryTotal - *overview.memoryAvailable)
        : std::nullopt;
    m_overview->setText(QStringLiteral("Free space: %1 of %2 · Memory in use: %3 of %4")
                            .arg(figure(overview.diskFree), figure(overview.diskTotal), figure(memoryUsed),
                                figure(overview.memoryTotal)));
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
    m_emptying = true;
    m_emptyTrash->setEnabled(false);
    m_emptyOutcome->showNote(QStringLiteral("Emptying the Trash…"));
    const qint64 bytes = m_lastSummary.bytes;
    m_state.helper().emptyTrash(std::chrono::minutes(5), [this, bytes](TaskResult result) {
        m_emptying = false;
        m_state.audit().recordAction(QStringLiteral("Trash"), QStringLiteral("Empty Trash"),
            result.success ? result.message : QStringLiteral("Failed: ") + result.message, bytes);
        m_emptyOutcome->showOutcome(
            result.success ? OutcomeLine::Kind::success : OutcomeLine::Kind::failure, result.message);
        refreshTrash();
    });
}

void DashboardPage::showTrash(const TrashLocations::Summary& summary)
{
    m_lastSummary = summary;
    const bool helperReady = m_state.helper().state() == HelperManager::State::ready;
    m_emptyTrash->setEnabled(summary.items > 0 && helperReady && !m_emptying);
    // Why the button is unavailable is said beside it, with Set Up below when the helper is the reason.
    if (summary.items > 0 && !helperReady)
        m_emptyOutcome->showNote(QStringLiteral("Emptying the Trash deletes for good as an administrator, through "
                                                "Velloru’s helper — set it up below, once."));
    else if (m_emptyOutcome->kind() == OutcomeLine::Kind::note && !m_emptying)
        m_emptyOutcome->clear();
    // With nothing to empty the helper is not what stands in the way, so Set Up is not offered here.
    m_trashSetUp->setNeeded(summary.items > 0);
    m_smartScan->setTrashEmpty(summary.items == 0);
    if (summary.items == 0) {
        m_trashSummary->setText(QStringLiteral("The Trash is empty."));
        m_trashWarning->clear();
        m_trashWarning->hide();
    } else {
        m_trashSummary->setText(
            QStringLiteral("%1 %2 · %3 in %4 Trash %5")
                .arg(summary.items)
                .arg(summary.items == 1 ? QStringLiteral("item") : QStringLiteral("items"))
                .arg(formatBytes(summary.bytes))
                .arg(summary.locations.size())
                .arg(summary.locations.size() == 1 ? QStringLiteral("folder") : QStringLiteral("folders")));
        m_trashWarning->setText(TrashLocations::emptyWarning(summary));
        m_trashWarning->show();
    }
    Q_EMIT trashSummaryShown();
}
