#include "processes/ProcessList.h"
#include "apps/AppCollector.h"
#include "helper/HelperManager.h"
#include "processes/ProcessTexts.h"
#include "removal/AuditLog.h"

#include "ProcessTestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QStandardPaths>

#include <csignal>
#include <sys/resource.h>

namespace {

// The process list as the window has it, with a helper that is not installed and a log of its own.
class ProcessListTest : public ::testing::Test {
protected:
    ProcessActionOutcome wait(const std::function<void(ProcessList::Done)>& start)
    {
        std::optional<ProcessActionOutcome> outcome;
        start([&outcome](ProcessActionOutcome answer) { outcome = answer; });
        for (int i = 0; i < 1500 && !outcome; ++i)
            QTest::qWait(10);
        return outcome.value_or(ProcessActionOutcome{false, QStringLiteral("no answer"), false});
    }

    QString lastOutcome() const { return log.entries().isEmpty() ? QString() : log.entries().last().outcome; }
    QString lastSubject() const { return log.entries().isEmpty() ? QString() : log.entries().last().path; }

    FixtureTree tree;
    HelperManager helper{tree.path(QStringLiteral("no-helper.sock"))};
    AuditLog log{tree.path(QStringLiteral("Velloru"))};
    ProcessList list{helper, log};
    ProcessSampling sampling;
};

} // namespace

TEST_F(ProcessListTest, LowAndNormalPrioritiesAreReadBackFromTheKernel)
{
    QProcess child;
    child.start(QStringLiteral("sleep"), {QStringLiteral("60")});
    ASSERT_TRUE(child.waitForStarted());
    const auto process = sampled(sampling, child.processId());
    ASSERT_TRUE(process);

    const ProcessActionOutcome low
        = wait([&](auto done) { list.setPriority(ProcessTarget::process(*process), PriorityBand::low, done); });
    EXPECT_TRUE(low.success) << low.sentence.toStdString();
    EXPECT_EQ(statField(child.processId(), 19), "10");
    EXPECT_EQ(log.entries().last().feature, ProcessTexts::feature);
    EXPECT_EQ(lastSubject(), QStringLiteral("Set sleep (process %1) to Low priority (nice 10)").arg(child.processId()));
    EXPECT_EQ(lastOutcome(), QStringLiteral("Done"));

    if (runningAsRoot()) { // going back up needs the right to raise priorities
        EXPECT_TRUE(wait([&](auto done) {
            list.setPriority(ProcessTarget::process(*process), PriorityBand::normal, done);
        }).success);
        EXPECT_EQ(statField(child.processId(), 19), "0");
    }
}

TEST_F(ProcessListTest, ProcessesZeroAndOneAreRefusedWithoutASystemCall)
{
    // Process 0 means "my own process group" to kill and "myself" to setpriority: had either call been made,
    // the continue signal would have succeeded and this test's own priority would have changed.
    RunningProcess zero;
    zero.id = 0;
    zero.name = QStringLiteral("process 0");
    zero.figuresKnown = false;
    const int niceBefore = ::getpriority(PRIO_PROCESS, 0);
    EXPECT_EQ(ProcessCalls::signal(zero, SIGCONT).failure, ProcessTexts::cannotSignal());
    EXPECT_EQ(ProcessCalls::setPriority(zero, PriorityBand::low).failure, ProcessTexts::cannotReprioritise());
    EXPECT_EQ(::getpriority(PRIO_PROCESS, 0), niceBefore);

    RunningProcess init = zero;
    init.id = 1;
    const ProcessActionOutcome quit = wait([&](auto done) { list.forceQuit(ProcessTarget::process(init), done); });
    EXPECT_FALSE(quit.success);
    EXPECT_EQ(quit.sentence, QStringLiteral("That process can't be signalled."));
    EXPECT_EQ(lastOutcome(), QStringLiteral("Failed: That process can't be signalled."));
    EXPECT_EQ(
        wait([&](auto done) { list.setPriority(ProcessTarget::process(init), PriorityBand::high, done); }).sentence,
        QStringLiteral("That process can't be reprioritised."));
}

TEST_F(ProcessListTest, AProcessThatEndedOrWhoseNumberWasReusedIsHandledAndNeverTouched)
{
    QProcess child;
    child.start(QStringLiteral("sleep"), {QStringLiteral("60")});
    ASSERT_TRUE(child.waitForStarted());
    const auto process = sampled(sampling, child.processId());
    ASSERT_TRUE(process);

    // The same number, but a process that started at another time: the listed one has gone.
    RunningProcess earlier = *process;
    earlier.startTicks -= 1;
    const ProcessActionOutcome reused = wait([&](auto done) { list.forceQuit(ProcessTarget::process(earlier), done); });
    EXPECT_TRUE(reused.success);
    EXPECT_TRUE(reused.alreadyEnded);
    EXPECT_EQ(child.state(), QProcess::Running);
    EXPECT_EQ(lastOutcome(), QStringLiteral("Had already ended"));

    child.kill();
    ASSERT_TRUE(child.waitForFinished());
    const ProcessActionOutcome ended = wait([&](auto done) { list.quit(ProcessTarget::process(*process), done); });
    EXPECT_TRUE(ended.success);
    EXPECT_TRUE(ended.alreadyEnded);
    EXPECT_TRUE(
        wait([&](auto done) { list.setPriority(ProcessTarget::process(*process), PriorityBand::low, done); }).success);
}

TEST_F(ProcessListTest, AnAppThatIgnoresTheQuitRequestRefusesAndForceQuitEndsIt)
{
    // Two installed apps, each a copy of the shell: one quits when asked, the other ignores the request.
    FixtureTree bin;
    const QString stubborn = programCopy(bin, QStringLiteral("dash"), QStringLiteral("velloru-stubborn-editor"));
    const QString willing = programCopy(bin, QStringLiteral("dash"), QStringLiteral("velloru-willing-editor"));
    const QString applications
        = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/applications/");
    QDir().mkpath(applications);
    for (const auto& [file, name, program] : {std::tuple{"stubborn.desktop", "Stubborn Editor", stubborn},
             std::tuple{"willing.desktop", "Willing Editor", willing}}) {
        QFile entry(applications + QString::fromUtf8(file));
        ASSERT_TRUE(entry.open(QIODevice::WriteOnly));
        entry.write(
            "[Desktop Entry]\nType=Application\nName=" + QByteArray(name) + "\nExec=" + program.toUtf8() + "\n");
    }
    const QList<InstalledApp> apps = collectInstalledApps(AppSources::forThisSystem());

    // Each waits on its input, which the test holds open; the stubborn one ignores signal 15.
    QProcess stubbornApp;
    QProcess willingApp;
    stubbornApp.start(stubborn, {QStringLiteral("-c"), QStringLiteral("trap '' TERM; read line")});
    willingApp.start(willing, {QStringLiteral("-c"), QStringLiteral("read line")});
    ASSERT_TRUE(stubbornApp.waitForStarted() && willingApp.waitForStarted());
    QTest::qWait(200); // until the trap is set

    const ProcessSnapshot snapshot = sampling.sample(apps, std::nullopt);
    std::optional<ProcessTarget> stubbornTarget;
    std::optional<ProcessTarget> willingTarget;
    for (const ProcessGroup& group : groupProcesses(snapshot.processes)) {
        if (group.name == QLatin1String("Stubborn Editor"))
            stubbornTarget = ProcessTarget::group(group);
        if (group.name == QLatin1String("Willing Editor"))
            willingTarget = ProcessTarget::group(group);
    }
    ASSERT_TRUE(stubbornTarget && willingTarget) << "the apps were not matched to their processes";
    EXPECT_TRUE(stubbornTarget->lead.isApp);
    EXPECT_TRUE(stubbornTarget->lead.isRegularApp);
    EXPECT_EQ(stubbornTarget->lead.id, stubbornApp.processId());

    const ProcessActionOutcome quit = wait([&](auto done) { list.quit(*willingTarget, done); });
    EXPECT_TRUE(quit.success) << quit.sentence.toStdString();
    EXPECT_TRUE(willingApp.state() == QProcess::NotRunning || willingApp.waitForFinished(1000));

    const ProcessActionOutcome refused = wait([&](auto done) { list.quit(*stubbornTarget, done); });
    EXPECT_FALSE(refused.success);
    EXPECT_EQ(refused.sentence, QStringLiteral("Stubborn Editor refused to quit."));
    EXPECT_EQ(stubbornApp.state(), QProcess::Running);
    EXPECT_EQ(lastOutcome(), QStringLiteral("Failed: Stubborn Editor refused to quit."));

    const ProcessActionOutcome forced = wait([&](auto done) { list.forceQuit(*stubbornTarget, done); });
    EXPECT_TRUE(forced.success) << forced.sentence.toStdString();
    ASSERT_TRUE(stubbornApp.state() == QProcess::NotRunning || stubbornApp.waitForFinished(2000));
    EXPECT_EQ(stubbornApp.exitStatus(), QProcess::CrashExit);
    EXPECT_EQ(lastSubject(), QStringLiteral("Force quit Stubborn Editor (process %1)").arg(stubbornTarget->lead.id));
    EXPECT_EQ(lastOutcome(), QStringLiteral("Done"));
}
