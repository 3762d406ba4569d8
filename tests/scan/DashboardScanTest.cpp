#include "TestSupport.h"

#include "app/AppState.h"
#include "app/UserDefaults.h"
#include "scan/SmartScanTexts.h"
#include "ui/ActivityPage.h"
#include "ui/DashboardPage.h"
#include "ui/ReviewList.h"
#include "ui/SmartScanPanel.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QTableView>
#include <QTest>

namespace {

QString home(const QString& relative)
{
    return QDir::homePath() + QLatin1Char('/') + relative;
}

void write(const QString& relative, const QByteArray& content)
{
    const QString path = home(relative);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

// The test binary's home gets an installed app, its cache, a shared cache and a log; the application
// folders are the home's own, so the machine's apps play no part.
void buildHome()
{
    qputenv("XDG_DATA_DIRS", home(QStringLiteral("system-share")).toUtf8());
    write(QStringLiteral("system-share/applications/vlc.desktop"),
        "[Desktop Entry]\nType=Application\nName=VLC\nExec=vlc\n");
    write(QStringLiteral(".cache/vlc/art/cover.jpg"), QByteArray(300'000, 'x'));
    write(QStringLiteral(".cache/thumbnails/normal/a.png"), QByteArray(120'000, 'x'));
    write(QStringLiteral(".cache/fontconfig/cache-8"), QByteArray(50'000, 'x'));
    write(QStringLiteral(".local/state/sync.log"), QByteArray(9'000, 'x'));
}

QString saveScreenshot(QWidget& widget, const QString& name)
{
    const QString folder = QCoreApplication::applicationDirPath() + QStringLiteral("/screenshots");
    QDir().mkpath(folder);
    const QString path = folder + QLatin1Char('/') + name + QStringLiteral(".png");
    widget.grab().save(path);
    return path;
}

template <typename Phase> bool waitForPhase(AppState& state)
{
    return QTest::qWaitFor([&] { return std::holds_alternative<Phase>(state.smartScan().phase()); }, 20'000);
}

} // namespace

TEST(DashboardSmartScan, ScanReviewCleanAndPutBackFromActivity)
{
    buildHome();
    AppState state;
    DashboardPage page(state);
    page.resize(1000, 720);
    page.show();
    SmartScanPanel& panel = *page.smartScan();
    saveScreenshot(page, QStringLiteral("dashboard-idle"));

    panel.scanButton()->click();
    ASSERT_TRUE(waitForPhase<ScanPhase::Results>(state));
    saveScreenshot(page, QStringLiteral("dashboard-review"));
    EXPECT_EQ(panel.review()->tickedItems().size(), 2); // vlc's cache and the thumbnails
    EXPECT_EQ(panel.summaryLabel()->text(), QStringLiteral("2 items, 420.0 kB, ") + SmartScanTexts::willMove());
    EXPECT_TRUE(panel.cleanButton()->isEnabled());

    // Unticking everything turns Clean into "Nothing selected".
    const ScanSelection ticked = panel.review()->selection();
    panel.review()->setResult(state.smartScan().groups(), ScanSelection());
    state.smartScan().setSelection(ScanSelection());
    EXPECT_EQ(panel.cleanButton()->text(), SmartScanTexts::nothingSelected());
    EXPECT_FALSE(panel.cleanButton()->isEnabled());
    EXPECT_EQ(panel.summaryLabel()->text(), SmartScanTexts::tickHint());
    panel.review()->setResult(state.smartScan().groups(), ticked);
    state.smartScan().setSelection(ticked);

    panel.cleanButton()->click();
    ASSERT_TRUE(waitForPhase<ScanPhase::Done>(state));
    saveScreenshot(page, QStringLiteral("dashboard-done"));
    EXPECT_TRUE(panel.doneLabel()->text().startsWith(QStringLiteral("2 items, 420.0 kB, moved to the Trash.")));
    EXPECT_FALSE(QFileInfo::exists(home(QStringLiteral(".cache/vlc"))));
    EXPECT_TRUE(QFileInfo::exists(home(QStringLiteral(".cache/fontconfig/cache-8"))));
    ASSERT_EQ(state.audit().entries().size(), 2);
    EXPECT_EQ(state.audit().sessionCleaned(), 420'000);

    // "Show in Activity" navigates there, where each move can be put back.
    panel.activityButton()->click();
    EXPECT_EQ(state.selection(), Destination::auditLog);
    ActivityPage activity(state.audit(), state.trashWatcher());
    activity.resize(900, 400);
    activity.show();
    activity.table()->selectRow(0);
    ASSERT_TRUE(activity.putBackButton()->isEnabled());
    activity.putBackButton()->click();
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            return QFileInfo::exists(home(QStringLiteral(".cache/vlc/art/cover.jpg")))
                || QFileInfo::exists(home(QStringLiteral(".cache/thumbnails/normal/a.png")));
        },
        5'000));
    saveScreenshot(activity, QStringLiteral("dashboard-activity"));
}

TEST(DashboardSmartScan, DebugAutoScanStartsAScanWhenTheDashboardShows)
{
    buildHome();
    QSettings().setValue(DefaultsKey::debugAutoScan, true);
    AppState state;
    DashboardPage page(state);
    EXPECT_TRUE(state.smartScan().isIdle());
    page.resize(1000, 720);
    page.show();
    EXPECT_TRUE(std::holds_alternative<ScanPhase::Scanning>(state.smartScan().phase()));
    saveScreenshot(page, QStringLiteral("dashboard-scanning"));
    ASSERT_TRUE(waitForPhase<ScanPhase::Results>(state));
    // Showing the dashboard again does not scan again once a scan has run.
    page.hide();
    page.show();
    EXPECT_TRUE(std::holds_alternative<ScanPhase::Results>(state.smartScan().phase()));
    QSettings().remove(DefaultsKey::debugAutoScan);
}
