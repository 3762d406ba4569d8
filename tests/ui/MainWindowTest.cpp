#include "ui/MainWindow.h"
#include "app/AppState.h"
#include "app/SettingsRouter.h"
#include "app/UserDefaults.h"
#include "ui/SettingsWindow.h"
#include "ui/SidebarView.h"
#include "ui/usage/HoneycombChart.h"
#include "ui/usage/RailChart.h"
#include "ui/usage/UsagePage.h"

#include "UiTestSupport.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTest>

namespace {

class MainWindowTest : public ::testing::Test {
protected:
    void SetUp() override { QSettings().clear(); }
};

QAction* menuAction(MainWindow& window, const QString& text)
{
    for (QAction* menu : window.menuBar()->actions())
        for (QAction* action : menu->menu()->actions())
            if (action->text() == text)
                return action;
    return nullptr;
}

} // namespace

TEST_F(MainWindowTest, FirstLaunchShowsWelcomeOnceThenTheSections)
{
    QSettings defaults;
    AppState state;
    SettingsRouter router;
    {
        MainWindow window(state, router, defaults);
        window.show();
        auto* welcome = window.findChild<QWidget*>(QStringLiteral("welcomeStep"));
        ASSERT_TRUE(welcome);
        EXPECT_TRUE(welcome->isVisible());
        for (const QSize size : screenshotSizes()) {
            resizeAndLayOut(window, size);
            EXPECT_TRUE(clippedLabels(window).isEmpty()) << clippedLabels(window).join(u'\n').toStdString();
        }
        saveScreenshots(window, QStringLiteral("welcome"));

        QTest::mouseClick(window.findChild<QPushButton*>(QStringLiteral("getStarted")), Qt::LeftButton);
        EXPECT_FALSE(welcome->isVisible());
        auto* permissions = window.findChild<QWidget*>(QStringLiteral("permissionsStep"));
        EXPECT_TRUE(permissions->isVisible());
        // The first look is as truthful as the later ones: without the helper it is not granted, and the
        // step offers to set it up right there.
        EXPECT_TRUE(permissions->findChild<QLabel*>(QStringLiteral("permission-helper"))
                        ->text()
                        .contains(QStringLiteral("not granted")));
        EXPECT_TRUE(permissions->findChild<QPushButton*>(QStringLiteral("helperSetUpButton"))->isVisible());
        for (const QSize size : screenshotSizes()) {
            resizeAndLayOut(window, size);
            EXPECT_TRUE(clippedLabels(window).isEmpty()) << clippedLabels(window).join(u'\n').toStdString();
        }
        saveScreenshots(window, QStringLiteral("permissions-first-launch"));
        QTest::mouseClick(permissions->findChild<QPushButton*>(QStringLiteral("permissionsContinue")), Qt::LeftButton);
        EXPECT_TRUE(window.sidebar()->isVisible());
        EXPECT_TRUE(defaults.value(DefaultsKey::onboardingComplete).toBool());
    }
    // Later launches skip the welcome; the missing helper is asked for until the user says not to remind.
    {
        MainWindow again(state, router, defaults);
        again.show();
        auto* permissions = again.findChild<QWidget*>(QStringLiteral("permissionsStep"));
        EXPECT_TRUE(permissions->isVisible());
        EXPECT_TRUE(permissions->findChild<QLabel*>(QStringLiteral("permission-helper"))
                        ->text()
                        .contains(QStringLiteral("not granted")));
        permissions->findChild<QCheckBox*>(QStringLiteral("suppressReminders"))->setChecked(true);
    }
    MainWindow quiet(state, router, defaults);
    quiet.show();
    EXPECT_TRUE(quiet.sidebar()->isVisible());
}

TEST_F(MainWindowTest, DebugPermissionsShowsTheStepEvenWhenRemindersAreOff)
{
    QSettings defaults;
    defaults.setValue(DefaultsKey::onboardingComplete, true);
    defaults.setValue(DefaultsKey::debugPermissions, true);
    defaults.setValue(DefaultsKey::permissionsRemindSuppressed, true);
    AppState state;
    SettingsRouter router;
    MainWindow window(state, router, defaults);
    window.show();
    auto* step = window.findChild<QWidget*>(QStringLiteral("permissionsStep"));
    ASSERT_TRUE(step);
    EXPECT_TRUE(step->isVisible());
    EXPECT_TRUE(state.permissions().isPresented());
    auto* heading = step->findChild<QLabel*>(QStringLiteral("permissionsHeading"));
    EXPECT_TRUE(heading->text().startsWith(QStringLiteral("Velloru asks for these once. Each one is a real Linux "
                                                          "permission")));
    saveScreenshot(window, QStringLiteral("permissions"));

    QTest::mouseClick(step->findChild<QPushButton*>(QStringLiteral("permissionsContinue")), Qt::LeftButton);
    EXPECT_TRUE(window.sidebar()->isVisible());
    EXPECT_FALSE(state.permissions().isPresented());
}

TEST_F(MainWindowTest, EverySectionOpensFromTheSidebar)
{
    QSettings defaults;
    defaults.setValue(DefaultsKey::onboardingComplete, true);
    // Without this the missing helper's reminder covers every section and the screenshots show only it.
    defaults.setValue(DefaultsKey::permissionsRemindSuppressed, true);
    AppState state;
    SettingsRouter router;
    MainWindow window(state, router, defaults);
    window.show();
    ASSERT_TRUE(window.sidebar()->isVisible());
    state.counts().setCounts({{Destination::browsers, 2}, {Destination::chats, 0}});

    ASSERT_EQ(window.sidebar()->count(), 16);
    for (const Destination destination : Destinations::all()) {
        QListWidgetItem* item = window.sidebar()->itemFor(destination);
        EXPECT_EQ(item->text(), Destinations::title(destination));
        EXPECT_FALSE(item->icon().isNull()) << Destinations::rawValue(destination).toStdString();
        const QRect rect = window.sidebar()->visualItemRect(item);
        QTest::mouseClick(window.sidebar()->viewport(), Qt::LeftButton, {}, rect.center());
        EXPECT_EQ(state.selection(), destination);
        EXPECT_EQ(window.currentPage(), window.pageFor(destination));
        EXPECT_EQ(window.currentPage()->objectName(), QStringLiteral("page-") + Destinations::rawValue(destination));
        for (const QSize size : screenshotSizes()) {
            resizeAndLayOut(window, size);
            EXPECT_TRUE(clippedLabels(window).isEmpty()) << Destinations::rawValue(destination).toStdString() << ": "
                                                         << clippedLabels(window).join(u'\n').toStdString();
        }
        saveScreenshots(window, QStringLiteral("section-") + Destinations::rawValue(destination));
    }
    saveScreenshots(window, QStringLiteral("sections"));

    // A feature sending the user elsewhere moves the sidebar too.
    state.navigate(Destination::duplicates);
    EXPECT_EQ(window.sidebar()->currentRow(), int(Destination::duplicates));
    EXPECT_EQ(window.currentPage(), window.pageFor(Destination::duplicates));
}

TEST_F(MainWindowTest, SettingsTabsFollowTheRouterBothWays)
{
    QSettings defaults;
    defaults.setValue(DefaultsKey::onboardingComplete, true);
    AppState state;
    SettingsRouter router;
    MainWindow window(state, router, defaults);
    window.show();

    QAction* about = menuAction(window, QStringLiteral("About Velloru"));
    ASSERT_TRUE(about);
    about->trigger();
    SettingsWindow* settings = window.settingsWindow();
    ASSERT_TRUE(settings->isVisible());
    EXPECT_EQ(settings->tabs()->tabText(settings->tabs()->currentIndex()), QStringLiteral("About"));

    const QStringList titles{QStringLiteral("Charts"), QStringLiteral("Services"), QStringLiteral("About")};
    for (int i = 0; i < settings->tabs()->count(); ++i) {
        EXPECT_EQ(settings->tabs()->tabText(i), titles[i]);
        QTest::mouseClick(
            settings->tabs()->tabBar(), Qt::LeftButton, {}, settings->tabs()->tabBar()->tabRect(i).center());
        EXPECT_EQ(static_cast<int>(router.selected()), i);
        saveScreenshot(*settings, QStringLiteral("settings-") + titles[i].toLower());
    }
    router.select(SettingsRouter::Tab::services);
    EXPECT_EQ(settings->tabs()->currentIndex(), 1);
    auto* helperStatus = settings->findChild<QLabel*>(QStringLiteral("helperStatus"));
    ASSERT_TRUE(helperStatus);
    EXPECT_EQ(helperStatus->text(), QStringLiteral("Helper not installed yet"));
    // The row follows the helper as it changes: a refresh under way, then a helper from another version.
    state.helper().setState(HelperManager::State::ready);
    state.helper().setRefreshing(true);
    EXPECT_EQ(helperStatus->text(), QStringLiteral("Updating the helper…"));
    state.helper().setRefreshing(false);
    state.helper().setSyncState(HelperManager::SyncState::stale, QStringLiteral("0.0.9"));
    EXPECT_EQ(helperStatus->text(),
        QStringLiteral("The helper needs updating to match this version of Velloru. Out of "
                       "step: the helper is from Velloru 0.0.9."));

    // The chart style applies to Disk Usage the moment it is picked, with no relaunch or refocus.
    router.select(SettingsRouter::Tab::charts);
    auto* usage = qobject_cast<UsagePage*>(window.pageFor(Destination::diskUsage));
    ASSERT_TRUE(usage);
    EXPECT_EQ(usage->currentChart(), usage->honeycomb());
    auto* rail = settings->findChild<QRadioButton*>(QStringLiteral("chartStyle-rail"));
    ASSERT_TRUE(rail);
    rail->click();
    EXPECT_EQ(defaults.value(DefaultsKey::chartStyle).toString(), QStringLiteral("rail"));
    EXPECT_EQ(usage->currentChart(), usage->rail());
    for (int i = 0; i < settings->tabs()->count(); ++i) {
        settings->tabs()->setCurrentIndex(i);
        EXPECT_TRUE(clippedLabels(*settings).isEmpty()) << clippedLabels(*settings).join(u'\n').toStdString();
    }

    // Only the command that changes something is offered: the services run, so Stop, not Start.
    QAction* start = menuAction(window, QStringLiteral("Start Background Services"));
    ASSERT_TRUE(start);
    EXPECT_EQ(
        start->toolTip(), QStringLiteral("Register the mount agent again and reconnect drives set to auto-connect."));
    QAction* stop = menuAction(window, QStringLiteral("Stop Background Services"));
    ASSERT_TRUE(stop);
    EXPECT_EQ(stop->toolTip(), QStringLiteral("Unmount drives, stop the mount agent and exit the privileged helper."));
    EXPECT_FALSE(start->isEnabled());
    EXPECT_TRUE(stop->isEnabled());
    stop->trigger();
    ASSERT_TRUE(QTest::qWaitFor([&] { return state.helper().backgroundStopped(); }, 10'000));
    EXPECT_TRUE(start->isEnabled());
    EXPECT_FALSE(stop->isEnabled());
    start->trigger();
    EXPECT_FALSE(start->isEnabled());

    auto* buttons = settings->findChild<QDialogButtonBox*>(QStringLiteral("settingsButtons"));
    ASSERT_TRUE(buttons);
    buttons->button(QDialogButtonBox::Close)->click();
    EXPECT_FALSE(settings->isVisible());
}

TEST_F(MainWindowTest, TheWindowOpensWhereAndAsLargeAsItWasLeft)
{
    QSettings defaults;
    defaults.setValue(DefaultsKey::onboardingComplete, true);
    defaults.setValue(DefaultsKey::permissionsRemindSuppressed, true);
    AppState state;
    SettingsRouter router;
    {
        MainWindow window(state, router, defaults);
        window.show();
        window.resize(1234, 777);
        window.close();
    }
    MainWindow again(state, router, defaults);
    again.show();
    EXPECT_EQ(again.size(), QSize(1234, 777));
}

TEST_F(MainWindowTest, TheSplitLayoutIsSavedAsFramesAndRestored)
{
    QSettings defaults;
    defaults.setValue(DefaultsKey::onboardingComplete, true);
    AppState state;
    SettingsRouter router;
    {
        MainWindow window(state, router, defaults);
        window.show();
        auto* splitter = window.findChild<QSplitter*>(QStringLiteral("sections"));
        splitter->setSizes({300, 700});
        window.close();
    }
    const QStringList frames = defaults.value(MainWindow::splitStateKey()).toStringList();
    ASSERT_EQ(frames.size(), 2);
    EXPECT_TRUE(frames[0].contains(QStringLiteral("300.000000"))) << frames[0].toStdString();

    MainWindow restored(state, router, defaults);
    restored.show();
    EXPECT_EQ(restored.findChild<QSplitter*>(QStringLiteral("sections"))->sizes().first(), 300);
}
