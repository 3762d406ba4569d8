#include "ui/ActivityPage.h"
#include "removal/AuditLog.h"
#include "removal/TrashRecorder.h"
#include "removal/TrashRequests.h"
#include "removal/TrashWatcher.h"
#include "removal/Trasher.h"

#include "TestSupport.h"
#include "UiTestSupport.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QLabel>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

TEST(ActivityPage, ListsNewestFirstAndClearsOnlyAfterConfirmation)
{
    QTemporaryDir folder;
    AuditLog log(folder.path());
    TrashWatcher watcher;
    log.recordMoves(
        QStringLiteral("Smart Scan"), {{QStringLiteral("/home/u/.cache/old"), 2'000'000, QStringLiteral("/t/old")}});
    log.recordFailures(
        QStringLiteral("Duplicates"), {{QStringLiteral("/home/u/Pictures/new.jpg"), QStringLiteral("locked")}});

    ActivityPage page(log, watcher);
    page.resize(900, 400);
    page.show();
    QAbstractItemModel* model = page.table()->model();
    ASSERT_EQ(model->rowCount(), 2);
    EXPECT_EQ(model->index(0, 1).data().toString(), QStringLiteral("Duplicates"));
    EXPECT_EQ(model->index(0, 2).data().toString(), QStringLiteral("Failed"));
    EXPECT_EQ(model->index(1, 2).data().toString(), QStringLiteral("Moved to Trash"));
    EXPECT_EQ(model->index(1, 4).data().toString(), QStringLiteral("/home/u/.cache/old"));
    EXPECT_TRUE(page.findChild<QLabel*>(QStringLiteral("activityTotals"))->text().contains(QStringLiteral("2.0 MB")));
    saveScreenshot(page, QStringLiteral("activity"));

    // New entries show up at once.
    log.recordMoves(QStringLiteral("Smart Scan"), {{QStringLiteral("/newest"), 1, QStringLiteral("/t/n")}});
    EXPECT_EQ(model->rowCount(), 3);
    EXPECT_EQ(model->index(0, 4).data().toString(), QStringLiteral("/newest"));

    answerNextMessageBox(QStringLiteral("Cancel"));
    QTest::mouseClick(page.clearButton(), Qt::LeftButton);
    EXPECT_EQ(log.entries().size(), 3);

    answerNextMessageBox(QStringLiteral("Clear"));
    QTest::mouseClick(page.clearButton(), Qt::LeftButton);
    EXPECT_TRUE(log.entries().isEmpty());
    EXPECT_EQ(model->rowCount(), 0);
    EXPECT_FALSE(page.clearButton()->isEnabled());
}

TEST(ActivityPage, PutBackFollowsTheTrash)
{
    FixtureTree tree;
    const QString kept = tree.write(QStringLiteral("docs/kept.txt"), "kept");
    const QString emptied = tree.write(QStringLiteral("docs/emptied.txt"), "emptied");
    AuditLog log(tree.path(QStringLiteral("Velloru")));
    TrashWatcher watcher;
    TrashRecorder recorder(log.journal(), QStringLiteral("Trash"));
    const TrashResult result = Trasher().moveToTrash(TrashRequests::measured({kept, emptied}), &recorder);
    ASSERT_EQ(result.succeeded.size(), 2);
    log.record(recorder);
    watcher.start();

    ActivityPage page(log, watcher);
    page.show();
    EXPECT_FALSE(page.putBackButton()->isEnabled()); // nothing selected

    // The user empties part of the Trash elsewhere: once the watcher sees it, that entry can't be put back.
    QSignalSpy revisions(&watcher, &TrashWatcher::revisionChanged);
    ASSERT_TRUE(QFile::remove(result.trashedURLs.value(emptied)));
    ASSERT_TRUE(revisions.wait(5000));
    page.table()->selectRow(0); // newest first: emptied.txt
    EXPECT_FALSE(page.putBackButton()->isEnabled());

    page.table()->selectRow(1);
    ASSERT_TRUE(page.putBackButton()->isEnabled());
    QTest::mouseClick(page.putBackButton(), Qt::LeftButton);
    EXPECT_EQ(readWholeFile(kept), "kept");
    EXPECT_EQ(log.entries()[0].outcome, AuditOutcome::recovered);
    EXPECT_FALSE(page.putBackButton()->isEnabled());
}
