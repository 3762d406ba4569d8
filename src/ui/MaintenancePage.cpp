#include "ui/MaintenancePage.h"

#include "app/AppState.h"
#include "common/ByteCount.h"
#include "helper/HelperTexts.h"
#include "helper/MaintenanceRunner.h"
#include "helper/MaintenanceTexts.h"
#include "ui/Headings.h"
#include "ui/MailCard.h"
#include "ui/widgets/HelperSetupButton.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/ProgressRow.h"
#include "ui/widgets/WrappedLabel.h"

#include <QGroupBox>
#include <QPushButton>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>

namespace {

QString meterText(const std::optional<qint64>& value)
{
    return value ? formatBytes(*value) : QStringLiteral("unknown");
}

} // namespace

MaintenancePage::MaintenancePage(AppState& state, QWidget* parent)
    : QWidget(parent)
    , m_state(state)
{
    setObjectName(QStringLiteral("page-maintenance"));
    auto* outer = new QVBoxLayout(this);
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* content = new QWidget(scroll);
    auto* layout = new QVBoxLayout(content);
    scroll->setWidget(content);
    outer->addWidget(scroll);

    layout->addWidget(makeHeading(MaintenanceTexts::title(), content));
    layout->addWidget(new WrappedLabel(MaintenanceTexts::subtitle(), QStringLiteral("subtitle"), content));
    layout->addWidget(new WrappedLabel(MaintenanceTexts::pageExplanation(), QStringLiteral("explanation"), content));

    m_prompt = new QGroupBox(content);
    m_prompt->setObjectName(QStringLiteral("helperPrompt"));
    auto* promptLayout = new QVBoxLayout(m_prompt);
    m_promptText = new WrappedLabel({}, m_prompt);
    promptLayout->addWidget(m_promptText);
    promptLayout->addWidget(new HelperSetupButton(m_state.helper(), m_state.helperService(), m_prompt));
    layout->addWidget(m_prompt);

    for (const MaintenanceTask& task : Maintenance::tasks())
        layout->addWidget(makeCard(task));
    layout->addWidget(new MailCard(m_state.audit(), m_state.fullDisk(), this));
    layout->addStretch();

    auto* ticker = new QTimer(this);
    connect(ticker, &QTimer::timeout, this, &MaintenancePage::updateMeter);
    ticker->start(2000);
    updateMeter();
    showHelperState();
    connect(&m_state.helper(), &HelperManager::changed, this, &MaintenancePage::showHelperState);
}

MaintenancePage::~MaintenancePage() = default;

QWidget* MaintenancePage::makeCard(const MaintenanceTask& task)
{
    auto* card = new QGroupBox(task.title, this);
    card->setObjectName(QStringLiteral("task-") + task.rawValue);
    card->setToolTip(task.description);
    auto* layout = new QVBoxLayout(card);
    layout->addWidget(new WrappedLabel(task.shortLine, card));
    Card parts;
    if (task.measure != MaintenanceTask::Measure::none) {
        parts.meter = new WrappedLabel({}, QStringLiteral("meter"), card);
        layout->addWidget(parts.meter);
    }
    if (task.measure == MaintenanceTask::Measure::freeSpace)
        layout->addWidget(
            new WrappedLabel(MaintenanceTexts::purgeableExplanation(), QStringLiteral("purgeableExplanation"), card));
    parts.button = new QPushButton(card);
    layout->addWidget(parts.button, 0, Qt::AlignLeft);
    parts.progress = new ProgressRow(ProgressRow::Cancel::notOffered, card);
    layout->addWidget(parts.progress);
    parts.result = new OutcomeLine(QStringLiteral("result"), card);
    layout->addWidget(parts.result);
    connect(parts.button, &QPushButton::clicked, this, [this, task] { press(task); });
    m_cards.insert(task.rawValue, parts);
    return card;
}

void MaintenancePage::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_state.helper().refreshState(m_state.helperService());
    showHelperState();
    m_state.fullDisk().probe();
}

void MaintenancePage::showHelperState()
{
    const HelperManager& helper = m_state.helper();
    const HelperManager::State state = helper.state();
    const bool busy = helper.isRefreshing() || helper.isInstalling();
    const QString label = state == HelperManager::State::ready ? QStringLiteral("Run")
        : state == HelperManager::State::needsApproval         ? QStringLiteral("Approve")
                                                               : QStringLiteral("Set Up");
    for (auto it = m_cards.cbegin(); it != m_cards.cend(); ++it) {
        if (m_running == it.key())
            continue;
        it->button->setText(label);
        // One task at a time: the helper runs them one after another anyway, and two bars would race.
        it->button->setEnabled(!busy && !m_running);
        it->button->setToolTip(m_running ? QStringLiteral("Another task is running — this one can start when it "
                                                          "has finished.")
                                         : QString());
    }

    m_prompt->setVisible(state != HelperManager::State::ready || helper.isRefreshing());
    if (helper.isRefreshing()) {
        m_prompt->setTitle(HelperTexts::updatingStatus());
        m_promptText->setText(MaintenanceTexts::updatingText());
    } else if (state == HelperManager::State::needsApproval) {
        m_prompt->setTitle(MaintenanceTexts::approveTitle());
        m_promptText->setText(MaintenanceTexts::approveText());
    } else {
        m_prompt->setTitle(MaintenanceTexts::setUpTitle());
        m_promptText->setText(MaintenanceTexts::setUpText());
    }
}

void MaintenancePage::updateMeter()
{
    const LiveReading reading = readLiveMeter();
    for (const MaintenanceTask& task : Maintenance::tasks()) {
        QLabel* meter = m_cards.value(task.rawValue).meter;
        if (meter)
            meter->setText(task.measure == MaintenanceTask::Measure::freeSpace
                    ? QStringLiteral("free space ") + meterText(reading.freeSpace)
                    : QStringLiteral("cached files ") + meterText(reading.cachedMemory));
    }
}

void MaintenancePage::press(const MaintenanceTask& task)
{
    HelperManager& helper = m_state.helper();
    if (helper.state() != HelperManager::State::ready) {
        // The card's button is a Set Up button too; what happens shows in the prompt above.
        helper.installInBackground(m_state.helperService());
        return;
    }
    if (m_running)
        return;
    const Card card = m_cards.value(task.rawValue);
    m_running = task.rawValue;
    card.button->setEnabled(false);
    card.button->setText(QStringLiteral("Running…"));
    card.result->clear();
    card.progress->start(QStringLiteral("Starting…"));
    showHelperState();
    const auto showStep = [card](TaskStep step) {
        card.progress->setText(QStringLiteral("Step %1 of %2").arg(step.done + 1).arg(step.total));
        card.progress->setToolTip(step.step);
        card.progress->setProgress(step.done, step.total);
    };
    runMaintenanceTask(helper, m_state.audit(), task, showStep, [this, card](MaintenanceOutcome outcome) {
        m_running.reset();
        card.progress->finish();
        card.result->showOutcome(
            outcome.success ? OutcomeLine::Kind::success : OutcomeLine::Kind::failure, outcome.line);
        showHelperState();
    });
}
