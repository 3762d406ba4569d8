#include "app/AppState.h"
#include "platform/TrashStore.h"
#include "ui/DashboardPage.h"
#include "ui/widgets/OutcomeLine.h"

#include "TestSupport.h"
#include "UiTestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

namespace {

// Shows the dashboard and waits until it has measured the Trash.
bool showMeasured(DashboardPage& page)
{
    QSignalSpy shown(&page, &DashboardPage::trashSummaryShown);
    page.show();
    return shown.wait(5000);
}

} // namespace

TEST(DashboardPage, EmptiesTheTrashThroughTheHelperAfterTheWarning)
{
    // With nothing in the Trash the helper is not what keeps Empty Trash off, so Set Up is not offered.
    {
        AppState state;
        DashboardPage page(state);
        ASSERT_TRUE(showMeasured(page));
        EXPECT_FALSE(page.emptyTrashButton()->isEnabled());
        auto* setUp = page.findChild<QPushButton*>(QStringLiteral("helperSetUpButton"));
        ASSERT_TRUE(setUp);
        EXPECT_FALSE(setUp->isVisible());
    }

    const QString trashed = homeTrashPath() + QStringLiteral("/files/old.txt");
    QDir().mkpath(homeTrashPath() + QStringLiteral("/info"));
    QDir().mkpath(homeTrashPath() + QStringLiteral("/files"));
    {
        QFile file(trashed);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("old");
    }

    // Without a helper the button stays off, says why beside it and offers to set the helper up there.
    {
        AppState state;
        DashboardPage page(state);
        ASSERT_TRUE(showMeasured(page));
        EXPECT_FALSE(page.emptyTrashButton()->isEnabled());
        EXPECT_TRUE(page.emptyTrashOutcome()->isVisible());
        EXPECT_TRUE(page.emptyTrashOutcome()->text().contains(QStringLiteral("helper")));
        auto* setUp = page.findChild<QPushButton*>(QStringLiteral("helperSetUpButton"));
        ASSERT_TRUE(setUp);
        EXPECT_TRUE(setUp->isVisible());
        for (const QSize size : screenshotSizes()) {
            resizeAndLayOut(page, size);
            EXPECT_TRUE(clippedLabels(page).isEmpty()) << clippedLabels(page).join(u'\n').toStdString();
        }
        saveScreenshots(page, QStringLiteral("dashboard-trash-without-helper"));
    }

    // With the real helper on a socket of its own, taken as installed.
    FixtureTree tree;
    const QString socket = tree.path(QStringLiteral("helper.sock"));
    QProcess daemon;
    daemon.start(QStringLiteral(VELLORU_HELPER_BINARY), {QStringLiteral("--socket"), socket});
    ASSERT_TRUE(daemon.waitForStarted());
    for (int i = 0; i < 100 && !QFileInfo::exists(socket); ++i)
        QTest::qWait(20);
    qputenv("VELLORU_HELPER_SOCKET", socket.toUtf8());

    {
        AppState state;
        DashboardPage page(state);
        page.resize(800, 600);
        ASSERT_TRUE(showMeasured(page));
        ASSERT_TRUE(page.emptyTrashButton()->isEnabled());
        EXPECT_FALSE(page.emptyTrashOutcome()->isVisible());
        saveScreenshots(page, QStringLiteral("dashboard-trash"));

        answerNextMessageBox(QStringLiteral("Cancel"));
        QTest::mouseClick(page.emptyTrashButton(), Qt::LeftButton);
        EXPECT_TRUE(QFileInfo::exists(trashed));

        answerNextMessageBox(QStringLiteral("Empty Trash"));
        QTest::mouseClick(page.emptyTrashButton(), Qt::LeftButton);
        for (int i = 0; i < 300 && QFileInfo::exists(trashed); ++i)
            QTest::qWait(20);
        EXPECT_FALSE(QFileInfo::exists(trashed));
        // The entry is written when the helper's answer arrives, which can be a moment after the file went.
        ASSERT_TRUE(QTest::qWaitFor([&] { return !state.audit().entries().isEmpty(); }, 10'000));
        EXPECT_EQ(state.audit().entries().last().path, QStringLiteral("Empty Trash"));
        EXPECT_EQ(state.audit().entries().last().outcome, QStringLiteral("The Trash is empty."));
        EXPECT_GT(state.audit().entries().last().size, 0); // the Activity row says how much went
        EXPECT_EQ(page.emptyTrashOutcome()->kind(), OutcomeLine::Kind::success);
    }
    qunsetenv("VELLORU_HELPER_SOCKET");
    daemon.kill();
    daemon.waitForFinished();
}
