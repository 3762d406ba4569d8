#include "ui/MaintenancePage.h"
#include "app/AppState.h"
#include "ui/MailCard.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/ProgressRow.h"

#include "TestSupport.h"
#include "UiTestSupport.h"

#include <gtest/gtest.h>

#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

namespace {

// The real helper on a socket of its own, taken as installed by every AppState made while it lives.
class StandInHelper : public HelperOnSocket {
public:
    explicit StandInHelper(const QByteArray& tasks)
        : HelperOnSocket(tasks)
    {
        qputenv("VELLORU_HELPER_SOCKET", socketPath().toUtf8());
    }
    ~StandInHelper() { qunsetenv("VELLORU_HELPER_SOCKET"); }
};

// Presses a task's button and waits until the task has answered; false when it never did.
bool runTask(MaintenancePage& page, const QString& task)
{
    QTest::mouseClick(page.buttonFor(task), Qt::LeftButton);
    return QTest::qWaitFor([&] { return page.buttonFor(task)->isEnabled(); }, 30'000);
}

// Clicks OK on the next message box and hands back what it said.
void readNextMessageBox(QString& text)
{
    QTimer::singleShot(0, [&text] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return readNextMessageBox(text);
        text = box->text();
        box->accept();
    });
}

} // namespace

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
    // Free space is shown once, on the card whose task it measures.
    QStringList freeSpaceLines;
    for (const QLabel* label : page.findChildren<QLabel*>())
        if (label->text().contains(QStringLiteral("free space"), Qt::CaseInsensitive) && label->isVisible()
            && label->objectName() != QStringLiteral("purgeableExplanation"))
            freeSpaceLines << label->text();
    EXPECT_EQ(freeSpaceLines.size(), 1) << freeSpaceLines.join(u'\n').toStdString();

    // The prompt has a Set Up button of its own.
    EXPECT_TRUE(page.helperPrompt()->findChild<QPushButton*>(QStringLiteral("helperSetUpButton"))->isVisible());

    // With no Thunderbird in this home the card says so and offers nothing that would only fail.
    auto* mail = page.findChild<MailCard*>();
    ASSERT_TRUE(mail);
    // Outside a sandbox nothing hides Thunderbird's folder, so the card asks for no access.
    EXPECT_FALSE(mail->findChild<QWidget*>(QStringLiteral("mailFullDiskAccess"))->isVisible());
    ASSERT_TRUE(QTest::qWaitFor([&] { return mail->result()->isVisible(); }, 10'000));
    EXPECT_FALSE(mail->optimizeButton()->isEnabled());
    EXPECT_TRUE(mail->result()->text().startsWith(QStringLiteral("Thunderbird isn’t set up in this home folder")));
    for (const QSize size : screenshotSizes()) {
        resizeAndLayOut(page, size);
        EXPECT_TRUE(clippedLabels(page).isEmpty()) << clippedLabels(page).join(u'\n').toStdString();
    }
    saveScreenshots(page, QStringLiteral("maintenance"));
}

TEST(MaintenancePage, ARunningTaskShowsItsStepsAndTimeWhileTheOthersWait)
{
    StandInHelper helper(R"({"flushDNS": [["sleep", "1"], ["true"]], "rebuildFontCaches": [["true"]]})");
    ASSERT_TRUE(helper.isListening()) << helper.output().toStdString();
    AppState state;
    MaintenancePage page(state);
    page.show();
    ASSERT_EQ(state.helper().state(), HelperManager::State::ready);

    QTest::mouseClick(page.buttonFor(QStringLiteral("flushDNS")), Qt::LeftButton);
    ProgressRow* progress = page.progressFor(QStringLiteral("flushDNS"));
    EXPECT_TRUE(progress->isVisible());
    EXPECT_TRUE(progress->elapsedText().endsWith(QStringLiteral("elapsed")));
    EXPECT_FALSE(page.buttonFor(QStringLiteral("rebuildFontCaches"))->isEnabled());
    // The first step's report makes the bar a measure of the whole run.
    ASSERT_TRUE(QTest::qWaitFor([&] { return progress->bar()->maximum() > 0; }, 10'000));
    EXPECT_EQ(progress->text(), QStringLiteral("Step 1 of 2"));
    saveScreenshots(page, QStringLiteral("maintenance-running"));

    ASSERT_TRUE(QTest::qWaitFor([&] { return !progress->isRunning(); }, 30'000));
    EXPECT_TRUE(progress->isHidden());
    EXPECT_EQ(page.resultFor(QStringLiteral("flushDNS"))->kind(), OutcomeLine::Kind::success);
    EXPECT_TRUE(page.buttonFor(QStringLiteral("rebuildFontCaches"))->isEnabled());
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
        page.resultFor(QStringLiteral("flushDNS"))->text(), QStringLiteral("The maintenance helper is unavailable."));
    EXPECT_EQ(page.resultFor(QStringLiteral("flushDNS"))->kind(), OutcomeLine::Kind::failure);
    state.startBackgroundServices();
    EXPECT_FALSE(state.helper().backgroundStopped());
}

TEST(MaintenancePage, ExplainsPurgeableSpaceAndTheApprovalStepInTheSystemsOwnWords)
{
    AppState state;
    MaintenancePage page(state);
    page.resize(800, 1200);
    page.show();

    auto* reclaim = page.findChild<QGroupBox*>(QStringLiteral("task-thinSnapshots"));
    ASSERT_TRUE(reclaim);
    auto* explanation = reclaim->findChild<QLabel*>(QStringLiteral("purgeableExplanation"));
    ASSERT_TRUE(explanation);
    EXPECT_TRUE(explanation->isVisible());
    EXPECT_EQ(explanation->text(),
        QStringLiteral("Purgeable is what the system estimates it could free under pressure — often filesystem "
                       "accounting rather than deletable files. Reclaiming it may return nothing, and the result will "
                       "say so."));
    // Only the words naming another system's parts are reworded; the rest stands as written.
    EXPECT_TRUE(reclaim->toolTip().endsWith(QStringLiteral(
        "Reports the space actually measured, which is often zero — purgeable is mostly an estimate, not deletable "
        "files.")))
        << reclaim->toolTip().toStdString();

    state.helper().setState(HelperManager::State::needsApproval);
    EXPECT_EQ(page.helperPrompt()->title(), QStringLiteral("One more step — approve the helper"));
    EXPECT_TRUE(page.helperPrompt()->findChildren<QLabel*>().first()->text().endsWith(
        QStringLiteral("The drive-mounting item is listed separately — that one being on doesn’t cover this. No "
                       "more prompts after that.")));
    EXPECT_EQ(page.buttonFor(QStringLiteral("thinSnapshots"))->text(), QStringLiteral("Approve"));
    saveScreenshot(page, QStringLiteral("maintenance-approve"));
}

TEST(MaintenancePage, AFailedRunStillShowsTheMeasuredChangeButLogsOnlyTheReason)
{
    StandInHelper helper(R"({"thinSnapshots": [["false"]], "flushDNS": [["false"]]})");
    ASSERT_TRUE(helper.isListening()) << helper.output().toStdString();
    AppState state;
    MaintenancePage page(state);
    page.show();
    ASSERT_EQ(state.helper().state(), HelperManager::State::ready);

    ASSERT_TRUE(runTask(page, QStringLiteral("thinSnapshots")));
    const QString measured = page.resultFor(QStringLiteral("thinSnapshots"))->text();
    EXPECT_TRUE(
        QRegularExpression(QStringLiteral("^false failed \\(exit status 1\\)\\. [0-9.]+ (bytes|kB|MB|GB|TB) back$"))
            .match(measured)
            .hasMatch())
        << measured.toStdString();
    ASSERT_FALSE(state.audit().entries().isEmpty());
    EXPECT_EQ(state.audit().entries().last().path, QStringLiteral("Reclaim Purgeable Space"));
    EXPECT_EQ(state.audit().entries().last().outcome, QStringLiteral("Failed: false failed (exit status 1)."));

    // A task that measures nothing shows the reason alone.
    ASSERT_TRUE(runTask(page, QStringLiteral("flushDNS")));
    EXPECT_EQ(page.resultFor(QStringLiteral("flushDNS"))->text(), QStringLiteral("false failed (exit status 1)."));
}

TEST(MailCard, InASandboxThatHidesTheHomeFolderItAsksForFullDiskAccessFirst)
{
    FixtureTree tree;
    tree.makeFolder(QStringLiteral("home/.var/app/us.ambertrell.Velloru"));
    const QString home = tree.path(QStringLiteral("home"));
    FullDiskAccess fullDisk(home, FullDiskAccess::Confinement::flatpak);
    AuditLog audit(tree.path(QStringLiteral("data")));
    MailCard card(audit, fullDisk);
    card.resize(600, 300);
    card.show();

    auto* prompt = card.findChild<QWidget*>(QStringLiteral("mailFullDiskAccess"));
    auto* optimize = card.findChild<QPushButton*>(QStringLiteral("mailOptimize"));
    ASSERT_TRUE(prompt && optimize);
    EXPECT_TRUE(prompt->isVisible());
    EXPECT_FALSE(optimize->isVisible());
    QStringList texts;
    for (const QLabel* label : prompt->findChildren<QLabel*>())
        texts << label->text();
    EXPECT_EQ(texts,
        (QStringList{QStringLiteral("Needs Full Disk Access"),
            QStringLiteral("Thunderbird’s search database sits in a sandbox-protected area. Grant Velloru Full Disk "
                           "Access to compact and reindex it here, then relaunch.")}));
    saveScreenshot(card, QStringLiteral("maintenance-mail-sandboxed"));

    QString shown;
    readNextMessageBox(shown);
    QTest::mouseClick(prompt->findChild<QPushButton*>(QStringLiteral("openFullDiskAccess")), Qt::LeftButton);
    EXPECT_TRUE(shown.contains(QStringLiteral("flatpak override --user --filesystem=home us.ambertrell.Velloru")))
        << shown.toStdString();

    // Once the sandbox shows the user's folders, the card offers the button.
    tree.makeFolder(QStringLiteral("home/Documents"));
    fullDisk.probe();
    EXPECT_FALSE(prompt->isVisible());
    EXPECT_TRUE(optimize->isVisible());
}
