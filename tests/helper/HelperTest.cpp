#include "helper/HelperManager.h"
#include "helper/HelperProtocol.h"
#include "helper/HelperTexts.h"
#include "helper/HelperTrash.h"
#include "helper/MaintenanceRunner.h"
#include "platform/TrashStore.h"
#include "removal/AuditLog.h"

#include "HelperDaemonFixture.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QTest>

using namespace std::chrono_literals;

TEST_F(HelperDaemonTest, AnswersVersionTasksAndRefusesPathsOutsideItsReach)
{
    std::optional<QString> version;
    helper->installedHelperVersion(
        5s, [&version](std::optional<QString> v) { version = v.value_or(QStringLiteral("none")); });
    while (!version)
        QTest::qWait(10);
    EXPECT_EQ(*version, HelperProtocol::version);

    EXPECT_TRUE(runTask(QStringLiteral("quick"), 5s).success);
    const TaskResult broken = runTask(QStringLiteral("broken"), 5s);
    EXPECT_FALSE(broken.success);
    EXPECT_EQ(broken.message, QStringLiteral("false failed (exit status 1)."));
    EXPECT_FALSE(runTask(QStringLiteral("nonsense"), 5s).success);

    const auto refused = std::get<QJsonObject>(
        callAndWait(HelperProtocol::Op::listChildren, {{QStringLiteral("folder"), QStringLiteral("/proc/self")}}));
    EXPECT_TRUE(refused.value(u"error").toString().contains(QStringLiteral("virtual file systems")));
    tree.write(QStringLiteral("data/a.bin"), QByteArray(1000, 'a'));
    const auto sizes = std::get<QJsonObject>(callAndWait(HelperProtocol::Op::sizesOfPaths,
        {{QStringLiteral("paths"),
            QJsonArray{
                tree.path(QStringLiteral("data")), QStringLiteral("/sys/kernel"), QStringLiteral("relative/path")}}}));
    EXPECT_EQ(sizes.value(u"sizes").toObject().value(tree.path(QStringLiteral("data"))).toInteger(), 1000);
    EXPECT_EQ(sizes.value(u"sizes").toObject().size(), 1);
    EXPECT_EQ(helper->connectionUsers(), 0);
    EXPECT_TRUE(daemon.readAll().contains("Velloru helper: request op=sizesOfPaths"));
}

TEST_F(HelperDaemonTest, SilenceBecomesNoAnswerAndALateReplyIsIgnored)
{
    EXPECT_EQ(runTask(QStringLiteral("hang"), 300ms).message, HelperTexts::noAnswer());

    int callbacks = 0;
    helper->run(QStringLiteral("slow"), 500ms, {}, [&callbacks](TaskResult result) {
        ++callbacks;
        EXPECT_EQ(result.message, HelperTexts::noAnswer());
    });
    QTest::qWait(2800); // the helper answers after two seconds, long after the limit
    EXPECT_EQ(callbacks, 1);
    EXPECT_TRUE(runTask(QStringLiteral("quick"), 5s).success); // the connection still serves
}

TEST_F(HelperDaemonTest, AMaintenanceRunIsRecordedInTheActivityLog)
{
    AuditLog log(tree.path(QStringLiteral("Velloru")));
    const MaintenanceTask task{QStringLiteral("quick"), QStringLiteral("Quick Task"), {}, {}, {}};
    std::optional<MaintenanceOutcome> outcome;
    runMaintenanceTask(*helper, log, task, {}, [&outcome](MaintenanceOutcome o) { outcome = o; });
    while (!outcome)
        QTest::qWait(10);
    EXPECT_TRUE(outcome->success);
    const MaintenanceTask broken{QStringLiteral("broken"), QStringLiteral("Broken Task"), {}, {}, {}};
    outcome.reset();
    runMaintenanceTask(*helper, log, broken, {}, [&outcome](MaintenanceOutcome o) { outcome = o; });
    while (!outcome)
        QTest::qWait(10);
    EXPECT_FALSE(outcome->success);

    ASSERT_EQ(log.entries().size(), 2);
    EXPECT_EQ(log.entries()[0].feature, QStringLiteral("Maintenance"));
    EXPECT_EQ(log.entries()[0].path, QStringLiteral("Quick Task"));
    EXPECT_EQ(log.entries()[0].subjectKind, AuditSubject::action);
    EXPECT_EQ(log.entries()[1].outcome, QStringLiteral("Failed: false failed (exit status 1)."));
}

TEST_F(HelperDaemonTest, MovesRootOwnedItemsIntoTheCallersTrashAndNothingOutsideItsReach)
{
    const QString userTrash = tree.makeFolder(QStringLiteral("user/Trash"));
    const QString file = tree.write(QStringLiteral("system/old.conf"), "root's");
    HelperTrash trash(
        socketPath, [] { return true; }, userTrash);
    const PrivilegedTrash::Outcome moved = trash.moveToTrash(file, 10s);
    ASSERT_TRUE(moved.moved) << moved.reason.toStdString();
    EXPECT_EQ(moved.trashedPath, userTrash + QStringLiteral("/files/old.conf"));
    EXPECT_TRUE(readWholeFile(userTrash + QStringLiteral("/info/old.conf.trashinfo"))
                    .contains("Path=" + QFile::encodeName(file)));

    const PrivilegedTrash::Outcome refused = trash.moveToTrash(QStringLiteral("/etc/velloru-test-not-here"), 10s);
    EXPECT_FALSE(refused.moved);
    EXPECT_TRUE(refused.reason.contains(QStringLiteral("outside the folders the helper may change")))
        << refused.reason.toStdString();
    const PrivilegedTrash::Outcome relative = trash.moveToTrash(QStringLiteral("system/x"), 10s);
    EXPECT_FALSE(relative.moved);
}

TEST_F(HelperDaemonTest, EmptiesTheTrashWithoutFollowingLinks)
{
    tree.write(QStringLiteral("elsewhere/keep.txt"), "keep");
    QDir().mkpath(homeTrashPath() + QStringLiteral("/files/folder"));
    QDir().mkpath(homeTrashPath() + QStringLiteral("/info"));
    QFile::link(tree.path(QStringLiteral("elsewhere")), homeTrashPath() + QStringLiteral("/files/link"));
    QFile one(homeTrashPath() + QStringLiteral("/files/folder/a.bin"));
    ASSERT_TRUE(one.open(QIODevice::WriteOnly));
    one.write(QByteArray(5000, 'a'));
    one.close();

    std::optional<TaskResult> result;
    helper->emptyTrash(10s, [&result](TaskResult r) { result = r; });
    while (!result)
        QTest::qWait(10);
    ASSERT_TRUE(result->success) << result->message.toStdString();
    EXPECT_TRUE(QDir(homeTrashPath() + QStringLiteral("/files")).isEmpty());
    EXPECT_EQ(readWholeFile(tree.path(QStringLiteral("elsewhere/keep.txt"))), "keep"); // the link was not followed
    EXPECT_GE(result->freedBytes, 5000);
}

TEST_F(HelperDaemonTest, ShutdownIsRefusedWhileAJobRuns)
{
    std::optional<TaskResult> slow;
    helper->run(QStringLiteral("slow"), 10s, {}, [&slow](TaskResult r) { slow = r; });
    QTest::qWait(200);
    std::optional<HelperManager::ShutdownOutcome> outcome;
    helper->shutdownHelper(5s, [&outcome](HelperManager::ShutdownOutcome o) { outcome = o; });
    while (!outcome)
        QTest::qWait(10);
    EXPECT_EQ(*outcome, HelperManager::ShutdownOutcome::refused);

    while (!slow)
        QTest::qWait(10);
    EXPECT_TRUE(slow->success);
    outcome.reset();
    helper->shutdownHelper(5s, [&outcome](HelperManager::ShutdownOutcome o) { outcome = o; });
    while (!outcome)
        QTest::qWait(10);
    EXPECT_EQ(*outcome, HelperManager::ShutdownOutcome::accepted);
    EXPECT_TRUE(daemon.state() == QProcess::NotRunning || daemon.waitForFinished(5000));
}

TEST_F(HelperDaemonTest, APeerOfAnotherUserIsRefused)
{
    if (!runningAsRoot())
        GTEST_SKIP() << "needs root to connect as another user";
    // A user the helper does not serve asks for the version and gets nothing back.
    EXPECT_FALSE(requestAs(4242, socketPath, HelperProtocol::Op::version, {})) << "the helper answered another user";
    QTest::qWait(100);
    EXPECT_TRUE(daemon.readAll().contains("Velloru helper: refused connection uid=4242"));
}

TEST(HelperManager, AnswersAtOnceWhenNotSetUpOrStopped)
{
    HelperManager helper(QStringLiteral("/nonexistent/helper.sock"));
    TaskResult result;
    helper.run(QStringLiteral("flushDNS"), 1s, {}, [&result](TaskResult r) { result = r; });
    EXPECT_EQ(result.message, HelperTexts::notSetUp());

    helper.setState(HelperManager::State::ready);
    helper.stopBackground();
    helper.run(QStringLiteral("flushDNS"), 1s, {}, [&result](TaskResult r) { result = r; });
    EXPECT_EQ(result.message, HelperTexts::unavailable());
}

TEST(HelperManager, AnErrorAfterAReplyIsIgnoredAndAnErrorBeforeOneEndsTheCall)
{
    FixtureTree tree;
    QLocalServer fake;
    ASSERT_TRUE(fake.listen(tree.path(QStringLiteral("fake.sock"))));
    // Answers the first request and hangs up at once; says nothing to the second and hangs up.
    int requests = 0;
    QObject::connect(&fake, &QLocalServer::newConnection, [&] {
        QLocalSocket* peer = fake.nextPendingConnection();
        QObject::connect(peer, &QLocalSocket::readyRead, [&, peer] {
            QByteArray buffer = peer->readAll();
            const auto request = HelperProtocol::takeMessage(buffer);
            if (!request.message)
                return;
            if (++requests == 1)
                peer->write(HelperProtocol::frame({{QStringLiteral("id"), request.message->value(u"id")},
                    {QStringLiteral("reply"), QJsonObject{{QStringLiteral("version"), QStringLiteral("9")}}}}));
            peer->flush();
            peer->disconnectFromServer();
        });
    });

    HelperManager helper(fake.fullServerName());
    helper.setState(HelperManager::State::ready);
    QStringList answers;
    helper.installedHelperVersion(
        5s, [&answers](std::optional<QString> v) { answers.append(v.value_or(QStringLiteral("none"))); });
    QTest::qWait(500);
    EXPECT_EQ(answers, QStringList{QStringLiteral("9")});

    std::optional<HelperManager::Reply> lost;
    helper.call(HelperProtocol::Op::version, {}, 5s, [&lost](HelperManager::Reply r) { lost = std::move(r); });
    for (int i = 0; i < 200 && !lost; ++i)
        QTest::qWait(10);
    ASSERT_TRUE(lost);
    ASSERT_TRUE(std::holds_alternative<QString>(*lost));
    EXPECT_TRUE(std::get<QString>(*lost).startsWith(QStringLiteral("Couldn’t reach the maintenance helper: ")));
    EXPECT_EQ(helper.connectionUsers(), 0);
}
