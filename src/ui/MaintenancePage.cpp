#include "ui/MaintenancePage.h"

#include "app/AppState.h"
#include "common/BackgroundTask.h"
#include "common/ByteCount.h"
#include "helper/HelperTexts.h"
#include "helper/MaintenanceRunner.h"
#include "helper/MaintenanceTexts.h"
#include "ui/Headings.h"
#include "ui/MailCard.h"
#include "ui/ResultLine.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>

namespace {

QLabel* wrapped(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    return label;
}

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

    auto* title = makeHeading(MaintenanceTexts::title(), content);
    layout->addWidget(title);
    layout->addWidget(new QLabel(MaintenanceTexts::subtitle(), content));
    m_meter = new QLabel(content);
    m_meter->setObjectName(QStringLiteral("liveMeter"));
    layout->addWidget(m_meter);

    m_prompt = new QGroupBox(content);
    m_prompt->setObjectName(QStringLiteral("helperPrompt"));
    auto* promptLayout = new QVBoxLayout(m_prompt);
    m_promptText = wrapped({}, m_prompt);
    promptLayout->addWidget(m_promptText);
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
    layout->addWidget(wrapped(task.shortLine, card));
    Card parts;
    if (task.measure != MaintenanceTask::Measure::none) {
        parts.meter = new QLabel(card);
        layout->addWidget(parts.meter);
    }
    if (task.measure == MaintenanceTask::Measure::freeSpace) {
        auto* explanation = wrapped(MaintenanceTexts::purgeableExplanation(), card);
        explanation->setObjectName(QStringLiteral("purgeableExplanation"));
        layout->addWidget(explanation);
    }
    parts.result = wrapped({}, card);
    parts.result->hide();
    layout->addWidget(parts.result);
    parts.button = new QPushButton(card);
    layout->addWidget(parts.button, 0, Qt::AlignLeft);
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
    const HelperManager::State state = m_state.helper().state();
    const bool refreshing = m_state.helper().isRefreshing();
    const QString label = state == HelperManager::State::ready ? QStringLiteral("Run")
        : state == HelperManager::State::needsApproval         ? QStringLiteral("Approve")
                                                               : QStringLiteral("Set Up");
    for (auto it = m_cards.cbegin(); it != m_cards.cend(); ++it) {
        if (m_running.contains(it.key()))
            continue;
        it->button->setText(label);
        it->button->setEnabled(!refreshing);
    }

    m_prompt->setVisible(state != HelperManager::State::ready || refreshing);
    if (refreshing) {
        m_prompt->setTitle(HelperTexts::updatingStatus());
        m_promptText->setText(MaintenanceTexts::updatingText());
    } else if (state == HelperManager::State::needsApproval) {
        m_prompt->setTitle(MaintenanceTexts::approveTitle());
        m_promptText->setText(MaintenanceTexts::approveText());
    } else {
        m_prompt->setTitle(MaintenanceTexts::setUpTitle());
        QString text = MaintenanceTexts::setUpText();
        if (state == HelperManager::State::failed)
            text += QStringLiteral("\n") + m_state.helper().failureMessage();
        m_promptText->setText(text);
    }
}

void MaintenancePage::updateMeter()
{
    const LiveReading reading = readLiveMeter();
    m_meter->setText(QStringLiteral("Free space %1 · Cached files %2")
                         .arg(meterText(reading.freeSpace), meterText(reading.cachedMemory)));
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
        // Installing asks for an administrator's approval, which may take the user a while.
        if (m_background)
            return;
        m_background = runInBackground(
            this, [&service = m_state.helperService()] { return service.registerService(); },
            [this](std::optional<HelperService::Error> error) {
                m_background.reset();
                m_state.helper().completeInstall(m_state.helperService(), error);
            });
        return;
    }
    const Card card = m_cards.value(task.rawValue);
    card.button->setEnabled(false);
    card.button->setText(QStringLiteral("Running…"));
    m_running.insert(task.rawValue);
    const auto showStep = [card](TaskStep step) {
        card.result->setText(QStringLiteral("Step %1 of %2: %3").arg(step.done + 1).arg(step.total).arg(step.step));
        card.result->show();
    };
    runMaintenanceTask(
        helper, m_state.audit(), task, showStep, [this, card, raw = task.rawValue](MaintenanceOutcome outcome) {
            m_running.remove(raw);
            showResultLine(card.result, outcome.success, outcome.line);
            card.button->setEnabled(true);
            card.button->setText(QStringLiteral("Run"));
        });
}
