#include "ui/ReviewList.h"
#include "scan/ScanTexts.h"
#include "ui/ReviewModel.h"

#include "UiTestSupport.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QTreeView>

namespace {

ScanItem item(const char* path, qint64 size, RiskLevel risk)
{
    return ScanItem::make(QUrl::fromLocalFile(QString::fromUtf8(path)), size, risk, QStringLiteral("reason"));
}

} // namespace

TEST(ReviewList, GroupBoxesAreTriStateAndTheTotalFollowsTheTicks)
{
    const QList<ScanGroup> groups{
        ScanGroup::make(QStringLiteral("App Caches"), QStringLiteral("archivebox"),
            {item("/c/a", 1'000'000, RiskLevel::safe), item("/c/b", 500'000, RiskLevel::caution)}),
        ScanGroup::make(QStringLiteral("Logs"), QStringLiteral("doc.text"),
            {item("/l/x", 2'000, RiskLevel::sensitive), item("/l/y", 3'000, RiskLevel::unproven)}),
    };
    ReviewList list;
    list.resize(800, 400);
    list.show();
    list.setResult(groups, ScanSelection({groups[0].items[0].id}));
    ReviewModel* model = list.model();

    const QModelIndex caches = model->index(0, ReviewModel::name);
    const QModelIndex logs = model->index(1, ReviewModel::name);
    EXPECT_EQ(caches.data(Qt::CheckStateRole).toInt(), Qt::PartiallyChecked);
    EXPECT_EQ(logs.data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
    EXPECT_EQ(model->index(1, ReviewModel::risk, caches).data().toString(), QStringLiteral("Review"));
    EXPECT_EQ(model->index(0, ReviewModel::risk, caches).data().toString(), QString());
    EXPECT_EQ(list.totalLabel()->text(), QStringLiteral("Selected: 1.0 MB of 1.5 MB"));
    saveScreenshot(list, QStringLiteral("review-list"));

    // A partly ticked group box ticks the rest; a full one empties the group.
    model->setData(caches, Qt::Checked, Qt::CheckStateRole);
    EXPECT_EQ(caches.data(Qt::CheckStateRole).toInt(), Qt::Checked);
    EXPECT_EQ(list.tickedItems().size(), 2);
    model->setData(caches, Qt::Unchecked, Qt::CheckStateRole);
    EXPECT_EQ(caches.data(Qt::CheckStateRole).toInt(), Qt::Unchecked);

    model->setData(model->index(1, ReviewModel::name, logs), Qt::Checked, Qt::CheckStateRole);
    EXPECT_EQ(logs.data(Qt::CheckStateRole).toInt(), Qt::PartiallyChecked);
    EXPECT_EQ(list.tickedItems().size(), 1);
    EXPECT_EQ(list.tickedItems().first().url.toLocalFile(), QStringLiteral("/l/y"));
    EXPECT_EQ(list.totalLabel()->text(), QStringLiteral("Selected: 3.0 kB of 1.5 MB"));
    EXPECT_FALSE(list.isShowingEmptyResult());
}

TEST(ReviewList, AnEmptyResultSaysTheComputerIsTidy)
{
    ReviewList list;
    list.resize(600, 300);
    list.show();
    list.setResult({}, {});
    EXPECT_TRUE(list.isShowingEmptyResult());
    auto* title = list.findChild<QLabel*>(QStringLiteral("emptyTitle"));
    ASSERT_TRUE(title);
    EXPECT_TRUE(title->isVisible());
    EXPECT_EQ(title->text(), ScanTexts::emptyTitle());
    saveScreenshot(list, QStringLiteral("review-empty"));
}
