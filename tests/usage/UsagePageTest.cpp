#include "ui/usage/UsagePage.h"
#include "ui/usage/FileList.h"
#include "ui/usage/HoneycombChart.h"
#include "ui/usage/RailChart.h"
#include "ui/usage/UsageLegend.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/ProgressRow.h"

#include "TestSupport.h"
#include "UsageFixtures.h"
#include "app/UserDefaults.h"
#include "ui/UiTestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

namespace {

// The page offers for the Trash only what lies in the home folder, so the trees these tests measure are made
// there (each test binary has a home of its own).
class TreesInHome : public ::testing::Environment {
public:
    void SetUp() override
    {
        const QString folder = QDir::homePath() + QStringLiteral("/tmp");
        QDir().mkpath(folder);
        qputenv("TMPDIR", QFile::encodeName(folder));
    }
};
[[maybe_unused]] ::testing::Environment* const treesInHome = ::testing::AddGlobalTestEnvironment(new TreesInHome);

int indexNamed(const UsageChart& chart, const QString& name)
{
    for (int i = 0; i < chart.items().size(); ++i)
        if (chart.items()[i].name == name)
            return i;
    return -1;
}

QString detail(const UsagePage& page, const char* name)
{
    return page.findChild<QLabel*>(QLatin1String(name))->text();
}

QString detailedPath(const UsagePage& page)
{
    return page.findChild<QLabel*>(QStringLiteral("detailPath"))->toolTip();
}

void waitUntilMeasured(UsagePage& page)
{
    ASSERT_TRUE(QTest::qWaitFor([&] { return !page.model().isMeasuring(); }, 20'000));
}

// A home-like folder: a large project folder with subfolders, a photo library shown whole, music, and
// files lying in the folder itself.
void buildHome(FixtureTree& tree)
{
    writeFileOfSize(tree.path("Projects/velloru/build/objects"), 3'000'000);
    writeFileOfSize(tree.path("Projects/velloru/src/main.cpp"), 400'000);
    writeFileOfSize(tree.path("Projects/website/index.html"), 900'000);
    writeFileOfSize(tree.path("Projects/notes.txt"), 150'000);
    writeFileOfSize(tree.path("Pictures/Trip.photoslibrary/originals/a.heic"), 1'800'000);
    writeFileOfSize(tree.path("Pictures/Trip.photoslibrary/database/photos.db"), 300'000);
    writeFileOfSize(tree.path("Music/album/track1.flac"), 1'100'000);
    writeFileOfSize(tree.path("Music/album/track2.flac"), 1'000'000);
    writeFileOfSize(tree.path("Downloads/installer.iso"), 700'000);
    writeFileOfSize(tree.path(".cache/thumbnails/x.png"), 200'000);
    writeFileOfSize(tree.path("todo.txt"), 250'000);
}

} // namespace

TEST(UsagePage, FillsTheChartsDrillsIntoAFolderAndGoesBack)
{
    FixtureTree tree;
    buildHome(tree);
    FixtureTree settingsFolder; // outside the measured tree, which it would otherwise change
    QSettings defaults(settingsFolder.path("settings.ini"), QSettings::IniFormat);
    defaults.setValue(DefaultsKey::chartStyle, QStringLiteral("honeycomb"));
    QStringList trashed;
    UsagePage page(defaults, [&](const QString& path) -> TrashAnswer {
        trashed.append(path);
        return [] { return std::optional<QString>(); };
    });
    page.resize(1000, 640);
    page.show();
    page.measure(tree.path());
    waitUntilMeasured(page);

    HoneycombChart& honeycomb = *page.honeycomb();
    ASSERT_EQ(page.currentChart(), &honeycomb);
    ASSERT_EQ(honeycomb.items().size(), 6) << "five folders and the files in the folder itself";
    EXPECT_EQ(honeycomb.items().first().name, QStringLiteral("Projects"));
    EXPECT_EQ(honeycomb.total(), duBytes(tree.path()));
    EXPECT_GE(indexNamed(honeycomb, QStringLiteral("Files in this folder")), 0);
    // Cells too small for their names are told apart by the legend under the honeycomb.
    EXPECT_TRUE(page.legend()->isVisible());
    EXPECT_EQ(page.legend()->entryCount(), 6);
    EXPECT_EQ(page.findChild<QLabel*>(QStringLiteral("usageNote"))->text(),
        QStringLiteral("Sizes are allocated bytes on disk."));
    for (const QSize size : screenshotSizes()) {
        resizeAndLayOut(page, size);
        EXPECT_TRUE(clippedLabels(page).isEmpty()) << clippedLabels(page).join(u'\n').toStdString();
    }
    saveScreenshots(page, QStringLiteral("usage-honeycomb"));

    // Pointing at a cell shows what it holds; clicking selects it.
    const int music = indexNamed(honeycomb, QStringLiteral("Music"));
    ASSERT_TRUE(honeycomb.centreOf(music));
    QTest::mouseClick(&honeycomb, Qt::LeftButton, {}, honeycomb.centreOf(music)->toPoint());
    EXPECT_EQ(honeycomb.selectedIndex(), music);
    EXPECT_EQ(detailedPath(page), tree.path("Music"));
    EXPECT_EQ(detail(page, "detailFiles"), QStringLiteral("2 files"));
    EXPECT_TRUE(detail(page, "detailShare").endsWith(QStringLiteral("% of the folder shown")));

    // The photo library is one cell that cannot be opened.
    const int pictures = indexNamed(honeycomb, QStringLiteral("Pictures"));
    QTest::mouseDClick(&honeycomb, Qt::LeftButton, {}, honeycomb.centreOf(pictures)->toPoint());
    ASSERT_EQ(page.model().shownPath(), tree.path("Pictures"));
    ASSERT_EQ(honeycomb.items().size(), 1);
    EXPECT_EQ(honeycomb.items().first().kind, UsageItem::Kind::package);
    EXPECT_FALSE(honeycomb.items().first().canOpen());
    page.findChild<QPushButton*>(QStringLiteral("usageBack"))->click();

    // Double-clicking a folder opens it; Back returns.
    const int projects = indexNamed(honeycomb, QStringLiteral("Projects"));
    QTest::mouseDClick(&honeycomb, Qt::LeftButton, {}, honeycomb.centreOf(projects)->toPoint());
    EXPECT_EQ(page.model().shownPath(), tree.path("Projects"));
    EXPECT_EQ(page.findChild<QLabel*>(QStringLiteral("usagePath"))->toolTip(), tree.path("Projects"));
    ASSERT_EQ(honeycomb.items().size(), 3);
    EXPECT_EQ(honeycomb.items().first().name, QStringLiteral("velloru"));
    EXPECT_EQ(honeycomb.total(), duBytes(tree.path("Projects")));
    saveScreenshot(page, QStringLiteral("usage-honeycomb-projects"));

    // The rail shows the same folder once the setting changes.
    defaults.setValue(DefaultsKey::chartStyle, QStringLiteral("rail"));
    page.hide();
    page.show();
    RailChart& rail = *page.rail();
    ASSERT_EQ(page.currentChart(), &rail);
    EXPECT_FALSE(page.legend()->isVisible()) << "the rail names its bars itself";
    EXPECT_EQ(rail.items().size(), 3);
    const int website = indexNamed(rail, QStringLiteral("website"));
    QTest::mouseClick(&rail, Qt::LeftButton, {}, rail.centreOf(website)->toPoint());
    EXPECT_EQ(detailedPath(page), tree.path("Projects/website"));
    saveScreenshot(page, QStringLiteral("usage-rail-projects"));

    QPushButton* back = page.findChild<QPushButton*>(QStringLiteral("usageBack"));
    ASSERT_TRUE(back->isEnabled());
    back->click();
    EXPECT_EQ(page.model().shownPath(), tree.path());
    EXPECT_FALSE(back->isEnabled());
    saveScreenshot(page, QStringLiteral("usage-rail"));

    // Moving a folder to the Trash asks first, then measures again.
    QTest::mouseClick(
        &rail, Qt::LeftButton, {}, rail.centreOf(indexNamed(rail, QStringLiteral("Downloads")))->toPoint());
    QPushButton* trash = page.findChild<QPushButton*>(QStringLiteral("usageTrash"));
    ASSERT_TRUE(trash->isEnabled());
    answerNextMessageBox(QStringLiteral("Move to Trash"));
    trash->click();
    // The move runs off the main thread; the page says so and waits with the button off.
    EXPECT_FALSE(trash->isEnabled());
    ASSERT_TRUE(QTest::qWaitFor([&] { return page.actionOutcome()->kind() == OutcomeLine::Kind::success; }, 5'000));
    EXPECT_EQ(trashed, QStringList{tree.path("Downloads")});
    waitUntilMeasured(page);
}

TEST(UsagePage, WithoutATrashMoverTheActionIsDisabledAndSaysWhy)
{
    FixtureTree tree;
    buildHome(tree);
    FixtureTree settingsFolder; // outside the measured tree, which it would otherwise change
    QSettings defaults(settingsFolder.path("settings.ini"), QSettings::IniFormat);
    UsagePage page(defaults, {});
    page.resize(800, 500);
    page.show();
    page.measure(tree.path("Music"));
    waitUntilMeasured(page);
    UsageChart& chart = *page.currentChart();
    chart.setSelectedIndex(indexNamed(chart, QStringLiteral("album")));
    QPushButton* trash = page.findChild<QPushButton*>(QStringLiteral("usageTrash"));
    EXPECT_FALSE(trash->isEnabled());
    EXPECT_EQ(trash->toolTip(), QStringLiteral("The Trash mover is not available in this version of Velloru."));

    page.measure(tree.path("nowhere"));
    EXPECT_EQ(page.findChild<QLabel*>(QStringLiteral("usageStatus"))->text(),
        QStringLiteral("There is no folder at “%1” — check the path and try again.").arg(tree.path("nowhere")));
}

TEST(UsagePage, AFolderWhoseNameIsNotUtf8IsShownButNeverOfferedForTheTrash)
{
    FixtureTree tree;
    const QByteArray root = QFile::encodeName(tree.path());
    ASSERT_TRUE(makeFolderNamedBytes(root + "/bad\xff"));
    ASSERT_TRUE(writeFileNamedBytes(root + "/bad\xff/data", QByteArray(300'000, 'x')));
    ASSERT_TRUE(makeFolderNamedBytes(root + "/bad\xef\xbf\xbd"));
    ASSERT_TRUE(writeFileNamedBytes(root + "/bad\xef\xbf\xbd/data", QByteArray(1000, 'x')));
    FixtureTree settingsFolder;
    QSettings defaults(settingsFolder.path("settings.ini"), QSettings::IniFormat);
    QStringList trashed;
    UsagePage page(defaults, [&](const QString& path) -> TrashAnswer {
        trashed.append(path);
        return [] { return std::optional<QString>(); };
    });
    page.resize(800, 500);
    page.show();
    page.measure(tree.path());
    waitUntilMeasured(page);

    UsageChart& chart = *page.currentChart();
    QPushButton* trash = page.findChild<QPushButton*>(QStringLiteral("usageTrash"));
    chart.setSelectedIndex(indexNamed(chart, QStringLiteral("bad\\xFF")));
    ASSERT_GE(chart.selectedIndex(), 0);
    EXPECT_FALSE(trash->isEnabled());
    // Why is said under the button, where the user looks.
    EXPECT_TRUE(page.actionOutcome()->text().endsWith(
        QStringLiteral("This name isn’t valid UTF-8, so Velloru can’t be sure which item it names — rename it to "
                       "move it to the Trash.")))
        << page.actionOutcome()->text().toStdString();

    chart.setSelectedIndex(indexNamed(chart, QStringLiteral("bad\uFFFD")));
    EXPECT_TRUE(trash->isEnabled()) << "the folder really named with the replacement character is exact";
    EXPECT_TRUE(page.actionOutcome()->text().isEmpty());
    EXPECT_TRUE(trashed.isEmpty());
}

TEST(UsagePage, AFolderOfFilesOpensToItsFilesAndTheLargestFilesAreOneClickAway)
{
    FixtureTree tree;
    buildHome(tree);
    FixtureTree settingsFolder;
    QSettings defaults(settingsFolder.path("settings.ini"), QSettings::IniFormat);
    UsagePage page(defaults, [](const QString&) -> TrashAnswer { return [] { return std::optional<QString>(); }; });
    page.resize(1000, 640);
    page.show();
    EXPECT_FALSE(page.largestFilesButton()->isEnabled());
    page.measure(tree.path());
    waitUntilMeasured(page);

    // Downloads holds only a file: it has no chart of its own, but opens to its files.
    UsageChart& chart = *page.currentChart();
    QTest::mouseDClick(
        &chart, Qt::LeftButton, {}, chart.centreOf(indexNamed(chart, QStringLiteral("Downloads")))->toPoint());
    ASSERT_TRUE(QTest::qWaitFor([&] { return page.isShowingFiles(); }, 10'000));
    ASSERT_EQ(page.fileList()->files().size(), 1);
    EXPECT_EQ(page.fileList()->files().first().name, QStringLiteral("installer.iso"));
    page.fileList()->tree()->setCurrentItem(page.fileList()->tree()->topLevelItem(0));
    EXPECT_EQ(detailedPath(page), tree.path("Downloads/installer.iso"));
    EXPECT_TRUE(page.findChild<QPushButton*>(QStringLiteral("usageTrash"))->isEnabled());
    page.findChild<QPushButton*>(QStringLiteral("usageBack"))->click();
    EXPECT_FALSE(page.isShowingFiles());

    // The largest files of the whole tree, largest first, wherever they lie.
    ASSERT_TRUE(page.largestFilesButton()->isEnabled());
    page.largestFilesButton()->click();
    ASSERT_TRUE(page.isShowingFiles());
    const QList<UsageItem>& largest = page.fileList()->files();
    ASSERT_EQ(largest.size(), 11);
    EXPECT_EQ(largest[0].path, tree.path("Projects/velloru/build/objects"));
    EXPECT_EQ(largest[1].path, tree.path("Pictures/Trip.photoslibrary/originals/a.heic"));
    for (qsizetype i = 1; i < largest.size(); ++i)
        EXPECT_GE(largest[i - 1].bytes, largest[i].bytes);
    for (const QSize size : screenshotSizes()) {
        resizeAndLayOut(page, size);
        EXPECT_TRUE(elidedCells(*page.fileList()->tree()).isEmpty())
            << elidedCells(*page.fileList()->tree()).join(u'\n').toStdString();
    }
    saveScreenshots(page, QStringLiteral("usage-largest-files"));

    // A second walk of the same folder fills its bar against what the first one found.
    page.measure(tree.path());
    EXPECT_EQ(page.model().expectedBytes(), duBytes(tree.path()));
    waitUntilMeasured(page);
}

TEST(UsagePage, NothingOutsideTheHomeFolderIsOfferedForTheTrash)
{
    QTemporaryDir outside(QStringLiteral("/tmp/velloru-outside-XXXXXX"));
    ASSERT_TRUE(outside.isValid());
    writeFileOfSize(outside.filePath(QStringLiteral("local/lib/big.so")), 600'000);
    FixtureTree settingsFolder;
    QSettings defaults(settingsFolder.path("settings.ini"), QSettings::IniFormat);
    QStringList trashed;
    UsagePage page(defaults, [&](const QString& path) -> TrashAnswer {
        trashed.append(path);
        return [] { return std::optional<QString>(); };
    });
    page.resize(900, 600);
    page.show();
    page.measure(outside.path());
    waitUntilMeasured(page);

    UsageChart& chart = *page.currentChart();
    chart.setSelectedIndex(indexNamed(chart, QStringLiteral("local")));
    ASSERT_GE(chart.selectedIndex(), 0);
    EXPECT_FALSE(page.findChild<QPushButton*>(QStringLiteral("usageTrash"))->isEnabled());
    ASSERT_TRUE(page.actionOutcome()->isVisible());
    EXPECT_TRUE(page.actionOutcome()->text().startsWith(outside.filePath(QStringLiteral("local"))))
        << page.actionOutcome()->text().toStdString();
    EXPECT_TRUE(page.actionOutcome()->text().contains(QStringLiteral("outside your home folder")));
    EXPECT_TRUE(clippedLabels(page).isEmpty()) << clippedLabels(page).join(u'\n').toStdString();
    saveScreenshots(page, QStringLiteral("usage-outside-home"));
    EXPECT_TRUE(trashed.isEmpty());
}
