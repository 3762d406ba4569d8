#include "ui/usage/UsagePage.h"

#include "app/UserDefaults.h"
#include "common/BackgroundTask.h"
#include "common/ByteCount.h"
#include "platform/FileManager.h"
#include "ui/Headings.h"
#include "ui/usage/FileList.h"
#include "ui/usage/HoneycombChart.h"
#include "ui/usage/RailChart.h"
#include "ui/usage/UsageDetails.h"
#include "ui/usage/UsageLegend.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/PathLabel.h"
#include "ui/widgets/ProgressRow.h"
#include "ui/widgets/WrappedLabel.h"
#include "usage/UsageTexts.h"
#include "usage/WalkRoot.h"

#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace {

QPushButton* button(const QString& text, const char* objectName, QWidget* parent)
{
    auto* result = new QPushButton(text, parent);
    result->setObjectName(QLatin1String(objectName));
    return result;
}

} // namespace

UsagePage::UsagePage(QSettings& defaults, MoveToTrash moveToTrash, QWidget* parent)
    : QWidget(parent)
    , m_defaults(defaults)
    , m_moveToTrash(std::move(moveToTrash))
{
    setObjectName(QStringLiteral("page-diskUsage"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(makeSourceRow());

    auto* navigation = new QHBoxLayout;
    m_back = button(QStringLiteral("‹ Back"), "usageBack", this);
    m_path = new PathLabel(this);
    m_path->setObjectName(QStringLiteral("usagePath"));
    m_largest = button(QStringLiteral("Largest Files"), "usageLargest", this);
    m_largest->setToolTip(QStringLiteral("The largest files anywhere in what was measured, largest first."));
    navigation->addWidget(m_back);
    navigation->addWidget(m_path, 1);
    navigation->addWidget(m_largest);
    layout->addLayout(navigation);
    m_status = new WrappedLabel({}, QStringLiteral("usageStatus"), this);
    layout->addWidget(m_status);
    m_progressRow = new ProgressRow(ProgressRow::Cancel::offered, this);
    layout->addWidget(m_progressRow);
    connect(m_progressRow, &ProgressRow::cancelRequested, &m_model, &UsageModel::cancel);

    auto* body = new QHBoxLayout;
    m_charts = new QStackedWidget(this);
    m_honeycomb = new HoneycombChart(m_charts);
    m_rail = new RailChart(m_charts);
    m_fileList = new FileList(m_charts);
    m_charts->addWidget(m_honeycomb);
    m_charts->addWidget(m_rail);
    m_charts->addWidget(m_fileList);
    auto* chartColumn = new QVBoxLayout;
    chartColumn->addWidget(m_charts, 1);
    m_legend = new UsageLegend(this);
    chartColumn->addWidget(m_legend);
    body->addLayout(chartColumn, 1);
    body->addWidget(makeSidePanel());
    layout->addLayout(body, 1);

    layout->addWidget(new WrappedLabel(UsageTexts::allocatedNote, QStringLiteral("usageNote"), this));

    for (UsageChart* chart : {static_cast<UsageChart*>(m_honeycomb), static_cast<UsageChart*>(m_rail)}) {
        connect(chart, &UsageChart::hoveredChanged, this, &UsagePage::showDetails);
        connect(chart, &UsageChart::selectedChanged, this, [this, chart](int index) {
            // Both charts keep one selection, so switching the style keeps it.
            for (UsageChart* other : {static_cast<UsageChart*>(m_honeycomb), static_cast<UsageChart*>(m_rail)})
                if (other != chart)
                    other->setSelectedIndex(index);
            showDetails();
        });
        connect(chart, &UsageChart::activated, this, &UsagePage::openItem);
    }
    connect(m_back, &QPushButton::clicked, this, [this] {
        // From a file list, Back returns to the chart it was opened from.
        if (isShowingFiles())
            return applyChartStyle();
        m_model.back();
    });
    connect(m_largest, &QPushButton::clicked, this, &UsagePage::showLargestFiles);
    connect(m_fileList, &FileList::selectedChanged, this, &UsagePage::showDetails);
    connect(&m_model, &UsageModel::itemsChanged, this, &UsagePage::showItems);
    connect(&m_model, &UsageModel::progressChanged, this, &UsagePage::showProgress);
    connect(&m_model, &UsageModel::measuringChanged, this, &UsagePage::showProgress);
    applyChartStyle();
    showItems();
    showProgress();
}

QWidget* UsagePage::makeSourceRow()
{
    auto* row = new QWidget(this);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* title = makeHeading(QStringLiteral("Disk Usage"), row);
    layout->addWidget(title);
    layout->addStretch();

    m_source = new QComboBox(row);
    m_source->setObjectName(QStringLiteral("usageSource"));
    m_source->setMaximumWidth(240);
    m_source->addItem(QStringLiteral("Home Folder"), QDir::homePath());
    for (const VolumeChoice& volume : mountedVolumes())
        m_source->addItem(volume.name, volume.rootPath);
    layout->addWidget(m_source);
    auto* choose = button(QStringLiteral("Choose Folder…"), "usageChoose", row);
    layout->addWidget(choose);
    m_measure = button(QStringLiteral("Measure"), "usageMeasure", row);
    layout->addWidget(m_measure);

    connect(choose, &QPushButton::clicked, this, [this] {
        const QString folder
            = QFileDialog::getExistingDirectory(this, QStringLiteral("Choose a Folder to Measure"), m_model.rootPath());
        if (folder.isEmpty())
            return;
        // The choice joins the drop-down, so the drop-down always names what is shown.
        if (m_source->findData(folder) < 0)
            m_source->addItem(QFileInfo(folder).fileName().isEmpty() ? folder : QFileInfo(folder).fileName(), folder);
        m_source->setCurrentIndex(m_source->findData(folder));
        m_source->setItemData(m_source->currentIndex(), folder, Qt::ToolTipRole);
        measure(folder);
    });
    connect(m_measure, &QPushButton::clicked, this, [this] {
        if (m_model.isMeasuring())
            m_model.cancel();
        else
            measure(m_source->currentData().toString());
    });
    return row;
}

QWidget* UsagePage::makeSidePanel()
{
    auto* panel = new QWidget(this);
    panel->setFixedWidth(260);
    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(8, 0, 0, 0);
    m_details = new UsageDetails(panel);
    layout->addWidget(m_details);
    m_open = button(QStringLiteral("Open"), "usageOpen", panel);
    m_reveal = button(QStringLiteral("Reveal in File Manager"), "usageReveal", panel);
    m_trash = button(QStringLiteral("Move to Trash…"), "usageTrash", panel);
    if (!m_moveToTrash)
        m_trash->setToolTip(QStringLiteral("The Trash mover is not available in this version of Velloru."));
    for (QPushButton* action : {m_open, m_reveal, m_trash})
        layout->addWidget(action);
    m_actionOutcome = new OutcomeLine(QStringLiteral("usageActionOutcome"), panel);
    layout->addWidget(m_actionOutcome);
    layout->addStretch();

    connect(m_open, &QPushButton::clicked, this, [this] { openItem(currentChart()->selectedIndex()); });
    connect(m_reveal, &QPushButton::clicked, this, &UsagePage::revealSelected);
    connect(m_trash, &QPushButton::clicked, this, &UsagePage::trashSelected);
    return panel;
}

void UsagePage::measure(const QString& path)
{
    m_model.measure(path);
    showProgress();
}

UsageChart* UsagePage::currentChart() const
{
    const bool rail = m_defaults.value(DefaultsKey::chartStyle).toString() == QLatin1String("rail");
    return rail ? static_cast<UsageChart*>(m_rail) : m_honeycomb;
}

void UsagePage::showLegend()
{
    // The rail names every bar itself; the honeycomb's small cells need the legend.
    m_legend->showItemsOf(*currentChart());
    m_legend->setVisible(currentChart() == m_honeycomb && !isShowingFiles() && m_legend->entryCount() > 0);
}

bool UsagePage::isShowingFiles() const
{
    return m_charts->currentWidget() == m_fileList;
}

void UsagePage::showLargestFiles()
{
    QList<UsageItem> files;
    for (const SizedFile& file : m_model.largestFiles())
        files.append(fileItem(file));
    m_fileList->setFiles(
        QStringLiteral("The largest files in %1, largest first").arg(m_model.rootPath()), std::move(files), true);
    m_charts->setCurrentWidget(m_fileList);
    m_back->setEnabled(true);
    showLegend();
    showDetails();
}

void UsagePage::showFilesOf(const QString& folder)
{
    if (m_filesTask)
        return;
    m_filesTask = runInBackground(
        this, [folder] { return filesIn(toFileName(folder)); },
        [this, folder](std::vector<SizedFile> found) {
            m_filesTask.reset();
            QList<UsageItem> files;
            for (const SizedFile& file : found)
                files.append(fileItem(file));
            m_fileList->setFiles(QStringLiteral("Files in %1, largest first").arg(folder), std::move(files), false);
            m_charts->setCurrentWidget(m_fileList);
            m_back->setEnabled(true);
            showLegend();
            showDetails();
        });
}

void UsagePage::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    applyChartStyle();
}

void UsagePage::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    // Coming back from the settings window is an activation of this window: the style may have changed.
    if (event->type() == QEvent::ActivationChange)
        applyChartStyle();
}

void UsagePage::applyChartStyle()
{
    m_charts->setCurrentWidget(currentChart());
    showLegend();
    m_back->setEnabled(m_model.canGoBack());
    showDetails();
}

void UsagePage::showItems()
{
    const QList<UsageItem> items = m_model.shownItems();
    m_honeycomb->setItems(items, m_model.shownTotal());
    m_rail->setItems(items, m_model.shownTotal());
    if (isShowingFiles())
        m_charts->setCurrentWidget(currentChart());
    showLegend();
    m_back->setEnabled(m_model.canGoBack());
    m_path->setPath(m_model.rootPath().isEmpty()
            ? QStringLiteral("Pick a volume or folder to see what takes its space.")
            : m_model.shownPath());
    showDetails();
}

void UsagePage::showProgress()
{
    const WalkCounters counters = m_model.counters();
    const QString folders = QLocale().toString(counters.foldersListed);
    if (m_model.isMeasuring()) {
        const QString text
            = QStringLiteral("Measuring%1… %2 folders, %3 so far")
                  .arg(m_model.scanning().isEmpty() ? QString() : QStringLiteral(" “%1”").arg(m_model.scanning()),
                      folders, formatBytes(counters.bytesCounted));
        if (!m_progressRow->isRunning())
            m_progressRow->start(text);
        m_progressRow->setText(text);
        m_progressRow->setProgress(counters.bytesCounted, m_model.expectedBytes().value_or(0));
    } else {
        m_progressRow->finish();
    }
    m_status->setVisible(!m_model.isMeasuring());
    if (!m_model.failure().isEmpty())
        m_status->setText(m_model.failure());
    else if (m_model.isComplete() && !m_model.unreadableNote().isEmpty())
        m_status->setText(QStringLiteral("%1 folders measured. %2").arg(folders, m_model.unreadableNote()));
    else if (m_model.isComplete())
        m_status->setText(QStringLiteral("%1 folders measured").arg(folders));
    else if (!m_model.rootPath().isEmpty())
        m_status->setText(
            QStringLiteral("Stopped after %1 folders — the chart shows those measured so far.").arg(folders));
    const QString emptyText = m_model.isMeasuring()
        ? QStringLiteral("Measuring — folders appear here as they are measured.")
        : m_model.rootPath().isEmpty()
        ? QStringLiteral("Nothing measured yet — pick the home folder, a volume or a folder above, then press Measure.")
        : QStringLiteral("Nothing to show here.");
    for (UsageChart* chart : {static_cast<UsageChart*>(m_honeycomb), static_cast<UsageChart*>(m_rail)})
        chart->setEmptyText(emptyText);
    m_measure->setText(m_model.isMeasuring() ? QStringLiteral("Stop") : QStringLiteral("Measure"));
    m_largest->setEnabled(m_model.isComplete() && !m_model.largestFiles().empty());
    showDetails();
}

std::optional<UsageItem> UsagePage::selectedItem() const
{
    if (isShowingFiles()) {
        const int index = m_fileList->selectedIndex();
        if (index < 0 || index >= m_fileList->files().size())
            return std::nullopt;
        return m_fileList->files()[index];
    }
    const UsageChart* chart = currentChart();
    const int index = chart->selectedIndex();
    if (index < 0 || index >= chart->items().size())
        return std::nullopt;
    return chart->items()[index];
}

void UsagePage::showDetails()
{
    const UsageChart* chart = currentChart();
    const int index = chart->hoveredIndex() >= 0 ? chart->hoveredIndex() : chart->selectedIndex();
    if (isShowingFiles()) {
        if (const std::optional<UsageItem> file = selectedItem())
            m_details->show(*file, m_model.shownTotal());
        else
            m_details->clear();
    } else if (index >= 0 && index < chart->items().size()) {
        m_details->show(chart->items()[index], chart->total());
    } else if (!m_model.rootPath().isEmpty() && m_model.failure().isEmpty()) {
        qint64 files = 0;
        for (const UsageItem& item : chart->items())
            files += item.fileCount;
        m_details->showFolder(m_model.shownPath(), chart->total(), files);
    } else {
        m_details->clear();
    }
    const std::optional<UsageItem> selected = selectedItem();
    m_open->setEnabled(
        selected && selected->kind != UsageItem::Kind::package && selected->kind != UsageItem::Kind::file);
    m_reveal->setEnabled(!m_model.rootPath().isEmpty() && m_model.failure().isEmpty());
    const std::optional<QString> kept = selected ? whyNotToTrash(*selected, QDir::homePath()) : std::nullopt;
    m_trash->setEnabled(m_moveToTrash && selected && !kept && !m_model.isMeasuring() && !m_trashTask);
    // Why the selected item is not offered is said under the buttons, where the user looks for it.
    if (kept)
        m_actionOutcome->showNote(*kept);
    else if (m_actionOutcome->kind() == OutcomeLine::Kind::note)
        m_actionOutcome->clear();
}

void UsagePage::openItem(int index)
{
    if (m_model.open(index)) {
        currentChart()->setSelectedIndex(-1);
        return;
    }
    // A folder with no subfolders, and the files lying in a folder, open to a list of their files.
    const QList<UsageItem>& items = currentChart()->items();
    if (index >= 0 && index < items.size() && items[index].kind != UsageItem::Kind::package)
        showFilesOf(items[index].path);
}

void UsagePage::revealSelected()
{
    // A folder is shown in its parent; the files lying in a folder are shown in that folder.
    const std::optional<UsageItem> selected = selectedItem();
    const QString folder = !selected               ? m_model.shownPath()
        : selected->kind == UsageItem::Kind::files ? selected->path
                                                   : QFileInfo(selected->path).absolutePath();
    m_actionOutcome->clear();
    if (m_revealTask)
        return;
    m_revealTask = runInBackground(
        this, [folder] { return showInFileManager(folder); },
        [this](std::optional<QString> failure) {
            m_revealTask.reset();
            if (failure)
                m_actionOutcome->showFailure(*failure);
        });
}

void UsagePage::trashSelected()
{
    const std::optional<UsageItem> selected = selectedItem();
    if (!selected || whyNotToTrash(*selected, QDir::homePath()) || !m_moveToTrash || m_trashTask)
        return;
    QMessageBox confirm(QMessageBox::Question, QStringLiteral("Move to Trash"),
        QStringLiteral("Move “%1” to the Trash?").arg(selected->path), QMessageBox::Cancel, this);
    confirm.setObjectName(QStringLiteral("usageTrashConfirm"));
    confirm.setInformativeText(
        QStringLiteral("It takes %1 on disk. You can put it back from the Trash.").arg(formatBytes(selected->bytes)));
    QPushButton* move = confirm.addButton(QStringLiteral("Move to Trash"), QMessageBox::DestructiveRole);
    confirm.setDefaultButton(QMessageBox::Cancel);
    confirm.exec();
    if (confirm.clickedButton() != move)
        return;
    m_actionOutcome->showNote(QStringLiteral("Moving %1 to the Trash…").arg(selected->path));
    m_trash->setEnabled(false);
    m_trashTask = runInBackground(
        this, [move = m_moveToTrash, path = selected->path] { return move(path); },
        [this, path = selected->path](const TrashAnswer& answer) {
            m_trashTask.reset();
            if (const std::optional<QString> failure = answer()) {
                m_actionOutcome->showFailure(*failure);
                showDetails();
                return;
            }
            m_actionOutcome->showSuccess(QStringLiteral("Moved %1 to the Trash.").arg(path));
            // The measured tree no longer matches the disk: measure again.
            measure(m_model.rootPath());
        });
}
