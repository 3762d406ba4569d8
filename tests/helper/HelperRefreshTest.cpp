#include "helper/HelperRefresh.h"
#include "helper/HelperManager.h"
#include "helper/HelperStatus.h"
#include "helper/HelperTexts.h"
#include "helper/daemon/HelperServer.h"

#include "FakeHelperService.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QTest>
#include <QTimer>

#include <unistd.h>

using namespace std::chrono_literals;

namespace {

// Helpers of two versions take turns on one socket, the way systemd starts whichever program is installed.
class HelperRefreshTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        service.setStatus(HelperService::Status::enabled);
        helper.setState(HelperManager::State::ready);
        QObject::connect(&helper, &HelperManager::changed, [this] { statusTexts.append(helperStatusText(helper)); });
    }

    // A helper in this process reporting `version`; its task "slow" takes two seconds.
    void startDaemon(const QString& version)
    {
        const HelperOperations::TaskCommands tasks{
            {QStringLiteral("slow"), {{QStringLiteral("sleep"), QStringLiteral("2")}}}};
        daemon = std::make_unique<HelperServer>(QSet<unsigned>{unsigned(::getuid())},
            HelperOperations(PathPolicy(), tasks, 20s, tree.path(QStringLiteral("mnt"))), version);
        ASSERT_FALSE(daemon->listen(socketPath));
    }

    // The daemon exits once it agrees to, as the real one does.
    void exitOnShutdown()
    {
        QObject::connect(daemon.get(), &HelperServer::shutdownAccepted,
            [this] { QTimer::singleShot(0, [this] { daemon.reset(); }); });
    }

    HelperManager::SyncState refreshAndWait()
    {
        std::optional<HelperManager::SyncState> state;
        refresh.checkAndRefresh([&state](HelperManager::SyncState s) { state = s; });
        for (int i = 0; i < 1000 && !state; ++i)
            QTest::qWait(10);
        EXPECT_TRUE(state) << "the refresh never ended";
        return state.value_or(HelperManager::SyncState::unreachable);
    }

    static HelperRefresh::Timing quickTiming()
    {
        HelperRefresh::Timing timing;
        timing.afterRebind = 50ms;
        timing.afterFailedRebind = 50ms;
        timing.answer = 2s;
        return timing;
    }

    LogCapture log;
    FixtureTree tree;
    const QString socketPath = tree.path(QStringLiteral("helper.sock"));
    FakeHelperService service;
    HelperManager helper{socketPath};
    HelperRefresh refresh{helper, service, QStringLiteral("2.0"), quickTiming()};
    std::unique_ptr<HelperServer> daemon;
    QStringList statusTexts; // what the settings row showed, change by change
};

} // namespace

TEST_F(HelperRefreshTest, AHelperInStepIsLeftAsItIs)
{
    startDaemon(QStringLiteral("2.0"));
    EXPECT_EQ(refreshAndWait(), HelperManager::SyncState::inSync);
    EXPECT_EQ(service.registrations(), 0);
    EXPECT_FALSE(log.contains(QStringLiteral("refreshing")));
    EXPECT_EQ(helperStatusText(helper), HelperTexts::readyStatus());
}

TEST_F(HelperRefreshTest, AnUnreachableHelperIsRegisteredAgainInPlace)
{
    service.onRegister = [this] { startDaemon(QStringLiteral("2.0")); };
    EXPECT_EQ(refreshAndWait(), HelperManager::SyncState::inSync);
    EXPECT_TRUE(log.contains(QStringLiteral("Velloru helper: installed unreachable ≠ bundled 2.0 — refreshing")));
    EXPECT_TRUE(log.contains(QStringLiteral("Velloru helper: rebound in place to 2.0")));
    EXPECT_EQ(service.registrations(), 1);
    EXPECT_EQ(service.unregistrations(), 0);
    EXPECT_TRUE(statusTexts.contains(HelperTexts::updatingStatus()));
    EXPECT_EQ(statusTexts.last(), HelperTexts::readyStatus());
}

TEST_F(HelperRefreshTest, AStaleHelperBusyWithAJobIsLeftRunning)
{
    startDaemon(QStringLiteral("1.0"));
    std::optional<TaskResult> job;
    helper.run(QStringLiteral("slow"), 10s, {}, [&job](TaskResult result) { job = result; });
    QTest::qWait(200);

    EXPECT_EQ(refreshAndWait(), HelperManager::SyncState::stale);
    EXPECT_TRUE(log.contains(QStringLiteral("Velloru helper: installed 1.0 ≠ bundled 2.0 — refreshing")));
    EXPECT_TRUE(log.contains(QStringLiteral("Velloru helper: shutdown refused — work in flight")));
    EXPECT_TRUE(
        log.contains(QStringLiteral("Velloru helper: stale daemon is busy — leaving it until the job finishes")));
    EXPECT_EQ(service.unregistrations(), 0);
    EXPECT_FALSE(helper.isRefreshing());
    EXPECT_EQ(helperStatusText(helper),
        HelperTexts::staleStatus() + QStringLiteral(" Out of step: the helper is from Velloru 1.0."));

    while (!job)
        QTest::qWait(10);
    EXPECT_TRUE(job->success) << "the job was cut short by the refresh";
}

TEST_F(HelperRefreshTest, AStaleHelperIsReplacedAfterAFailedRebindAndAFailedAttempt)
{
    startDaemon(QStringLiteral("1.0"));
    exitOnShutdown();
    service.failNextRegistrations({{HelperService::serviceManagerDomain, 1, QStringLiteral("rebind refused")},
        {HelperService::serviceManagerDomain, 5, QStringLiteral("unit busy")}});
    service.onRegister = [this] { startDaemon(QStringLiteral("2.0")); };

    EXPECT_EQ(refreshAndWait(), HelperManager::SyncState::inSync);
    EXPECT_TRUE(
        log.contains(QStringLiteral("Velloru helper: rebind register() failed domain=systemd code=1 rebind refused")));
    EXPECT_TRUE(log.contains(QStringLiteral("Velloru helper: shutdown accepted")));
    EXPECT_TRUE(log.contains(
        QStringLiteral("Velloru helper: refresh register() attempt 1 failed domain=systemd code=5 unit busy")));
    EXPECT_TRUE(log.contains(QStringLiteral("Velloru helper: stale daemon replaced, now running 2.0")));
    EXPECT_EQ(service.registrations(), 3);
    EXPECT_EQ(service.unregistrations(), 1);
    EXPECT_EQ(helper.lastKnownInstalledVersion(), QStringLiteral("2.0"));
    EXPECT_EQ(helper.state(), HelperManager::State::ready);
}

TEST_F(HelperRefreshTest, ARefreshThatCannotBringTheNewHelperUpSaysSo)
{
    startDaemon(QStringLiteral("1.0"));
    exitOnShutdown();
    // Registering works, but no new helper ever answers.
    EXPECT_EQ(refreshAndWait(), HelperManager::SyncState::unreachable);
    EXPECT_TRUE(log.contains(QStringLiteral("Velloru helper: refresh did not converge (bundled 2.0)")));
    EXPECT_EQ(helperStatusText(helper), HelperTexts::unreachableStatus());

    // The service manager keeps the new registration switched off: the user must approve it.
    service.setStatusAfterRegistering(HelperService::Status::installedNotEnabled);
    service.setStatus(HelperService::Status::enabled);
    EXPECT_EQ(refreshAndWait(), HelperManager::SyncState::unreachable);
    EXPECT_TRUE(log.contains(QStringLiteral("Velloru helper: refresh left the service installed but not enabled")));
    EXPECT_EQ(helper.state(), HelperManager::State::needsApproval);
}

TEST(HelperServer, ReportsIdleOnlyOnceNobodyIsConnectedAndNothingRuns)
{
    FixtureTree tree;
    const HelperOperations::TaskCommands tasks{
        {QStringLiteral("slow"), {{QStringLiteral("sleep"), QStringLiteral("1")}}}};
    HelperServer server(QSet<unsigned>{unsigned(::getuid())},
        HelperOperations(PathPolicy(), tasks, 20s, tree.path(QStringLiteral("mnt"))), QStringLiteral("2.0"));
    ASSERT_FALSE(server.listen(tree.path(QStringLiteral("helper.sock"))));
    int idle = 0;
    QObject::connect(&server, &HelperServer::idle, [&idle] { ++idle; });
    server.reportIdleAfter(300ms);

    HelperManager helper(tree.path(QStringLiteral("helper.sock")));
    helper.setState(HelperManager::State::ready);
    std::optional<TaskResult> job;
    helper.run(QStringLiteral("slow"), 10s, {}, [&job](TaskResult result) { job = result; });
    QTest::qWait(700);
    EXPECT_EQ(idle, 0) << "reported idle while a job ran";
    while (!job)
        QTest::qWait(10);
    EXPECT_TRUE(job->success);
    for (int i = 0; i < 200 && idle == 0; ++i)
        QTest::qWait(10);
    EXPECT_EQ(idle, 1);
}
