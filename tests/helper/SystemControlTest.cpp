#include "helper/HelperManager.h"
#include "helper/HelperProtocol.h"
#include "helper/HelperTexts.h"

#include "HelperDaemonFixture.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Waits for the one answer of a call that reports a TaskResult.
template <typename Start> TaskResult answerOf(Start start)
{
    std::optional<TaskResult> result;
    start([&result](TaskResult r) { result = r; });
    for (int i = 0; i < 500 && !result; ++i)
        QTest::qWait(10);
    return result.value_or(TaskResult{false, QStringLiteral("no callback"), 0});
}

// The process's state letter and nice value, from /proc/<pid>/stat.
std::pair<char, int> stateAndNice(qint64 pid)
{
    const QByteArray stat = readWholeFile(QStringLiteral("/proc/%1/stat").arg(pid));
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    return {fields.value(0).isEmpty() ? '?' : fields.value(0).at(0), fields.value(16).toInt()};
}

} // namespace

TEST_F(HelperDaemonTest, SignalsAndReprioritisesAProcessAndRefusesTheOnesItMustNotTouch)
{
    QProcess sleeper;
    sleeper.start(QStringLiteral("sleep"), {QStringLiteral("60")});
    ASSERT_TRUE(sleeper.waitForStarted());
    const int pid = int(sleeper.processId());

    const TaskResult niced = answerOf([&](auto done) { helper->setProcessPriority(pid, 7, 5s, done); });
    EXPECT_TRUE(niced.success) << niced.message.toStdString();
    EXPECT_EQ(stateAndNice(pid).second, 7);

    EXPECT_TRUE(answerOf([&](auto done) { helper->signalProcess(pid, SIGSTOP, 5s, done); }).success);
    QTest::qWait(100);
    EXPECT_EQ(stateAndNice(pid).first, 'T');
    EXPECT_TRUE(answerOf([&](auto done) { helper->signalProcess(pid, SIGCONT, 5s, done); }).success);

    const TaskResult killed = answerOf([&](auto done) { helper->signalProcess(pid, SIGKILL, 5s, done); });
    EXPECT_EQ(killed.message, QStringLiteral("Sent SIGKILL to process %1.").arg(pid));
    EXPECT_TRUE(sleeper.state() == QProcess::NotRunning || sleeper.waitForFinished(5000));
    EXPECT_EQ(sleeper.exitStatus(), QProcess::CrashExit);
    const TaskResult gone = answerOf([&](auto done) { helper->signalProcess(pid, SIGTERM, 5s, done); });
    EXPECT_EQ(gone.message, QStringLiteral("Process %1 has already ended.").arg(pid));

    EXPECT_FALSE(answerOf([&](auto done) { helper->signalProcess(1, SIGKILL, 5s, done); }).success);
    EXPECT_FALSE(
        answerOf([&](auto done) { helper->signalProcess(int(daemon.processId()), SIGTERM, 5s, done); }).success);
    EXPECT_EQ(answerOf([&](auto done) { helper->signalProcess(pid, SIGSEGV, 5s, done); }).message,
        QStringLiteral("Velloru’s helper doesn’t send signal %1.").arg(SIGSEGV));
    EXPECT_FALSE(answerOf([&](auto done) { helper->setProcessPriority(pid, 40, 5s, done); }).success);
    EXPECT_EQ(daemon.state(), QProcess::Running);
}

TEST_F(HelperDaemonTest, ReadsTheMemoryOfEveryProcess)
{
    std::optional<std::optional<QList<ProcessMemory>>> answer;
    helper->systemProcessInfo(5s, [&answer](std::optional<QList<ProcessMemory>> processes) { answer = processes; });
    while (!answer)
        QTest::qWait(10);
    ASSERT_TRUE(*answer);
    const auto self = std::find_if((*answer)->cbegin(), (*answer)->cend(),
        [](const ProcessMemory& process) { return process.pid == int(::getpid()); });
    ASSERT_NE(self, (*answer)->cend());
    EXPECT_EQ(self->uid, ::getuid());
    EXPECT_EQ(self->name, QStringLiteral("helper_tests"));
    EXPECT_GT(self->residentBytes, 1'000'000);
    EXPECT_GT(self->proportionalBytes, 0);
}

TEST_F(HelperDaemonTest, SwitchesSystemUnitsButNeverItsOwnOrOnesTheSystemNeeds)
{
    const TaskResult on
        = answerOf([&](auto done) { helper->setUnitEnabled(QStringLiteral("cups.service"), true, 5s, done); });
    EXPECT_TRUE(on.success) << on.message.toStdString();
    EXPECT_EQ(on.message, QStringLiteral("cups.service is switched on."));
    EXPECT_TRUE(
        answerOf([&](auto done) { helper->setUnitEnabled(QStringLiteral("cups.socket"), false, 5s, done); }).success);

    for (const QString& refused : {QStringLiteral("velloru-helper.socket"), QStringLiteral("systemd-journald.service"),
             QStringLiteral("dbus.service"), QStringLiteral("../../evil.service"), QStringLiteral("a;reboot.service"),
             QStringLiteral("-f.service"), QStringLiteral("cups")})
        EXPECT_FALSE(answerOf([&](auto done) { helper->setUnitEnabled(refused, false, 5s, done); }).success)
            << refused.toStdString();
    EXPECT_EQ(readWholeFile(tree.path(QStringLiteral("systemctl.log"))),
        "enable --now cups.service\ndisable --now cups.socket\n");
}

TEST_F(HelperDaemonTest, CreatesAMountPointOwnedByTheCallerOnce)
{
    const auto create = [this](const QString& name, unsigned uid) {
        std::optional<std::optional<QString>> answer;
        helper->createMountpoint(name, uid, 5s, [&answer](std::optional<QString> path) { answer = path; });
        while (!answer)
            QTest::qWait(10);
        return *answer;
    };
    const auto path = create(QStringLiteral("Team Share"), ::getuid());
    ASSERT_TRUE(path);
    EXPECT_EQ(*path, tree.path(QStringLiteral("mnt/Team Share")));
    struct stat made { };
    ASSERT_EQ(::lstat(QFile::encodeName(*path).constData(), &made), 0);
    EXPECT_EQ(made.st_uid, ::getuid());
    EXPECT_EQ(made.st_mode & 0777, 0700u);
    EXPECT_EQ(create(QStringLiteral("Team Share"), ::getuid()), path); // an empty one of ours is taken again

    tree.write(QStringLiteral("mnt/Team Share/inside"), "mounted");
    EXPECT_FALSE(create(QStringLiteral("Team Share"), ::getuid())); // in use
    for (const QString& name :
        {QStringLiteral("../escape"), QStringLiteral(".hidden"), QString(), QStringLiteral("a/b")})
        EXPECT_FALSE(create(name, ::getuid())) << name.toStdString();
    EXPECT_FALSE(QFileInfo::exists(tree.path(QStringLiteral("escape"))));
    if (runningAsRoot()) {
        const auto forNobody = create(QStringLiteral("Nobody"), 65534);
        ASSERT_TRUE(forNobody);
        EXPECT_EQ(QFileInfo(*forNobody).ownerId(), 65534u);
    }
}

TEST_F(HelperDaemonTest, ATaskReportsEachStepAndDriveJobsSayTheyAreNotBuiltYet)
{
    QList<TaskStep> steps;
    const TaskResult result = answerOf([&](auto done) {
        helper->run(
            QStringLiteral("twoSteps"), 5s, [&steps](TaskStep step) { steps.append(step); }, done);
    });
    EXPECT_TRUE(result.success);
    ASSERT_EQ(steps.size(), 2);
    EXPECT_EQ(steps[0].step, QStringLiteral("true first"));
    EXPECT_EQ(steps[1].done, 1);
    EXPECT_EQ(steps[1].total, 2);

    const TaskResult flash = answerOf([&](auto done) {
        helper->flash(QStringLiteral("/tmp/image.iso"), QStringLiteral("sdz"), false, true, {}, done);
    });
    EXPECT_EQ(flash.message, QStringLiteral("“flashImage” isn’t available in this edition of Velloru yet."));
    EXPECT_FALSE(answerOf([&](auto done) { helper->firstAid(QStringLiteral("sdz"), false, 5s, {}, done); }).success);
    EXPECT_FALSE(answerOf([&](auto done) { helper->cancelFlash(5s, done); }).success);
}

TEST(HelperManager, EachKindOfCallAnswersWithItsOwnSentenceWhenTheHelperIsMissing)
{
    HelperManager helper(QStringLiteral("/nonexistent/helper.sock"));
    EXPECT_EQ(answerOf([&](auto done) { helper.signalProcess(4242, SIGTERM, 1s, done); }).message,
        QStringLiteral("That process belongs to the system — install the Maintenance Helper to manage it."));
    EXPECT_EQ(answerOf([&](auto done) {
        helper.cloneContents(QStringLiteral("a"), QStringLiteral("b"), true, {}, done);
    }).message,
        QStringLiteral("The helper isn’t set up yet."));
    EXPECT_EQ(answerOf([&](auto done) { helper.emptyTrash(1s, done); }).message, HelperTexts::notSetUp());

    helper.setState(HelperManager::State::ready);
    helper.stopBackground();
    EXPECT_EQ(answerOf([&](auto done) {
        helper.flash(QStringLiteral("i"), QStringLiteral("d"), false, false, {}, done);
    }).message,
        QStringLiteral("The helper is unavailable."));
    EXPECT_EQ(answerOf([&](auto done) { helper.firstAid(QStringLiteral("d"), true, 1s, {}, done); }).message,
        HelperTexts::unavailable());

    // Nothing listens: the connection is lost at once and the First Aid call says so in its own words.
    helper.startBackground();
    EXPECT_TRUE(answerOf([&](auto done) {
        helper.firstAid(QStringLiteral("d"), true, 1s, {}, done);
    }).message.startsWith(QStringLiteral("Couldn’t reach the maintenance helper: ")));
    EXPECT_TRUE(answerOf([&](auto done) {
        helper.clone(QStringLiteral("a"), QStringLiteral("b"), false, false, {}, done);
    }).message.startsWith(QStringLiteral("Lost contact with the helper: ")));
}
