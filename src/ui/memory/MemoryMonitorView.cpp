#include "ui/memory/MemoryMonitorView.h"

#include "app/AppState.h"
#include "common/ByteCount.h"
#include "helper/MaintenanceRunner.h"
#include "processes/ProcessGroup.h"
#include "processes/ProcessSampler.h"
#include "ui/memory/MemoryChart.h"
#include "ui/widgets/HelperSetupButton.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/ProgressRow.h"
#include "ui/widgets/WrappedLabel.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr qsizetype largestShown = 5;

} // namespace

MemoryMonitorView::MemoryMonitorView(AppState& state, QWidget* parent)
    : QWidget(parent)
    , m_state(state)
{
    setObjectName(QStringLiteral("memoryMonitor"));
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    m_pressure = new WrappedLabel(QStringLiteral("Reading memory…"), QStringLiteral("memoryPressure"), this);
    QFont bold = m_pressure->font();
    bold.setBold(true);
    m_pressure->setFont(bold);
    m_explanation = new WrappedLabel({}, QStringLiteral("pressureExplanation"), this);
    m_figures = new WrappedLabel({}, QStringLiteral("memoryFigures"), this);
    auto* words = new QVBoxLayout;
    words->addWidget(m_pressure);
    words->addWidget(m_explanation);
    words->addWidget(m_figures);
    layout->addLayout(words, 0, 0, 1, 2);

    m_chart = new MemoryChart(this);
    layout->addWidget(m_chart, 1, 0);
    m_largest = new WrappedLabel({}, QStringLiteral("largestApps"), this);
    m_largest->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    layout->addWidget(m_largest, 1, 1);
    layout->setColumnStretch(0, 3);
    layout->setColumnStretch(1, 2);

    auto* freeUpColumn = new QVBoxLayout;
    auto* freeUpRow = new QHBoxLayout;
    m_freeUp = new QPushButton(QStringLiteral("Free up memory"), this);
    m_freeUp->setObjectName(QStringLiteral("freeUpMemory"));
    m_freeUp->setToolTip(QStringLiteral("Releases cached file memory through the helper and shows the measured "
                                        "change. Linux reclaims it by itself when an app needs memory."));
    freeUpRow->addWidget(m_freeUp, 0, Qt::AlignTop);
    m_freeUpNeeds = new WrappedLabel(QStringLiteral("Freeing memory needs administrator rights — set up Velloru’s "
                                                    "helper once (you’ll approve it as an administrator)."),
        QStringLiteral("freeUpNeedsHelper"), this);
    freeUpRow->addWidget(m_freeUpNeeds, 1);
    freeUpColumn->addLayout(freeUpRow);
    m_setUp = new HelperSetupButton(state.helper(), state.helperService(), this);
    freeUpColumn->addWidget(m_setUp);
    m_freeing = new ProgressRow(ProgressRow::Cancel::notOffered, this);
    freeUpColumn->addWidget(m_freeing);
    m_freeUpResult = new OutcomeLine(QStringLiteral("freeUpResult"), this);
    freeUpColumn->addWidget(m_freeUpResult);
    layout->addLayout(freeUpColumn, 2, 0, 1, 2);

    connect(m_freeUp, &QPushButton::clicked, this, &MemoryMonitorView::freeUp);
    connect(&state.helper(), &HelperManager::changed, this, &MemoryMonitorView::showHelperState);
    showHelperState();
}

void MemoryMonitorView::showSample(const ProcessSampler& sampler)
{
    const auto& memory = sampler.snapshot().memory;
    if (!memory) {
        m_pressure->setText(QStringLiteral("Memory figures unavailable"));
        m_explanation->setText(
            QStringLiteral("/proc/meminfo can’t be read, so Velloru can’t tell how memory is used."));
        return;
    }
    const MemoryPressure& pressure = sampler.pressure();
    const QColor colour = pressureColor(pressure.level);
    m_pressure->setText(QStringLiteral("<span style=\"color:%1\">●</span> Memory pressure: %2")
                            .arg(colour.name(), MemoryPressures::title(pressure.level)));
    QString explanation = MemoryPressures::explanation(pressure.level);
    if (!pressure.fromStallFigures)
        explanation += QStringLiteral(" (Judged from the memory still available — this kernel doesn’t report memory "
                                      "pressure.)");
    m_explanation->setText(explanation);
    m_figures->setText(
        QStringLiteral("In use %1 of %2 · Cached files %3 · Swap in use %4 of %5")
            .arg(formatBytes(usedMemory(*memory)), formatBytes(memory->total), formatBytes(memory->cached),
                formatBytes(usedSwap(*memory)), formatBytes(memory->swapTotal)));
    m_chart->setHistory(sampler.history(), memory->total);

    QStringList lines{QStringLiteral("<b>Using the most memory</b>")};
    for (const ProcessGroup& group : largestByMemory(sampler.snapshot().groups, largestShown))
        lines.append(QStringLiteral("%1 — %2").arg(group.name.toHtmlEscaped(), formatBytes(group.memory)));
    m_largest->setText(lines.join(QStringLiteral("<br>")));
}

void MemoryMonitorView::showHelperState()
{
    const bool ready = m_state.helper().state() == HelperManager::State::ready;
    m_freeUp->setEnabled(ready && !m_freeing->isRunning());
    m_freeUpNeeds->setVisible(!ready);
}

void MemoryMonitorView::freeUp()
{
    const auto task = Maintenance::task(QStringLiteral("purgeMemory"));
    m_freeUp->setEnabled(false);
    m_freeUpResult->clear();
    m_freeing->start(QStringLiteral("Freeing memory…"));
    const auto showStep = [this, guard = QPointer(this)](TaskStep step) {
        if (guard)
            m_freeing->setProgress(step.done, step.total);
    };
    runMaintenanceTask(
        m_state.helper(), m_state.audit(), *task, showStep, [this, guard = QPointer(this)](MaintenanceOutcome outcome) {
            if (!guard)
                return;
            m_freeing->finish();
            m_freeUpResult->showOutcome(
                outcome.success ? OutcomeLine::Kind::success : OutcomeLine::Kind::failure, outcome.line);
            showHelperState();
        });
}
