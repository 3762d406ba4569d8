#include "ui/ActivityPage.h"
#include "common/StoragePaths.h"
#include "removal/AuditLog.h"

#include "UiTestSupport.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

TEST(ActivityPage, ListsNewestFirstAndClearsOnlyAfterConfirmation)
{
    QTemporaryDir folder;
    AuditLog log(folder.path());
    log.recordMoves(
        QStringLiteral("Smart Scan"), {{QStringLiteral("/home/u/.cache/old"), 2'000'000, QStringLiteral("/t/old")}});
    log.recordFailures(
        QStringLiteral("Duplicates"), {{QStringLiteral("/home/u/Pictures/new.jpg"), QStringLiteral("locked")}});

    ActivityPage page(log);
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
