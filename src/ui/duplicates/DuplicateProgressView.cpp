#include "ui/duplicates/DuplicateProgressView.h"

#include "common/ByteCount.h"
#include "duplicates/DuplicateScan.h"
#include "duplicates/DuplicateTexts.h"
#include "ui/duplicates/SizeHistogram.h"
#include "ui/widgets/PathLabel.h"
#include "ui/widgets/ProgressRow.h"

#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QProgressBar>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {

constexpr int barSteps = 1000;

QString count(std::int64_t value)
{
    return QLocale().toString(qint64(value));
}

} // namespace

DuplicateProgressView::DuplicateProgressView(DuplicateScan& scan, QWidget* parent)
    : QWidget(parent)
    , m_scan(scan)
{
    setObjectName(QStringLiteral("duplicateProgress"));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* content = new QWidget(scroll);
    scroll->setWidget(content);
    outer->addWidget(scroll);
    auto* layout = new QVBoxLayout(content);

    m_stage = new QLabel(content);
    m_stage->setObjectName(QStringLiteral("stageLabel"));
    QFont bold = m_stage->font();
    bold.setBold(true);
    m_stage->setFont(bold);
    layout->addWidget(m_stage);

    m_overall = new ProgressRow(ProgressRow::Cancel::offered, content);
    m_overall->setObjectName(QStringLiteral("scanProgress"));
    layout->addWidget(m_overall);
    connect(m_overall, &ProgressRow::cancelRequested, &m_scan, &DuplicateScan::cancel);

    auto* stageRow = new QHBoxLayout;
    stageRow->addWidget(new QLabel(QStringLiteral("This stage"), content));
    m_stageBar = new QProgressBar(content);
    m_stageBar->setObjectName(QStringLiteral("stageBar"));
    m_stageBar->setRange(0, barSteps);
    stageRow->addWidget(m_stageBar, 1);
    layout->addLayout(stageRow);

    m_path = new PathLabel(content);
    m_path->setObjectName(QStringLiteral("scanningPath"));
    layout->addWidget(m_path);

    auto* grid = new QGridLayout;
    m_files = addCounter(grid, 0, QStringLiteral("FILES"));
    m_folders = addCounter(grid, 1, QStringLiteral("FOLDERS READ"));
    m_candidates = addCounter(grid, 2, DuplicateTexts::counterCandidates());
    m_cache = addCounter(grid, 3, DuplicateTexts::counterCache());
    m_cloud = addCounter(grid, 4, DuplicateTexts::counterCloud());
    m_read = addCounter(grid, 5, QStringLiteral("COMPARED"));
    m_sets = addCounter(grid, 6, QStringLiteral("SETS FOUND"));
    m_reclaimable = addCounter(grid, 7, QStringLiteral("CAN BE FREED"));
    layout->addLayout(grid);

    m_rates = new QLabel(content);
    m_rates->setObjectName(QStringLiteral("rates"));
    layout->addWidget(m_rates);

    layout->addWidget(new QLabel(QStringLiteral("Files by size"), content));
    m_histogram = new SizeHistogram(content);
    layout->addWidget(m_histogram);

    layout->addWidget(new QLabel(QStringLiteral("Sets confirmed so far"), content));
    m_discoveries = new QListWidget(content);
    m_discoveries->setObjectName(QStringLiteral("discoveries"));
    m_discoveries->setMinimumHeight(90);
    layout->addWidget(m_discoveries, 1);

    connect(&m_scan, &DuplicateScan::telemetryChanged, this, &DuplicateProgressView::showTelemetry);
}

void DuplicateProgressView::begin()
{
    m_discoveries->clear();
    m_lastDiscovery = -1;
    m_overall->start(QStringLiteral("Looking for duplicates…"));
    showTelemetry();
}

QString DuplicateProgressView::counterValue(const QString& caption) const
{
    for (const QLabel* label : findChildren<QLabel*>())
        if (label->property("caption").toString() == caption)
            return label->text();
    return {};
}

QLabel* DuplicateProgressView::addCounter(QGridLayout* grid, int index, const QString& caption)
{
    auto* box = new QWidget(this);
    auto* column = new QVBoxLayout(box);
    column->setContentsMargins(0, 4, 12, 4);
    auto* value = new QLabel(QStringLiteral("0"), box);
    value->setProperty("caption", caption);
    QFont large = value->font();
    large.setPointSizeF(large.pointSizeF() * 1.3);
    large.setBold(true);
    value->setFont(large);
    auto* name = new QLabel(caption, box);
    QFont small = name->font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    name->setFont(small);
    column->addWidget(value);
    column->addWidget(name);
    grid->addWidget(box, index / 4, index % 4);
    return value;
}

void DuplicateProgressView::showTelemetry()
{
    const ScanTelemetry& telemetry = m_scan.telemetry();
    m_stage->setText(
        telemetry.stage == DuplicateStage::ready ? QStringLiteral("Done") : duplicateStageLabel(telemetry.stage));
    if (m_overall->isRunning())
        m_overall->setProgress(qint64(telemetry.overallFraction * barSteps), barSteps);
    m_stageBar->setValue(int(telemetry.stageFraction * barSteps));
    m_path->setPath(telemetry.scanningPath);
    m_files->setText(count(telemetry.filesIndexed));
    m_folders->setText(count(telemetry.directoriesRead));
    m_candidates->setText(count(telemetry.candidates));
    m_cache->setText(count(telemetry.prunedByCache));
    m_cloud->setText(count(telemetry.datalessSkipped));
    m_read->setText(formatBytes(telemetry.bytesRead));
    m_sets->setText(count(telemetry.groupsConfirmed));
    m_reclaimable->setText(formatBytes(telemetry.reclaimableBytes));
    m_rates->setText(QStringLiteral("%1 files a second · %2 a second · %3 indexed")
                         .arg(count(qint64(telemetry.filesPerSecond)), formatBytes(qint64(telemetry.bytesPerSecond)),
                             formatBytes(telemetry.bytesIndexed)));
    m_histogram->setCounts(telemetry.sizeHistogram, telemetry.firstBand);
    for (const ScanTelemetry::Discovery& discovery : telemetry.discoveries) {
        if (discovery.id <= m_lastDiscovery)
            continue;
        m_lastDiscovery = discovery.id;
        const QString text = QStringLiteral("A set of %1 files of %2 or more — frees %3")
                                 .arg(discovery.members)
                                 .arg(formatBytes(qint64(1) << discovery.band), formatBytes(discovery.reclaimable));
        auto* item = new QListWidgetItem(text);
        item->setToolTip(text);
        m_discoveries->insertItem(0, item);
    }
}
