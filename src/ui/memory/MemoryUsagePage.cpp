#include "ui/memory/MemoryUsagePage.h"

#include "app/AppState.h"
#include "processes/ProcessTexts.h"
#include "ui/Headings.h"
#include "ui/memory/MemoryMonitorView.h"
#include "ui/memory/ProcessTreeModel.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/HelperSetupButton.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/WrappedLabel.h"

#include <QCheckBox>
#include <QColor>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QSortFilterProxyModel>
#include <QSplitter>
#include <QStackedWidget>
#include <QStyle>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

const QString intervalKey = QStringLiteral("memoryRefreshSeconds");
const QString showSystemKey = QStringLiteral("memoryShowSystemProcesses");
constexpr int intervalChoices[] = {1, 2, 5, 10};

} // namespace

MemoryUsagePage::MemoryUsagePage(AppState& state, QSettings& defaults, QWidget* parent)
    : QWidget(parent)
    , m_state(state)
    , m_defaults(defaults)
    , m_sampler(state.inventory(), state.helper())
    , m_processes(state.helper(), state.audit())
{
    setObjectName(QStringLiteral("page-memoryUsage"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(makeHeading(QStringLiteral("Memory Usage"), this));

    auto* split = new QSplitter(Qt::Vertical, this);
    split->setObjectName(QStringLiteral("memorySplit"));
    split->setChildrenCollapsible(false);
    m_monitor = new MemoryMonitorView(state, split);
    split->addWidget(m_monitor);

    auto* lower = new QWidget(split);
    auto* lowerLayout = new QVBoxLayout(lower);
    lowerLayout->setContentsMargins(0, 0, 0, 0);
    m_helperPrompt = new QWidget(lower);
    m_helperPrompt->setObjectName(QStringLiteral("systemMemoryPrompt"));
    auto* promptLayout = new QVBoxLayout(m_helperPrompt);
    promptLayout->setContentsMargins(0, 0, 0, 0);
    m_helperPromptText = new WrappedLabel(ProcessTexts::installHelperForMemory()
            + QStringLiteral(" — /proc hides other users’ processes from you, so the list leaves them out."),
        QStringLiteral("systemMemoryPromptText"), m_helperPrompt);
    promptLayout->addWidget(m_helperPromptText);
    promptLayout->addWidget(new HelperSetupButton(state.helper(), state.helperService(), m_helperPrompt));
    lowerLayout->addWidget(m_helperPrompt);
    lowerLayout->addWidget(makeToolbar());

    m_model = new ProcessTreeModel(this);
    m_model->setShowSystem(m_showSystem->isChecked());
    m_sorted = new QSortFilterProxyModel(this);
    m_sorted->setSourceModel(m_model);
    m_sorted->setSortRole(ProcessTreeModel::sortRole);
    m_sorted->setFilterKeyColumn(-1);
    m_sorted->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_sorted->setRecursiveFilteringEnabled(true);
    m_sorted->setAutoAcceptChildRows(true);

    m_body = new QStackedWidget(lower);
    m_table = new QTreeView(m_body);
    m_table->setObjectName(QStringLiteral("processTable"));
    m_table->setModel(m_sorted);
    m_table->setSortingEnabled(true);
    m_table->sortByColumn(ProcessTreeModel::memory, Qt::DescendingOrder);
    m_table->setUniformRowHeights(true);
    m_table->setAllColumnsShowFocus(true);
    m_table->setContextMenuPolicy(Qt::CustomContextMenu);
    // Fixed widths: measuring every row's text after each sample would cost more than the sample itself. The
    // status takes what is left; it is whole in the tooltip and in the detail line below, as the name is.
    QHeaderView* header = m_table->header();
    header->setStretchLastSection(true);
    header->setMinimumSectionSize(40);
    const QFontMetrics metrics = header->fontMetrics();
    const int room = metrics.horizontalAdvance(QStringLiteral("000"));
    const QList<std::pair<int, QString>> widest{{ProcessTreeModel::name, QStringLiteral("a-program-name-of-20")},
        {ProcessTreeModel::pid, QStringLiteral("4194304")}, {ProcessTreeModel::user, QStringLiteral("username")},
        {ProcessTreeModel::cpu, QStringLiteral("100.0 %")},
        {ProcessTreeModel::memory,
            m_model->headerData(ProcessTreeModel::memory, Qt::Horizontal, Qt::DisplayRole).toString()},
        {ProcessTreeModel::priority, QStringLiteral("Normal (10)")}};
    for (const auto& [column, text] : widest)
        header->resizeSection(
            column, metrics.horizontalAdvance(text) + room + (column == 0 ? m_table->indentation() * 2 : 0));
    m_body->addWidget(m_table);
    m_empty = new EmptyState(style()->standardIcon(QStyle::SP_FileDialogContentsView),
        QStringLiteral("Reading the process list…"), QStringLiteral("The first figures arrive in a moment."), m_body);
    m_empty->setObjectName(QStringLiteral("processesEmpty"));
    m_clearSearch = m_empty->addAction(QStringLiteral("Clear Search"), QStringLiteral("clearProcessSearch"));
    m_showSystemToo = m_empty->addAction(QStringLiteral("Show System Processes"), QStringLiteral("showSystemToo"));
    m_body->addWidget(m_empty);
    m_body->setCurrentWidget(m_empty);
    lowerLayout->addWidget(m_body, 1);
    lowerLayout->addWidget(makeActionRow());
    split->addWidget(lower);
    split->setStretchFactor(1, 1);
    layout->addWidget(split, 1);

    connect(&m_sampler, &ProcessSampler::sampled, this, &MemoryUsagePage::showSample);
    connect(&state.helper(), &HelperManager::changed, this, &MemoryUsagePage::showHelperPrompt);
    connect(m_clearSearch, &QPushButton::clicked, m_search, &QLineEdit::clear);
    connect(m_showSystemToo, &QPushButton::clicked, m_showSystem, [this] { m_showSystem->setChecked(true); });
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this, &MemoryUsagePage::updateActions);
    connect(m_sorted, &QAbstractItemModel::dataChanged, this, &MemoryUsagePage::updateActions);
    for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(m_sorted, signal, this, &MemoryUsagePage::showBody);
    connect(m_sorted, &QAbstractItemModel::modelReset, this, &MemoryUsagePage::showBody);
    connect(m_table, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        if (!m_table->indexAt(at).isValid())
            return;
        QMenu* menu = makeActionMenu(this);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        menu->popup(m_table->viewport()->mapToGlobal(at));
    });
    showHelperPrompt();
    showBody();
    updateActions();
}

MemoryUsagePage::~MemoryUsagePage() = default;

QWidget* MemoryUsagePage::makeToolbar()
{
    auto* bar = new QWidget(this);
    auto* layout = new QGridLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    m_search = new QLineEdit(bar);
    m_search->setObjectName(QStringLiteral("processSearch"));
    m_search->setPlaceholderText(QStringLiteral("Search by name, user or PID"));
    m_search->setClearButtonEnabled(true);
    layout->addWidget(m_search, 0, 0);
    auto* every = new WrappedLabel(QStringLiteral("Update every"), bar);
    layout->addWidget(every, 0, 1);
    m_interval = new QComboBox(bar);
    m_interval->setObjectName(QStringLiteral("refreshInterval"));
    every->setBuddy(m_interval);
    const int chosen = m_defaults.value(intervalKey, 2).toInt();
    for (const int seconds : intervalChoices) {
        m_interval->addItem(QStringLiteral("%1 s").arg(seconds), seconds);
        if (seconds == chosen)
            m_interval->setCurrentIndex(m_interval->count() - 1);
    }
    m_sampler.setInterval(std::chrono::seconds(m_interval->currentData().toInt()));
    layout->addWidget(m_interval, 0, 2);
    m_showSystem = new QCheckBox(ProcessTexts::showSystemProcesses(), bar);
    m_showSystem->setObjectName(QStringLiteral("showSystemProcesses"));
    m_showSystem->setChecked(m_defaults.value(showSystemKey, false).toBool());
    layout->addWidget(m_showSystem, 1, 0, 1, 3);
    layout->setColumnStretch(0, 1);

    connect(m_search, &QLineEdit::textChanged, this, [this](const QString& text) {
        m_sorted->setFilterFixedString(text.trimmed());
        showBody();
    });
    connect(m_showSystem, &QCheckBox::toggled, this, [this](bool show) {
        m_defaults.setValue(showSystemKey, show);
        m_model->setShowSystem(show);
        showHelperPrompt();
        showBody();
    });
    connect(m_interval, &QComboBox::currentIndexChanged, this, [this] {
        const int seconds = m_interval->currentData().toInt();
        m_defaults.setValue(intervalKey, seconds);
        m_sampler.setInterval(std::chrono::seconds(seconds));
    });
    return bar;
}

QWidget* MemoryUsagePage::makeActionRow()
{
    auto* row = new QWidget(this);
    auto* column = new QVBoxLayout(row);
    column->setContentsMargins(0, 0, 0, 0);
    auto* layout = new QHBoxLayout;
    column->addLayout(layout);
    m_detail = new WrappedLabel({}, QStringLiteral("processDetail"), row);
    m_detail->setTextFormat(Qt::RichText);
    m_detail->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_detail, 1);
    m_priority = new QToolButton(row);
    m_priority->setObjectName(QStringLiteral("priorityMenu"));
    m_priority->setText(QStringLiteral("Priority"));
    m_priority->setPopupMode(QToolButton::InstantPopup);
    auto* bands = new QMenu(m_priority);
    for (const PriorityBand band : PriorityBands::all())
        bands->addAction(
            QStringLiteral("%1 (nice %2)").arg(PriorityBands::title(band)).arg(PriorityBands::niceValue(band)), this,
            [this, band] { prioritiseSelected(band); });
    m_priority->setMenu(bands);
    layout->addWidget(m_priority, 0, Qt::AlignTop);
    m_quit = new QPushButton(QStringLiteral("Quit…"), row);
    m_quit->setObjectName(QStringLiteral("quitProcess"));
    layout->addWidget(m_quit, 0, Qt::AlignTop);
    m_forceQuit = new QPushButton(QStringLiteral("Force Quit…"), row);
    m_forceQuit->setObjectName(QStringLiteral("forceQuitProcess"));
    layout->addWidget(m_forceQuit, 0, Qt::AlignTop);
    m_outcome = new OutcomeLine(QStringLiteral("processActionOutcome"), row);
    column->addWidget(m_outcome);
    connect(m_quit, &QPushButton::clicked, this, [this] { quitSelected(false); });
    connect(m_forceQuit, &QPushButton::clicked, this, [this] { quitSelected(true); });
    return row;
}

QMenu* MemoryUsagePage::makeActionMenu(QWidget* parent)
{
    auto* menu = new QMenu(parent);
    menu->addAction(QStringLiteral("Quit…"), this, [this] { quitSelected(false); });
    menu->addAction(QStringLiteral("Force Quit…"), this, [this] { quitSelected(true); });
    menu->addMenu(m_priority->menu())->setText(QStringLiteral("Priority"));
    return menu;
}

void MemoryUsagePage::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_sampler.setActive(true);
}

void MemoryUsagePage::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    m_sampler.setActive(false);
}

void MemoryUsagePage::showSample()
{
    m_model->setGroups(m_sampler.snapshot().groups);
    m_monitor->showSample(m_sampler);
    showHelperPrompt();
    showBody();
}

void MemoryUsagePage::showHelperPrompt()
{
    const HelperManager& helper = m_state.helper();
    const bool needed = m_showSystem->isChecked() && m_sampler.snapshot().systemProcessesHidden
        && helper.state() != HelperManager::State::ready;
    m_helperPrompt->setVisible(needed);
}

void MemoryUsagePage::showBody()
{
    const bool any = m_sorted->rowCount() > 0;
    m_body->setCurrentWidget(any ? static_cast<QWidget*>(m_table) : m_empty);
    const QString search = m_search->text().trimmed();
    m_clearSearch->setVisible(m_sampler.hasSample() && !search.isEmpty());
    m_showSystemToo->setVisible(m_sampler.hasSample() && !m_showSystem->isChecked());
    if (any || !m_sampler.hasSample())
        return;
    if (!search.isEmpty()) {
        m_empty->setTitle(QStringLiteral("No process matches “%1”").arg(search));
        m_empty->setMessage(m_showSystem->isChecked()
                ? QStringLiteral("Check the spelling, or search for part of the name, the user or the PID.")
                : QStringLiteral("Check the spelling, or show the system’s processes too — the one you look for "
                                 "may be owned by root or a service account."));
    } else {
        m_empty->setTitle(QStringLiteral("No processes of yours are running"));
        m_empty->setMessage(QStringLiteral("Show the system’s processes to see those owned by root and the service "
                                           "accounts."));
    }
}

void MemoryUsagePage::updateActions()
{
    const QModelIndex current = m_sorted->mapToSource(m_table->currentIndex());
    const bool selected = current.isValid() && m_table->selectionModel()->isSelected(m_table->currentIndex());
    for (QWidget* button :
        {static_cast<QWidget*>(m_quit), static_cast<QWidget*>(m_forceQuit), static_cast<QWidget*>(m_priority)})
        button->setEnabled(selected);
    if (!selected) {
        m_detail->setText(QStringLiteral("Select a process or an app to quit it or change its priority."));
        return;
    }
    QString detail = m_model->describe(current).toHtmlEscaped();
    const QModelIndex status = m_model->index(current.row(), ProcessTreeModel::status, current.parent());
    // A row's failure is said whole here, unless the line under the buttons says it already.
    const QString word = status.data().toString();
    if (!word.isEmpty() && !(m_outcome->isVisibleTo(this) && m_outcome->text() == word)) {
        const QVariant colour = status.data(Qt::ForegroundRole);
        detail += colour.isValid() ? QStringLiteral("<br><span style=\"color:%1\">%2</span>")
                                         .arg(colour.value<QColor>().name(), word.toHtmlEscaped())
                                   : QStringLiteral("<br>") + word.toHtmlEscaped();
    }
    m_detail->setText(detail);
}

void MemoryUsagePage::quitSelected(bool force)
{
    const QModelIndex current = m_sorted->mapToSource(m_table->currentIndex());
    const auto target = m_model->targetAt(current);
    if (!target)
        return;
    const QString name = target->name;
    QMessageBox box(QMessageBox::Question,
        force ? QStringLiteral("Force quit “%1”?").arg(name) : QStringLiteral("Quit “%1”?").arg(name),
        force ? QStringLiteral("Force quit “%1”?").arg(name) : QStringLiteral("Quit “%1”?").arg(name),
        QMessageBox::Cancel, this);
    box.setObjectName(force ? QStringLiteral("confirmForceQuit") : QStringLiteral("confirmQuit"));
    const QString reach = target->processes.size() > 1
        ? QStringLiteral("Its %1 processes end with it. ").arg(target->processes.size())
        : QString();
    box.setInformativeText(reach
        + (force ? QStringLiteral("It ends at once, with no chance to save — unsaved work in it is lost.")
                 : QStringLiteral("Velloru asks it to quit, as closing it would, and gives it a few seconds to save "
                                  "its work.")));
    QPushButton* confirm
        = box.addButton(force ? QStringLiteral("Force Quit") : QStringLiteral("Quit"), QMessageBox::DestructiveRole);
    box.setDefaultButton(QMessageBox::Cancel);
    box.exec();
    if (box.clickedButton() != confirm)
        return;
    act(m_model->keyAt(current), force ? QStringLiteral("Force quitting…") : QStringLiteral("Quitting…"),
        force ? ProcessTexts::forceQuitDone(name) : ProcessTexts::quitDone(name), name,
        [this, target = *target, force](ProcessList::Done done) {
            force ? m_processes.forceQuit(target, std::move(done)) : m_processes.quit(target, std::move(done));
        });
}

void MemoryUsagePage::prioritiseSelected(PriorityBand band)
{
    const QModelIndex current = m_sorted->mapToSource(m_table->currentIndex());
    const auto target = m_model->targetAt(current);
    if (!target)
        return;
    act(m_model->keyAt(current), QStringLiteral("Changing priority…"), ProcessTexts::priorityDone(target->name, band),
        target->name, [this, target = *target, band](ProcessList::Done done) {
            m_processes.setPriority(target, band, std::move(done));
        });
}

void MemoryUsagePage::act(const QString& key, const QString& working, const QString& done, const QString& name,
    std::function<void(ProcessList::Done)> start)
{
    m_model->setMessage(key, working, false);
    m_outcome->clear();
    updateActions();
    start([this, key, done, name, guard = QPointer(this)](ProcessActionOutcome outcome) {
        if (!guard)
            return;
        m_model->setMessage(key,
            outcome.success ? (outcome.alreadyEnded ? QStringLiteral("Had already ended") : QString())
                            : outcome.sentence,
            !outcome.success);
        // The row may be gone by the next sample, so the sentence also stays under the buttons.
        if (!outcome.success)
            m_outcome->showFailure(outcome.sentence);
        else if (outcome.alreadyEnded)
            m_outcome->showNote(ProcessTexts::alreadyEnded(name));
        else
            m_outcome->showSuccess(done);
        updateActions();
        m_sampler.sampleNow();
    });
}
