#include "ui/duplicates/DuplicatesPage.h"
#include "app/AppState.h"
#include "common/StoragePaths.h"
#include "duplicates/VaultTexts.h"
#include "ui/duplicates/DuplicateProgressView.h"
#include "ui/duplicates/DuplicateResultsView.h"
#include "ui/duplicates/DuplicateSetupView.h"
#include "ui/duplicates/FilePreview.h"
#include "ui/duplicates/VaultPanel.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/ProgressRow.h"
#include "ui/widgets/WrappedLabel.h"

#include "TestSupport.h"
#include "UiTestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>
#include <QTreeWidget>

namespace {

QByteArray bytesOf(int seed, int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        bytes[i] = char((i * 31 + seed * 7) ^ (i >> 8));
    return bytes;
}

// A tree with some sets to find: pictures, text and plain data, copies in deeper folders.
void writeSets(FixtureTree& tree, int extraSets)
{
    // Blue with noise in it, so the file is well over the smallest size a scan looks at.
    QImage picture(320, 200, QImage::Format_RGB32);
    quint32 noise = 1;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            noise = noise * 1664525u + 1013904223u;
            picture.setPixel(x, y, qRgb(40 + int(noise >> 28), 120 + int((noise >> 24) & 15), 200));
        }
    }
    picture.save(tree.path(QStringLiteral("Holiday.png")));
    const QByteArray png = readWholeFile(tree.path(QStringLiteral("Holiday.png")));
    tree.write(QStringLiteral("backup/photos/Holiday.png"), png);
    tree.write(QStringLiteral("old backup/photos/2019/Holiday copy.png"), png);
    const QByteArray notes = QByteArray("Shopping list\nmilk\nbread\n").repeated(300);
    tree.write(QStringLiteral("notes.txt"), notes);
    tree.write(QStringLiteral("backup/notes.txt"), notes);
    for (int set = 0; set < extraSets; ++set) {
        const QByteArray data = bytesOf(set, 5'000 + (set % 500) * 97);
        tree.write(QStringLiteral("data/%1.bin").arg(set), data);
        tree.write(QStringLiteral("backup/data/%1/copy %2.bin").arg(set % 30).arg(set), data);
    }
}

QTreeWidgetItem* memberNamed(QTreeWidget* tree, const QString& name)
{
    for (int top = 0; top < tree->topLevelItemCount(); ++top)
        for (int child = 0; child < tree->topLevelItem(top)->childCount(); ++child)
            if (tree->topLevelItem(top)->child(child)->text(0) == name)
                return tree->topLevelItem(top)->child(child);
    return nullptr;
}

// Saves the pictures at both sizes and checks that no label is clipped and no cell of `views` is cut short
// without its whole text in the tooltip.
void expectReadable(QWidget& window, const QString& name, const QList<QAbstractItemView*>& views)
{
    expectReadableAtBothSizes(window, name);
    for (const QSize size : screenshotSizes()) {
        resizeAndLayOut(window, size);
        for (QAbstractItemView* view : views)
            EXPECT_EQ(elidedCells(*view), QStringList()) << view->objectName().toStdString() << size.width();
    }
}

} // namespace

// A new user's round: find the duplicates in a folder, watch the scan, move the ticked copies to the
// vault, check them, put one back and empty the vault to the Trash.
TEST(DuplicatesPage, FindsMovesVerifiesPutsBackAndEmpties)
{
    FixtureTree tree;
    writeSets(tree, 400);
    AppState state;
    DuplicatesPage page(state.vault());
    page.resize(1440, 900);
    page.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&page));
    EXPECT_EQ(page.vaultPanel()->findChild<QWidget*>(QStringLiteral("vaultIntro"))->isVisible(), false);

    page.setupView()->setRoots({tree.path()});
    expectReadable(page, QStringLiteral("duplicates-setup"), {page.setupView()->rootList()});
    QTest::mouseClick(page.setupView()->scanButton(), Qt::LeftButton);
    ASSERT_EQ(page.scan().phase(), DuplicateScan::Phase::scanning);
    EXPECT_TRUE(page.progressView()->isVisible());
    EXPECT_TRUE(page.progressView()->progressRow()->cancelButton()->isVisible());
    ASSERT_TRUE(QTest::qWaitFor([&] { return page.scan().phase() == DuplicateScan::Phase::results; }, 60'000));
    EXPECT_EQ(page.progressView()->counterValue(QStringLiteral("SETS FOUND")), QStringLiteral("402"));

    // The sets, the keeper of the pictures marked, its copies ticked.
    DuplicateResultsView* results = page.resultsView();
    ASSERT_TRUE(results->isVisible());
    QTreeWidget* sets = results->tree();
    ASSERT_EQ(sets->topLevelItemCount(), 402);
    QTreeWidgetItem* keeper = memberNamed(sets, QStringLiteral("Holiday.png"));
    ASSERT_TRUE(keeper);
    EXPECT_TRUE(keeper->text(2).startsWith(QStringLiteral("Kept")));
    QTreeWidgetItem* copy = memberNamed(sets, QStringLiteral("Holiday copy.png"));
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->checkState(0), Qt::Checked);

    // Picking a picture previews it.
    sets->setCurrentItem(copy);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !results->preview()->isLoading(); }, 10'000));
    EXPECT_FALSE(results->preview()->picture()->pixmap().isNull());
    sets->setCurrentItem(memberNamed(sets, QStringLiteral("notes.txt")));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !results->preview()->isLoading(); }, 10'000));
    EXPECT_TRUE(results->preview()->text()->text().startsWith(QStringLiteral("Shopping list")));
    sets->setCurrentItem(copy);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !results->preview()->isLoading(); }, 10'000));
    expectReadable(page, QStringLiteral("duplicates-results"), {sets});

    // Unticking one copy keeps it where it is.
    const QString untickedPath = tree.path(QStringLiteral("backup/notes.txt"));
    QTreeWidgetItem* notesCopy = nullptr;
    for (int top = 0; top < sets->topLevelItemCount() && !notesCopy; ++top)
        for (int child = 0; child < sets->topLevelItem(top)->childCount(); ++child)
            if (sets->topLevelItem(top)->child(child)->toolTip(0).startsWith(untickedPath))
                notesCopy = sets->topLevelItem(top)->child(child);
    ASSERT_TRUE(notesCopy);
    notesCopy->setCheckState(0, Qt::Unchecked);

    QTest::mouseClick(results->moveButton(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return page.scan().phase() == DuplicateScan::Phase::done; }, 60'000));
    EXPECT_EQ(results->moveOutcome()->kind(), OutcomeLine::Kind::success);
    EXPECT_TRUE(results->moveOutcome()->text().startsWith(QStringLiteral("402 copies moved into the vault")))
        << results->moveOutcome()->text().toStdString();
    EXPECT_TRUE(QFileInfo::exists(untickedPath));
    EXPECT_FALSE(QFileInfo::exists(tree.path(QStringLiteral("old backup/photos/2019/Holiday copy.png"))));
    EXPECT_EQ(state.vault().entries().size(), 402);
    EXPECT_EQ(state.counts().count(Destination::duplicates), 402);
    EXPECT_EQ(page.tabs()->tabText(1), QStringLiteral("Vault (402)"));
    EXPECT_EQ(sets->topLevelItemCount(), 1); // only the set whose copy stayed unticked

    // The vault: check, put one back, empty.
    page.showVault();
    VaultPanel* vault = page.vaultPanel();
    QTest::mouseClick(vault->verifyButton(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !state.vault().isWorking(); }, 60'000));
    EXPECT_EQ(vault->verdict()->kind(), OutcomeLine::Kind::success);
    EXPECT_EQ(vault->verdict()->text(), QStringLiteral("All 402 copies checked — every kept copy is intact."));
    EXPECT_FALSE(vault->notice()->isVisible()); // the verdict says it once
    QTreeWidgetItem* held = nullptr;
    for (int child = 0; child < vault->tree()->topLevelItem(0)->childCount(); ++child)
        if (vault->tree()->topLevelItem(0)->child(child)->text(0) == QStringLiteral("Holiday copy.png"))
            held = vault->tree()->topLevelItem(0)->child(child);
    ASSERT_TRUE(held);
    EXPECT_TRUE(held->text(2).contains(QStringLiteral("is present and identical")));
    held->setSelected(true);
    expectReadable(page, QStringLiteral("duplicates-vault"), {vault->tree()});

    QTest::mouseClick(vault->putBackButton(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !state.vault().isWorking(); }, 60'000));
    EXPECT_TRUE(QFileInfo::exists(tree.path(QStringLiteral("old backup/photos/2019/Holiday copy.png"))));
    EXPECT_EQ(vault->notice()->text(), QStringLiteral("1 file is back where it came from."));
    EXPECT_EQ(state.vault().entries().size(), 401);

    answerNextMessageBox(QStringLiteral("Move to Trash"));
    QTest::mouseClick(vault->emptyButton(), Qt::LeftButton);
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return !state.vault().isWorking() && state.vault().entries().isEmpty(); }, 60'000));
    EXPECT_EQ(vault->notice()->text(), VaultTexts::emptyExplanation());
    const QString homeVault = StoragePaths::dataFolder() + QStringLiteral("/Duplicates Vault");
    EXPECT_FALSE(QFileInfo::exists(homeVault));
    EXPECT_EQ(page.tabs()->tabText(1), QStringLiteral("Vault"));
    EXPECT_EQ(state.counts().count(Destination::duplicates), 0);
    expectReadable(page, QStringLiteral("duplicates-vault-emptied"), {});

    // The tests that follow share this Trash and expect it as they left it.
    const QString trashed = state.vault().lastEmpty()->trashedURLs.value(homeVault);
    ASSERT_FALSE(trashed.isEmpty());
    EXPECT_TRUE(QDir(trashed).removeRecursively());
    EXPECT_TRUE(QFile::remove(QFileInfo(trashed).absolutePath() + QStringLiteral("/../info/")
        + QFileInfo(trashed).fileName() + QStringLiteral(".trashinfo")));
}

// At each size a scan is started, pictured a few samples in, and cancelled.
TEST(DuplicatesPage, CancelStopsTheScanAndGoesBackToTheFolders)
{
    FixtureTree tree;
    writeSets(tree, 400);
    // Sets of large sparse files: made at once, yet their comparison reads gigabytes, so Cancel always lands
    // while the scan still has work to do.
    for (int set = 0; set < 40; ++set) {
        for (const char* name : {"a.bin", "b.bin"}) {
            QFile file(tree.path(QStringLiteral("big/%1/%2").arg(set).arg(QLatin1String(name))));
            QDir().mkpath(QFileInfo(file).absolutePath());
            ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.resize((qint64(256) << 20) + set * 4096));
        }
    }
    AppState state;
    DuplicatesPage page(state.vault());
    page.show();
    page.setupView()->setRoots({tree.path()});
    for (const QSize size : screenshotSizes()) {
        resizeAndLayOut(page, size);
        QSignalSpy ticks(&page.scan(), &DuplicateScan::telemetryChanged);
        QTest::mouseClick(page.setupView()->scanButton(), Qt::LeftButton);
        ASSERT_EQ(page.scan().phase(), DuplicateScan::Phase::scanning);
        ASSERT_TRUE(QTest::qWaitFor(
            [&] { return ticks.size() >= 2 || page.scan().phase() != DuplicateScan::Phase::scanning; }, 10'000));
        ASSERT_EQ(page.scan().phase(), DuplicateScan::Phase::scanning) << "the scan ended before it was pictured";
        saveScreenshot(page, QStringLiteral("duplicates-progress-%1x%2").arg(size.width()).arg(size.height()));
        EXPECT_EQ(clippedLabels(page), QStringList()) << size.width();
        EXPECT_NE(page.progressView()->counterValue(QStringLiteral("FILES")), QStringLiteral("0"));

        ASSERT_EQ(page.scan().phase(), DuplicateScan::Phase::scanning) << "the scan ended before it was cancelled";
        QTest::mouseClick(page.progressView()->progressRow()->cancelButton(), Qt::LeftButton);
        ASSERT_TRUE(QTest::qWaitFor([&] { return page.scan().phase() != DuplicateScan::Phase::scanning; }, 60'000));
        EXPECT_EQ(page.scan().phase(), DuplicateScan::Phase::idle);
        EXPECT_TRUE(page.setupView()->isVisible());
        EXPECT_TRUE(page.scan().groups().isEmpty());
    }
}

TEST(DuplicatesPage, AnEmptyVaultAndAScanWithNothingFoundSayWhatToDo)
{
    FixtureTree tree;
    tree.write(QStringLiteral("only.bin"), bytesOf(1, 9'000));
    AppState state;
    DuplicatesPage page(state.vault());
    page.resize(900, 600);
    page.show();
    page.showVault();
    EXPECT_TRUE(page.vaultPanel()->findChild<QPushButton*>(QStringLiteral("vaultFindDuplicates"))->isVisible());
    page.tabs()->setCurrentIndex(0);
    page.setupView()->setRoots({tree.path()});
    QTest::mouseClick(page.setupView()->scanButton(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return page.scan().phase() == DuplicateScan::Phase::results; }, 60'000));
    EXPECT_TRUE(page.resultsView()->findChild<QPushButton*>(QStringLiteral("emptyChangeFolders"))->isVisible());
    expectReadable(page, QStringLiteral("duplicates-none-found"), {});
}
