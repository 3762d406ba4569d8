#include "ui/MaintenancePage.h"
#include "app/AppState.h"

#include "UiTestSupport.h"

#include <gtest/gtest.h>

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>

TEST(MaintenancePage, WithoutTheHelperEveryTaskOffersSetUpAndThunderbirdStillRuns)
{
    AppState state;
    MaintenancePage page(state);
    page.resize(800, 1000);
    page.show();
    ASSERT_NE(state.helper().state(), HelperManager::State::ready); // no helper on a test machine
    EXPECT_TRUE(page.helperPrompt()->isVisible());
    EXPECT_EQ(page.helperPrompt()->title(), QStringLiteral("Turn on one-click maintenance"));
    for (const MaintenanceTask& task : Maintenance::tasks())
        EXPECT_EQ(page.buttonFor(task.rawValue)->text(), QStringLiteral("Set Up")) << task.rawValue.toStdString();
    EXPECT_TRUE(page.findChild<QLabel*>(QStringLiteral("liveMeter"))->text().startsWith(QStringLiteral("Free space ")));

    const qsizetype entriesBefore = state.audit().entries().size();
    auto* mail = page.findChild<QGroupBox*>(QStringLiteral("task-mail"));
    ASSERT_TRUE(mail);
    QTest::mouseClick(mail->findChild<QPushButton*>(), Qt::LeftButton);
    for (int i = 0; i < 300 && state.audit().entries().size() == entriesBefore; ++i)
        QTest::qWait(20);
    ASSERT_EQ(state.audit().entries().size(), entriesBefore + 1);
    EXPECT_EQ(state.audit().entries().last().feature, QStringLiteral("Maintenance"));
    EXPECT_TRUE(
        state.audit().entries().last().outcome.startsWith(QStringLiteral("Failed: No Thunderbird database found")));
    saveScreenshot(page, QStringLiteral("maintenance"));
}

TEST(MaintenancePage, WhileTheHelperIsReplacedTheButtonsWait)
{
    AppState state;
    MaintenancePage page(state);
    page.resize(800, 1000);
    page.show();
    state.helper().setState(HelperManager::State::ready);
    EXPECT_FALSE(page.helperPrompt()->isVisible());
    EXPECT_EQ(page.buttonFor(QStringLiteral("flushDNS"))->text(), QStringLiteral("Run"));

    state.helper().setRefreshing(true);
    EXPECT_TRUE(page.helperPrompt()->isVisible());
    EXPECT_EQ(page.helperPrompt()->title(), QStringLiteral("Updating the helper…"));
    EXPECT_FALSE(page.buttonFor(QStringLiteral("flushDNS"))->isEnabled());
    saveScreenshot(page, QStringLiteral("maintenance-updating"));

    state.helper().setRefreshing(false);
    EXPECT_FALSE(page.helperPrompt()->isVisible());
    EXPECT_TRUE(page.buttonFor(QStringLiteral("flushDNS"))->isEnabled());
}

TEST(MaintenancePage, AfterBackgroundServicesStopATaskSaysTheHelperIsUnavailable)
{
    AppState state;
    MaintenancePage page(state);
    page.show();
    state.helper().setState(HelperManager::State::ready);
    bool stopped = false;
    state.stopBackgroundServices([&stopped](bool helperLeftBusy) {
        stopped = true;
        EXPECT_FALSE(helperLeftBusy);
    });
    for (int i = 0; i < 500 && !stopped; ++i)
        QTest::qWait(10);
    ASSERT_TRUE(stopped);
    QTest::mouseClick(page.buttonFor(QStringLiteral("flushDNS")), Qt::LeftButton);
    for (int i = 0; i < 100 && page.resultFor(QStringLiteral("flushDNS"))->isHidden(); ++i)
        QTest::qWait(10);
    EXPECT_EQ(
        page.resultFor(QStringLiteral("flushDNS"))->text(), QStringLiteral("⚠ The maintenance helper is unavailable."));
    state.startBackgroundServices();
    EXPECT_FALSE(state.helper().backgroundStopped());
}
