#include "ui/memory/MemoryMonitorView.h"

#include "app/AppState.h"
#include "common/ByteCount.h"
#include "helper/MaintenanceRunner.h"
#include "processes/ProcessGroup.h"
#include "processes/ProcessSampler.h"
#include "ui/HelperInstaller.h"
#include "ui/memory/MemoryChart.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr qsizetype largestShown = 5;

QLabel* wrappedLabel(QWidget* parent, const QString& objectName)
{
    auto* label = new QLabel(parent);
    label->setObjectName(objectName);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

MemoryMonitorView::MemoryMonitorView(AppState& state, HelperInstaller& installer, QWidget* parent)
    : QWidget(parent)
    , m_state(state)
    , m_installer(installer)
{
    setObjectName(QStringLiteral("memoryMonitor"));
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    m_pressure = new QLabel(QStringLiteral("Reading memory…"), this);
    m_pressure->setObjectName(QStringLiteral("memoryPressure"));
    QFont bold = m_pressure->font();
    bold.setBold(true);
    m_pressure->setFont(bold);
    m_explanation = wrappedLabel(this, QStringLiteral("pressureExplanation"));
    m_figures = wrappedLabel(this, QStringLiteral("memoryFigures"));
    auto* words = new QVBoxLayout;
    words->addWidget(m_pressure);
    words->addWidget(m_explanation);
    words->addWidget(m_figures);
    layout->addLayout(words, 0, 0, 1, 2);

    m_chart = new MemoryChart(this);
    layout->addWidget(m_chart, 1, 0);
    m_largest = wrappedLabel(this, QStringLiteral("largestApps"));
    m_largest->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_largest->setMinimumWidth(180);
    layout->addWidget(m_largest, 1, 1);
    layout->setColumnStretch(0, 3);
    layout->setColumnStretch(1, 2);

    auto* freeUpRow = new QHBoxLayout;
    m_freeUp = new QPushButton(this);
    m_freeUp->setObjectName(QStringLiteral("freeUpMemory"));
    freeUpRow->addWidget(m_freeUp, 0, Qt::AlignTop);
    m_freeUpResult = wrappedLabel(this, QStringLiteral("freeUpResult"));
    freeUpRow->addWidget(m_freeUpResult, 1);
    layout->addLayout(freeUpRow, 2, 0, 1, 2);

    connect(m_freeUp, &QPushButton::clicked, this, &MemoryMonitorView::freeUp);
    connect(&state.helper(), &HelperManager::changed, this, &MemoryMonitorView::showHelperState);
    connect(&installer, &HelperInstaller::finished, this, &MemoryMonitorView::showHelperState);
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
    if (m_freeing)
        return;
    const HelperManager& helper = m_state.helper();
    const bool ready = helper.state() == HelperManager::State::ready;
    m_freeUp->setText(ready ? QStringLiteral("Free up memory") : QStringLiteral("Set Up"));
    m_freeUp->setEnabled(!m_installer.isInstalling() && !helper.isRefreshing());
    if (ready) {
        if (m_askedForHelper)
            m_freeUpResult->setText(QStringLiteral("The helper is ready — press Free up memory."));
        m_freeUp->setToolTip(QStringLiteral("Releases cached file memory through the helper and shows the measured "
                                            "change. Linux reclaims it by itself when an app needs memory."));
    } else if (m_askedForHelper && helper.state() == HelperManager::State::failed) {
        m_freeUpResult->setText(QStringLiteral("⚠ ") + helper.failureMessage());
    } else if (m_installer.isInstalling()) {
        m_freeUpResult->setText(QStringLiteral("Installing the helper — approve it as an administrator…"));
    } else {
        m_freeUpResult->setText(QStringLiteral("Freeing memory needs administrator rights. Set up Velloru’s helper "
                                               "once (you’ll approve it as an administrator) and it’s one click."));
    }
}

void MemoryMonitorView::freeUp()
{
    HelperManager& helper = m_state.helper();
    if (helper.state() != HelperManager::State::ready) {
        m_askedForHelper = true;
        m_installer.install();
        return showHelperState();
    }
    const auto task = Maintenance::task(QStringLiteral("purgeMemory"));
    m_freeing = true;
    m_freeUp->setEnabled(false);
    m_freeUpResult->setText(QStringLiteral("Freeing memory…"));
    runMaintenanceTask(helper, m_state.audit(), *task, {}, [this, guard = QPointer(this)](MaintenanceOutcome outcome) {
        if (!guard)
            return;
        m_freeing = false;
        m_askedForHelper = false;
        showHelperState();
        m_freeUpResult->setText((outcome.success ? QStringLiteral("✓ ") : QStringLiteral("⚠ ")) + outcome.line);
    });
}
