#include "ui/ActivityPage.h"
#include "removal/AuditLog.h"
#include "removal/TrashRecorder.h"
#include "removal/TrashRequests.h"
#include "removal/TrashWatcher.h"
#include "removal/Trasher.h"

#include "ui/widgets/OutcomeLine.h"

#include "TestSupport.h"
#include "UiTestSupport.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
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
    saveScreenshots(page, QStringLiteral("activity"));

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
    QSignalSpy shown(&page, &ActivityPage::recoverableShown);
    page.show();
    ASSERT_TRUE(shown.wait(5000));
    EXPECT_FALSE(page.putBackButton()->isEnabled()); // nothing selected

    // The user empties part of the Trash elsewhere: once the watcher sees it, that entry can't be put back,
    // and no longer reads as if it lay in the Trash.
    ASSERT_TRUE(QFile::remove(result.trashedURLs.value(emptied)));
    ASSERT_TRUE(shown.wait(5000));
    page.table()->selectRow(0); // newest first: emptied.txt
    EXPECT_FALSE(page.putBackButton()->isEnabled());
    const QModelIndex gone = page.table()->model()->index(0, 2);
    EXPECT_EQ(gone.data().toString(), QStringLiteral("No longer in the Trash"));
    EXPECT_TRUE(gone.data(Qt::ToolTipRole).toString().contains(QStringLiteral("emptied")));
    EXPECT_TRUE(sameIcon(gone.data(Qt::DecorationRole).value<QIcon>(), OutcomeLine::iconFor(OutcomeLine::Kind::note)));
    EXPECT_EQ(page.table()->model()->index(1, 2).data().toString(), AuditOutcome::movedToTrash);

    page.table()->selectRow(1);
    ASSERT_TRUE(page.putBackButton()->isEnabled());
    QTest::mouseClick(page.putBackButton(), Qt::LeftButton);
    EXPECT_EQ(readWholeFile(kept), "kept");
    EXPECT_EQ(log.entries()[0].outcome, AuditOutcome::recovered);
    EXPECT_FALSE(page.putBackButton()->isEnabled());
    EXPECT_EQ(page.putBackOutcome()->kind(), OutcomeLine::Kind::success);
}

TEST(ActivityPage, FailuresLookLikeFailuresAndLongRowsStayReadableAtBothSizes)
{
    QTemporaryDir folder;
    AuditLog log(folder.path());
    TrashWatcher watcher;
    const QString deepPath = QStringLiteral("/home/someone/.var/app/org.mozilla.firefox/cache/mozilla/firefox/"
                                            "abcdefgh.default-release/cache2/entries/0123456789ABCDEF");
    log.recordMoves(QStringLiteral("Smart Scan"), {{deepPath, 52'000'000, QStringLiteral("/t/entries")}});
    log.recordAction(QStringLiteral("Maintenance"), QStringLiteral("Optimize Thunderbird"),
        QStringLiteral("Failed: No Thunderbird database found — Thunderbird may not be set up on this computer."));
    log.recordAction(
        QStringLiteral("Maintenance"), QStringLiteral("Flush DNS Cache"), QStringLiteral("DNS cache flushed."));
    log.recordAction(
        QStringLiteral("Trash"), QStringLiteral("Empty Trash"), QStringLiteral("Emptied the Trash."), 3'000'000);

    ActivityPage page(log, watcher);
    page.show();
    QAbstractItemModel* model = page.table()->model();
    ASSERT_EQ(model->rowCount(), 4);
    // Newest first: Empty Trash, Flush DNS, the failed Thunderbird run, the move.
    EXPECT_EQ(model->index(0, 3).data().toString(), QStringLiteral("3.0 MB"));
    const QIcon failedIcon = model->index(2, 2).data(Qt::DecorationRole).value<QIcon>();
    const QIcon doneIcon = model->index(1, 2).data(Qt::DecorationRole).value<QIcon>();
    EXPECT_TRUE(sameIcon(failedIcon, OutcomeLine::iconFor(OutcomeLine::Kind::failure)));
    EXPECT_TRUE(sameIcon(doneIcon, OutcomeLine::iconFor(OutcomeLine::Kind::success)));
    EXPECT_FALSE(sameIcon(failedIcon, doneIcon));
    EXPECT_EQ(
        model->index(2, 2).data(Qt::ForegroundRole).value<QColor>(), OutcomeLine::colorFor(OutcomeLine::Kind::failure));

    for (const QSize size : screenshotSizes()) {
        resizeAndLayOut(page, size);
        const QHeaderView* columns = page.table()->horizontalHeader();
        // Every column stays in view, and the item keeps a real share of the width.
        EXPECT_LE(columns->length(), page.table()->viewport()->width() + 1);
        EXPECT_GE(columns->sectionSize(4), page.table()->viewport()->width() / 5);
        EXPECT_TRUE(elidedCells(*page.table()).isEmpty()) << elidedCells(*page.table()).join(u'\n').toStdString();
        EXPECT_TRUE(clippedLabels(page).isEmpty()) << clippedLabels(page).join(u'\n').toStdString();
    }
    saveScreenshots(page, QStringLiteral("activity-outcomes"));

    page.searchBox()->setText(QStringLiteral("thunderbird"));
    ASSERT_EQ(model->rowCount(), 1);
    EXPECT_EQ(model->index(0, 4).data().toString(), QStringLiteral("Optimize Thunderbird"));
    page.searchBox()->clear();
    EXPECT_EQ(model->rowCount(), 4);
}
