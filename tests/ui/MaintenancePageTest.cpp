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
