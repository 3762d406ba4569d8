#include "ui/MainWindow.h"

#include "app/AppState.h"
#include "app/SplitViewStateRepair.h"
#include "app/UserDefaults.h"
#include "removal/TrashRecorder.h"
#include "removal/TrashRequests.h"
#include "ui/ActivityPage.h"
#include "ui/AppMenu.h"
#include "ui/DashboardPage.h"
#include "ui/MaintenancePage.h"
#include "ui/PermissionsStep.h"
#include "ui/PlaceholderPage.h"
#include "ui/SettingsWindow.h"
#include "ui/SidebarView.h"
#include "ui/WelcomeStep.h"
#include "ui/startup/LoginItemsPage.h"
#include "ui/memory/MemoryUsagePage.h"
#include "ui/duplicates/DuplicatesPage.h"
#include "ui/usage/UsagePage.h"

#include <QCloseEvent>
#include <QScreen>
#include <QSettings>
#include <QSplitter>
#include <QStackedWidget>
#include <QTimer>

namespace {

constexpr int sidebarWidth = 220;
// Where the window was and how large, as Qt saves it.
const QString windowGeometryKey = QStringLiteral("windowGeometry");
constexpr int tourIntervalMs = 1500;

} // namespace

QString MainWindow::splitStateKey()
{
    return splitViewStatePrefix + QStringLiteral(" MainWindow");
}

MainWindow::MainWindow(AppState& state, SettingsRouter& router, QSettings& defaults, QWidget* parent)
    : QMainWindow(parent)
    , m_state(state)
    , m_router(router)
    , m_defaults(defaults)
    , m_startup(defaults, &state.permissions())
{
    setWindowTitle(QStringLiteral("Velloru"));
    setMinimumSize(760, 480);
    // A first launch opens at a comfortable size, but never larger than a small screen; later launches
    // restore where the window was left (below).
    resize(QSize(1080, 700).boundedTo(screen()->availableGeometry().size()).expandedTo(minimumSize()));

    m_steps = new QStackedWidget(this);
    auto* welcome = new WelcomeStep(m_steps);
    m_steps->addWidget(welcome);
    buildSections();
    auto* permissions = new PermissionsStep(m_state.permissions(), m_state.helper(), m_state.helperService(), m_steps);
    m_steps->addWidget(permissions);
    setCentralWidget(m_steps);
    installAppMenu(*this, m_state, m_router);

    connect(welcome, &WelcomeStep::finished, &m_startup, &StartupFlow::finishWelcome);
    connect(permissions, &PermissionsStep::finished, &m_startup, &StartupFlow::leavePermissions);
    connect(&m_startup, &StartupFlow::stepChanged, this, &MainWindow::showStep);
    connect(m_sidebar, &SidebarView::destinationActivated, &m_state, &AppState::select);
    connect(&m_state, &AppState::selectionChanged, this, &MainWindow::showSelection);
    connect(&m_state, &AppState::navigationTickChanged, this, &MainWindow::showSelection);
    connect(m_splitter, &QSplitter::splitterMoved, this, &MainWindow::saveSplitState);
    showSelection();
    restoreGeometry(m_defaults.value(windowGeometryKey).toByteArray());
}

MainWindow::~MainWindow() = default;

void MainWindow::buildSections()
{
    m_splitter = new QSplitter(Qt::Horizontal, m_steps);
    m_splitter->setObjectName(QStringLiteral("sections"));
    m_splitter->setChildrenCollapsible(false);
    m_sidebar = new SidebarView(m_state.counts(), m_splitter);
    m_sidebar->setMinimumWidth(160);
    m_detail = new QStackedWidget(m_splitter);
    m_detail->setMinimumWidth(400);
    for (const Destination destination : Destinations::all()) {
        QWidget* page = makePage(destination);
        m_pages.insert(destination, page);
        m_detail->addWidget(page);
        // A section that is not built yet counts nothing the user could act on, so it shows no badge.
        if (qobject_cast<PlaceholderPage*>(page))
            m_sidebar->hideBadge(destination);
    }
    m_splitter->addWidget(m_sidebar);
    m_splitter->addWidget(m_detail);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setSizes({sidebarWidth, width() - sidebarWidth});
    m_steps->addWidget(m_splitter);
}

QWidget* MainWindow::makePage(Destination destination)
{
    switch (destination) {
    case Destination::dashboard: return new DashboardPage(m_state, m_detail);
    case Destination::diskUsage: {
        // Runs on a worker thread; the log is folded on the main thread, in the answer.
        MoveToTrash moveToTrash = [&state = m_state](const QString& path) -> TrashAnswer {
            auto recorder
                = std::make_shared<TrashRecorder>(state.audit().journal(), Destinations::title(Destination::diskUsage));
            const TrashResult result = state.trasher().moveToTrash(TrashRequests::measured({path}), recorder.get());
            return [&state, recorder, result]() -> std::optional<QString> {
                state.audit().record(*recorder);
                if (result.failed.isEmpty())
                    return std::nullopt;
                return result.failed.first().reason;
            };
        };
        return new UsagePage(m_defaults, std::move(moveToTrash), m_detail);
    }
    case Destination::memoryUsage: return new MemoryUsagePage(m_state, m_defaults, m_detail);
    case Destination::maintenance: return new MaintenancePage(m_state, m_detail);
    case Destination::loginItems: return new LoginItemsPage(m_state, m_detail);
    case Destination::duplicates: return new DuplicatesPage(m_state.vault(), m_detail);
    case Destination::auditLog: return new ActivityPage(m_state.audit(), m_state.trashWatcher(), m_detail);
    default: return new PlaceholderPage(destination, m_detail);
    }
}

QWidget* MainWindow::currentPage() const
{
    return m_detail->currentWidget();
}

SettingsWindow* MainWindow::settingsWindow()
{
    if (!m_settings) {
        m_settings = new SettingsWindow(m_router, m_defaults, m_state.helper(), m_state.helperService(), this);
        if (auto* usage = qobject_cast<UsagePage*>(m_pages.value(Destination::diskUsage)))
            connect(m_settings, &SettingsWindow::chartStyleChanged, usage, &UsagePage::applyChartStyle);
    }
    return m_settings;
}

void MainWindow::showSelection()
{
    const Destination selection = m_state.selection();
    m_sidebar->setCurrentDestination(selection);
    m_detail->setCurrentWidget(m_pages.value(selection));
}

void MainWindow::showStep(StartupFlow::Step step)
{
    // Pages of m_steps: welcome, the sections, permissions.
    switch (step) {
    case StartupFlow::Step::welcome: m_steps->setCurrentIndex(0); break;
    case StartupFlow::Step::none: m_steps->setCurrentIndex(1); break;
    case StartupFlow::Step::permissions: m_steps->setCurrentIndex(2); break;
    }
    m_state.permissions().setPresented(step == StartupFlow::Step::permissions);
}

void MainWindow::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    if (m_shownOnce)
        return;
    m_shownOnce = true;
    restoreSplitState();
    showStep(StartupFlow::Step::none);
    m_startup.windowShown();
    if (m_defaults.value(DefaultsKey::debugTour, false).toBool())
        startTour();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    saveSplitState();
    m_defaults.setValue(windowGeometryKey, saveGeometry());
    QMainWindow::closeEvent(event);
}

void MainWindow::restoreSplitState()
{
    const auto frames = parsePaneFrames(m_defaults.value(splitStateKey()).toStringList());
    if (!frames || frames->size() != 2)
        return;
    m_splitter->setSizes({int((*frames)[0].width), int((*frames)[1].width)});
}

void MainWindow::saveSplitState()
{
    QList<PaneFrame> frames;
    for (int i = 0; i < m_splitter->count(); ++i) {
        const QWidget* pane = m_splitter->widget(i);
        frames.append(
            {double(pane->x()), double(pane->y()), double(pane->width()), double(pane->height()), pane->isHidden()});
    }
    m_defaults.setValue(splitStateKey(), formatPaneFrames(frames));
}

void MainWindow::startTour()
{
    // A self-running walk over every section, for demonstrations and for eyeballing each page.
    m_tour = new QTimer(this);
    m_tour->setInterval(tourIntervalMs);
    connect(m_tour, &QTimer::timeout, this, [this] {
        const auto& all = Destinations::all();
        const auto next = static_cast<size_t>(m_state.selection()) + 1;
        if (next >= all.size()) {
            m_tour->stop();
            return;
        }
        m_state.navigate(all[next]);
    });
    m_tour->start();
}
