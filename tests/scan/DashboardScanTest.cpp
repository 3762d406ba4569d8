#include "TestSupport.h"

#include "app/AppState.h"
#include "app/UserDefaults.h"
#include "scan/SmartScanTexts.h"
#include "ui/ActivityPage.h"
#include "ui/DashboardPage.h"
#include "ui/ReviewList.h"
#include "ui/ReviewModel.h"
#include "ui/SmartScanPanel.h"
#include "ui/UiTestSupport.h"
#include "ui/widgets/OutcomeLine.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>

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
    expectReadableAtBothSizes(page, QStringLiteral("dashboard-idle"));

    panel.scanButton()->click();
    ASSERT_TRUE(waitForPhase<ScanPhase::Results>(state));
    expectReadableAtBothSizes(page, QStringLiteral("dashboard-review"));
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
    expectReadableAtBothSizes(page, QStringLiteral("dashboard-done"));
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
    // Whether the item still lies in the Trash is looked up off the main thread.
    ASSERT_TRUE(QTest::qWaitFor([&] { return activity.putBackButton()->isEnabled(); }, 5'000));
    activity.putBackButton()->click();
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            return QFileInfo::exists(home(QStringLiteral(".cache/vlc/art/cover.jpg")))
                || QFileInfo::exists(home(QStringLiteral(".cache/thumbnails/normal/a.png")));
        },
        5'000));
    saveScreenshots(activity, QStringLiteral("dashboard-activity"));
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
    expectReadableAtBothSizes(page, QStringLiteral("dashboard-scanning"));
    ASSERT_TRUE(waitForPhase<ScanPhase::Results>(state));
    // Showing the dashboard again does not scan again once a scan has run.
    page.hide();
    page.show();
    EXPECT_TRUE(std::holds_alternative<ScanPhase::Results>(state.smartScan().phase()));
    QSettings().remove(DefaultsKey::debugAutoScan);
}

namespace {

// Clicks the entry with this text in the next context menu that opens.
void chooseInNextMenu(const QString& text)
{
    QTimer::singleShot(0, [text] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            return chooseInNextMenu(text);
        for (QAction* action : menu->actions())
            if (action->text() == text) {
                menu->close();
                action->trigger();
                return;
            }
        ADD_FAILURE() << "no menu entry " << text.toStdString();
        menu->close();
    });
}

QModelIndex rowOf(const ReviewModel& model, const QString& path)
{
    for (int group = 0; group < model.rowCount(); ++group) {
        const QModelIndex parent = model.index(group, 0);
        for (int row = 0; row < model.rowCount(parent); ++row) {
            const QModelIndex index = model.index(row, ReviewModel::name, parent);
            if (const ScanItem* item = model.itemAt(index); item && item->url.toLocalFile() == path)
                return index;
        }
    }
    return {};
}

// A folder of stand-in programs for PATH: an xdg-open that must not be reached and an xdg-mime that knows no
// program for folders, as on a desktop without a file manager.
QString desktopWithoutFileManager(const QTemporaryDir& folder)
{
    const QString bin = folder.path();
    for (const auto& [name, script] :
        {std::pair{"xdg-mime", "#!/bin/sh\nexit 0\n"}, std::pair{"xdg-open", "#!/bin/sh\ntouch \"$0.ran\"\n"}}) {
        QFile file(bin + QLatin1Char('/') + QLatin1String(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(script);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    return bin;
}

} // namespace

TEST(DashboardSmartScan, ItemsOfferRevealCopyPathAndExcludeAndTheCardFollowsTheTrash)
{
    buildHome();
    AppState state;
    DashboardPage page(state);
    page.resize(1000, 720);
    page.show();
    SmartScanPanel& panel = *page.smartScan();
    panel.scanButton()->click();
    ASSERT_TRUE(waitForPhase<ScanPhase::Results>(state));
    ReviewList& review = *panel.review();
    QTreeView& tree = *review.tree();
    const QString fontconfig = home(QStringLiteral(".cache/fontconfig"));
    const QString vlc = home(QStringLiteral(".cache/vlc"));
    const auto menuOn = [&](const QString& path, const QString& entry) {
        const QModelIndex index = rowOf(*review.model(), path);
        ASSERT_TRUE(index.isValid()) << path.toStdString();
        chooseInNextMenu(entry);
        Q_EMIT tree.customContextMenuRequested(tree.visualRect(index).center());
    };

    menuOn(fontconfig, QStringLiteral("Copy Path"));
    EXPECT_EQ(QGuiApplication::clipboard()->text(), fontconfig);

    // Double-click reveals the item's folder; with no file manager for folders the list says so under itself.
    QTemporaryDir bin;
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", desktopWithoutFileManager(bin).toUtf8());
    const QModelIndex cell = rowOf(*review.model(), fontconfig);
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, tree.visualRect(cell).center());
    QTest::mouseDClick(tree.viewport(), Qt::LeftButton, {}, tree.visualRect(cell).center());
    EXPECT_TRUE(QTest::qWaitFor([&] { return review.actionOutcome()->kind() == OutcomeLine::Kind::failure; }, 5'000));
    qputenv("PATH", path);
    EXPECT_TRUE(review.actionOutcome()->text().contains(QStringLiteral("none is installed for folders")))
        << review.actionOutcome()->text().toStdString();
    EXPECT_FALSE(QFileInfo::exists(bin.path() + QStringLiteral("/xdg-open.ran")));
    expectReadableAtBothSizes(page, QStringLiteral("dashboard-no-file-manager"));

    // Exclude takes the item out of this list and of every later scan.
    menuOn(fontconfig, QStringLiteral("Exclude from Smart Scan"));
    EXPECT_FALSE(rowOf(*review.model(), fontconfig).isValid());
    EXPECT_TRUE(rowOf(*review.model(), vlc).isValid());
    EXPECT_TRUE(review.actionOutcome()->text().contains(fontconfig));
    EXPECT_TRUE(QFileInfo::exists(fontconfig));
    panel.scanButton()->click();
    ASSERT_TRUE(waitForPhase<ScanPhase::Results>(state));
    EXPECT_FALSE(rowOf(*review.model(), fontconfig).isValid());

    // After the clean the card speaks of the Trash until the Trash is emptied, then of free space.
    panel.cleanButton()->click();
    ASSERT_TRUE(waitForPhase<ScanPhase::Done>(state));
    EXPECT_EQ(panel.doneLabel()->text(), SmartScanTexts::removalSummary(2, 420'000));
    const QString trash = QString::fromUtf8(qgetenv("XDG_DATA_HOME")) + QStringLiteral("/Trash");
    ASSERT_TRUE(QDir(trash).removeRecursively());
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return panel.doneLabel()->text() == SmartScanTexts::removalEmptiedSummary(2, 420'000); }, 10'000))
        << panel.doneLabel()->text().toStdString();
    expectReadableAtBothSizes(page, QStringLiteral("dashboard-trash-emptied"));
}
