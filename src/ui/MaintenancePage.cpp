#include "ui/MaintenancePage.h"

#include "app/AppState.h"
#include "common/BackgroundTask.h"
#include "common/ByteCount.h"
#include "helper/HelperTexts.h"
#include "helper/MailOptimizer.h"
#include "helper/MaintenanceRunner.h"
#include "ui/Headings.h"
#include "ui/HelperInstaller.h"

#include <QDir>
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
    , m_installer(new HelperInstaller(state.helper(), state.helperService(), this))
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

    auto* title = makeHeading(QStringLiteral("One-click maintenance"), content);
    layout->addWidget(title);
    layout->addWidget(new QLabel(QStringLiteral("Live monitors and real one-click maintenance."), content));
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
    layout->addWidget(makeMailCard());
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
    parts.result = wrapped({}, card);
    parts.result->hide();
    layout->addWidget(parts.result);
    parts.button = new QPushButton(card);
    layout->addWidget(parts.button, 0, Qt::AlignLeft);
    connect(parts.button, &QPushButton::clicked, this, [this, task] { press(task); });
    m_cards.insert(task.rawValue, parts);
    return card;
}

QWidget* MaintenancePage::makeMailCard()
{
    auto* card = new QGroupBox(QStringLiteral("Optimize Thunderbird"), this);
    card->setObjectName(QStringLiteral("task-mail"));
    auto* layout = new QVBoxLayout(card);
    layout->addWidget(
        wrapped(QStringLiteral("Compacts and reindexes Thunderbird’s search database (global-messages-db) "
                               "— the fix for slow search and a sluggish Thunderbird. Quits Thunderbird "
                               "first; conversations are untouched."),
            card));
    m_mailResult = wrapped({}, card);
    m_mailResult->hide();
    layout->addWidget(m_mailResult);
    m_mailButton = new QPushButton(QStringLiteral("Optimize"), card);
    layout->addWidget(m_mailButton, 0, Qt::AlignLeft);
    connect(m_mailButton, &QPushButton::clicked, this, [this] {
        m_mailButton->setEnabled(false);
        m_background = runInBackground(
            this, [home = QDir::homePath()] { return MailOptimizer::optimize(home); },
            [this](TaskResult result) {
                m_state.audit().recordAction(Maintenance::feature, QStringLiteral("Optimize Thunderbird"),
                    result.success ? result.message : QStringLiteral("Failed: ") + result.message);
                showResult(m_mailResult, result.success, result.message);
                m_mailButton->setEnabled(true);
            });
    });
    return card;
}

void MaintenancePage::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_state.helper().refreshState(m_state.helperService());
    showHelperState();
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
        m_promptText->setText(QStringLiteral("This version of Velloru came with a newer helper; it is replacing the "
                                             "old one. The buttons come back when it is done."));
    } else if (state == HelperManager::State::needsApproval) {
        m_prompt->setTitle(QStringLiteral("One more step — approve the helper"));
        m_promptText->setText(QStringLiteral("The helper is installed but switched off. Press Approve and confirm as "
                                             "an administrator to switch it on. No more prompts after that."));
    } else {
        m_prompt->setTitle(QStringLiteral("Turn on one-click maintenance"));
        QString text = QStringLiteral("The buttons below need administrator rights. Install Velloru’s helper once "
                                      "(you’ll approve it as an administrator) and they become one click forever.");
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
    if (helper.state() != HelperManager::State::ready)
        return m_installer->install();
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
            showResult(card.result, outcome.success, outcome.line);
            card.button->setEnabled(true);
            card.button->setText(QStringLiteral("Run"));
        });
}

void MaintenancePage::showResult(QLabel* label, bool success, const QString& line)
{
    label->setText((success ? QStringLiteral("✓ ") : QStringLiteral("⚠ ")) + line);
    label->setToolTip(success ? QStringLiteral("Done") : QStringLiteral("Failed"));
    label->show();
}
