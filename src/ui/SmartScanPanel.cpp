#include "ui/SmartScanPanel.h"

#include "common/ByteCount.h"
#include "removal/TrashTexts.h"
#include "scan/SmartScanSession.h"
#include "scan/SmartScanTexts.h"
#include "ui/ReviewList.h"
#include "ui/ReviewModel.h"
#include "ui/widgets/OutcomeLine.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace {

enum Page { start, scanning, review, cleaning, done };

QLabel* wrappedLabel(const QString& text, const char* name, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setWordWrap(true);
    return label;
}

QPushButton* button(const QString& text, const char* name, QWidget* parent)
{
    auto* button = new QPushButton(text, parent);
    button->setObjectName(QString::fromLatin1(name));
    return button;
}

QString itemCount(qint64 count)
{
    return QStringLiteral("%1 %2").arg(count).arg(count == 1 ? QStringLiteral("item") : QStringLiteral("items"));
}

} // namespace

SmartScanPanel::SmartScanPanel(SmartScanSession& session, QWidget* parent)
    : QWidget(parent)
    , m_session(session)
    , m_pulseTimer(new QTimer(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_pages = new QStackedWidget(this);
    layout->addWidget(m_pages);

    auto* startPage = new QWidget(m_pages);
    auto* startLayout = new QVBoxLayout(startPage);
    startLayout->addWidget(wrappedLabel(SmartScanTexts::cardText(), "smartScanPromise", startPage));
    m_scan = button(QStringLiteral("Scan"), "smartScanStart", startPage);
    startLayout->addWidget(m_scan, 0, Qt::AlignLeft);
    startLayout->addStretch();
    m_pages->addWidget(startPage);

    auto* scanningPage = new QWidget(m_pages);
    auto* scanningLayout = new QVBoxLayout(scanningPage);
    m_progress = wrappedLabel(QStringLiteral("Getting ready…"), "smartScanLocation", scanningPage);
    scanningLayout->addWidget(m_progress);
    auto* busy = new QProgressBar(scanningPage);
    busy->setRange(0, 0);
    scanningLayout->addWidget(busy);
    auto* cancel = button(QStringLiteral("Stop"), "smartScanStop", scanningPage);
    scanningLayout->addWidget(cancel, 0, Qt::AlignLeft);
    scanningLayout->addStretch();
    m_pages->addWidget(scanningPage);

    auto* reviewPage = new QWidget(m_pages);
    auto* reviewLayout = new QVBoxLayout(reviewPage);
    m_review = new ReviewList(reviewPage);
    m_review->model()->setNameOf([this](const ScanItem& item) { return m_session.itemName(item); });
    reviewLayout->addWidget(m_review, 1);
    auto* actions = new QHBoxLayout;
    m_summary = wrappedLabel({}, "smartScanSummary", reviewPage);
    actions->addWidget(m_summary, 1);
    auto* rescan = button(QStringLiteral("Scan Again"), "smartScanAgain", reviewPage);
    actions->addWidget(rescan);
    m_clean = button(QStringLiteral("Clean"), "smartScanClean", reviewPage);
    m_clean->setDefault(true);
    actions->addWidget(m_clean);
    reviewLayout->addLayout(actions);
    m_pages->addWidget(reviewPage);

    auto* cleaningPage = new QWidget(m_pages);
    auto* cleaningLayout = new QVBoxLayout(cleaningPage);
    cleaningLayout->addWidget(
        wrappedLabel(QStringLiteral("Moving the ticked items to the Trash…"), "smartScanCleaning", cleaningPage));
    cleaningLayout->addStretch();
    m_pages->addWidget(cleaningPage);

    auto* donePage = new QWidget(m_pages);
    auto* doneLayout = new QVBoxLayout(donePage);
    m_done = wrappedLabel({}, "smartScanDone", donePage);
    doneLayout->addWidget(m_done);
    m_failures = wrappedLabel({}, "smartScanFailures", donePage);
    m_failures->setTextInteractionFlags(Qt::TextSelectableByMouse);
    doneLayout->addWidget(m_failures);
    auto* doneActions = new QHBoxLayout;
    m_showActivity = button(QStringLiteral("Show in Activity"), "smartScanActivity", donePage);
    doneActions->addWidget(m_showActivity);
    auto* scanAgain = button(QStringLiteral("Scan Again"), "smartScanAgainDone", donePage);
    doneActions->addWidget(scanAgain);
    doneActions->addStretch();
    doneLayout->addLayout(doneActions);
    doneLayout->addStretch();
    m_pages->addWidget(donePage);

    m_pulseTimer->setInterval(pulseIntervalMs);
    connect(m_pulseTimer, &QTimer::timeout, this, &SmartScanPanel::showPulse);
    for (QPushButton* scan : {m_scan, rescan, scanAgain})
        connect(scan, &QPushButton::clicked, &m_session, &SmartScanSession::scan);
    connect(cancel, &QPushButton::clicked, &m_session, &SmartScanSession::cancel);
    connect(m_clean, &QPushButton::clicked, &m_session, &SmartScanSession::clean);
    connect(m_showActivity, &QPushButton::clicked, this, &SmartScanPanel::activityRequested);
    connect(m_review, &ReviewList::selectionChanged, this, [this] { m_session.setSelection(m_review->selection()); });
    connect(m_review, &ReviewList::excludeRequested, this, [this](const ScanItem& item) {
        if (const std::optional<QString> problem = m_session.exclude(item))
            m_review->actionOutcome()->showFailure(*problem);
        else
            m_review->actionOutcome()->showNote(
                QStringLiteral("%1 is left out of Smart Scan from now on.").arg(item.url.toLocalFile()));
    });
    connect(&m_session, &SmartScanSession::phaseChanged, this, &SmartScanPanel::showPhase);
    connect(&m_session, &SmartScanSession::selectionChanged, this, &SmartScanPanel::showSelection);
    showPhase();
}

void SmartScanPanel::showPhase()
{
    const ScanPhaseValue& phase = m_session.phase();
    const bool isScanning = std::holds_alternative<ScanPhase::Scanning>(phase);
    if (isScanning) {
        m_progress->setText(QStringLiteral("Getting ready…"));
        m_pulseTimer->start();
    } else {
        m_pulseTimer->stop();
    }
    if (std::holds_alternative<ScanPhase::Results>(phase)) {
        m_review->setResult(m_session.groups(), m_session.selection());
        showSelection();
    }
    if (const auto* finished = std::get_if<ScanPhase::Done>(&phase)) {
        m_done->setText(m_trashEmpty && finished->itemsMoved > 0
                ? SmartScanTexts::removalEmptiedSummary(finished->itemsMoved, finished->bytesFreed)
                : SmartScanTexts::removalSummary(finished->itemsMoved, finished->bytesFreed));
        QStringList failures;
        if (const auto& problem = m_session.recordProblem())
            failures << TrashTexts::notRecorded(finished->itemsMoved, *problem);
        if (const auto& removal = m_session.lastRemoval())
            for (const TrashFailure& failure : removal->failed)
                failures << QStringLiteral("Not moved: %1 — %2").arg(failure.path, failure.reason);
        m_failures->setText(failures.join(QLatin1Char('\n')));
        m_failures->setVisible(!failures.isEmpty());
    }
    m_pages->setCurrentIndex(isScanning                          ? Page::scanning
            : std::holds_alternative<ScanPhase::Results>(phase)  ? Page::review
            : std::holds_alternative<ScanPhase::Cleaning>(phase) ? Page::cleaning
            : std::holds_alternative<ScanPhase::Done>(phase)     ? Page::done
                                                                 : Page::start);
}

void SmartScanPanel::showPulse()
{
    const ScanPulse::Snapshot pulse = m_session.pulse();
    if (pulse.location.isEmpty())
        return;
    m_progress->setText(QStringLiteral("Scanning %1… %2 files looked at, %3 found")
                            .arg(pulse.location, QLocale().toString(pulse.files), formatBytes(pulse.bytes)));
}

void SmartScanPanel::showSelection()
{
    const QList<ScanGroup>& groups = m_session.groups();
    const QList<ScanItem> ticked = m_session.selection().tickedItems(groups);
    if (ticked.isEmpty()) {
        m_clean->setText(SmartScanTexts::nothingSelected());
        m_clean->setEnabled(false);
        m_summary->setText(groups.isEmpty() ? QString() : SmartScanTexts::tickHint());
        return;
    }
    m_clean->setText(QStringLiteral("Clean"));
    m_clean->setEnabled(true);
    m_summary->setText(QStringLiteral("%1, %2, %3")
                           .arg(itemCount(ticked.size()), formatBytes(m_session.selection().tickedSize(groups)),
                               SmartScanTexts::willMove()));
}

void SmartScanPanel::setTrashEmpty(bool empty)
{
    if (empty == m_trashEmpty)
        return;
    m_trashEmpty = empty;
    if (std::holds_alternative<ScanPhase::Done>(m_session.phase()))
        showPhase();
}
