#include "processes/ProcessSampling.h"
#include "platform/ProcessIdentity.h"
#include "platform/ProcessStats.h"

#include "ProcessTestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QThread>

#include <unistd.h>

namespace {

// The time the process has run on a CPU, from the scheduler's own account (nanoseconds in schedstat), which
// Velloru does not read: an independent witness for the CPU share.
std::optional<double> scheduledSeconds(qint64 pid)
{
    const QByteArray text = readWholeFile(QStringLiteral("/proc/%1/schedstat").arg(pid));
    bool ok = false;
    const double nanoseconds = text.split(' ').value(0).toDouble(&ok);
    return ok ? std::optional(nanoseconds / 1e9) : std::nullopt;
}

} // namespace

TEST(ProcessSampling, ReadsRealProcessesWhateverTheirNames)
{
    FixtureTree tree;
    // Spaces and parentheses in a name must not shift the fields after it; a name longer than the kernel's
    // 15 bytes is read whole from the program.
    const QString awkward = programCopy(tree, QStringLiteral("sleep"), QStringLiteral("sl (ee) p"));
    const QString longName = programCopy(tree, QStringLiteral("sleep"), QStringLiteral("velloru-sampling-long-name"));
    QProcess first;
    QProcess second;
    first.start(awkward, {QStringLiteral("60")});
    second.start(longName, {QStringLiteral("60")});
    ASSERT_TRUE(first.waitForStarted() && second.waitForStarted());

    ProcessSampling sampling;
    const ProcessSnapshot snapshot = sampling.sample({}, std::nullopt);
    const auto find = [&snapshot](qint64 pid) -> const RunningProcess* {
        for (const RunningProcess& process : snapshot.processes)
            if (process.id == pid)
                return &process;
        return nullptr;
    };
    const RunningProcess* child = find(first.processId());
    ASSERT_TRUE(child);
    EXPECT_EQ(child->name, QStringLiteral("sl (ee) p"));
    EXPECT_EQ(child->path, awkward);
    EXPECT_EQ(child->parentID, ::getpid());
    EXPECT_EQ(child->uid, ::getuid());
    EXPECT_EQ(child->startTicks, statField(first.processId(), 22).toULongLong());
    EXPECT_EQ(child->nice, 0);
    EXPECT_GT(child->memory, 0);
    EXPECT_TRUE(child->isResponding);
    EXPECT_FALSE(child->isApp);
    EXPECT_TRUE(child->figuresKnown);

    const RunningProcess* named = find(second.processId());
    ASSERT_TRUE(named);
    EXPECT_EQ(named->name, QStringLiteral("velloru-sampling-long-name"));

    const RunningProcess* self = find(::getpid());
    ASSERT_TRUE(self);
    EXPECT_EQ(self->identity(), ProcessIdentity::current());

    // Kernel threads have no program to quit and are never listed (kthreadd is process 2 on a normal system).
    if (readWholeFile(QStringLiteral("/proc/2/comm")).trimmed() == "kthreadd") {
        EXPECT_FALSE(find(2));
    }
    ASSERT_TRUE(snapshot.memory);
    EXPECT_GT(snapshot.memory->total, 0);

    // A stopped process does not respond.
    ::kill(pid_t(first.processId()), SIGSTOP);
    ASSERT_TRUE(eventually([&] { return statField(first.processId(), 3) == "T"; }));
    const auto stopped = sampled(sampling, first.processId());
    ASSERT_TRUE(stopped);
    EXPECT_FALSE(stopped->isResponding);
    ::kill(pid_t(first.processId()), SIGCONT);
}

TEST(ProcessSampling, ABusyChildUsesWhatTheSchedulerGaveItAndASleepingOneNothing)
{
    QProcess busy;
    QProcess idle;
    busy.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("while :; do :; done")});
    idle.start(QStringLiteral("sleep"), {QStringLiteral("60")});
    ASSERT_TRUE(busy.waitForStarted() && idle.waitForStarted());
    const qint64 pid = busy.processId();

    ProcessSampling sampling;
    sampling.sample({}, std::nullopt);
    const auto ranBefore = scheduledSeconds(pid);
    QElapsedTimer clock;
    clock.start();
    QThread::msleep(2000);
    const auto ranAfter = scheduledSeconds(pid);
    const double elapsed = double(clock.nsecsElapsed()) / 1e9;
    const ProcessSnapshot second = sampling.sample({}, std::nullopt);
    busy.kill();

    std::optional<double> busyShare;
    std::optional<double> idleShare;
    for (const RunningProcess& process : second.processes) {
        if (process.id == pid)
            busyShare = process.cpu;
        if (process.id == idle.processId())
            idleShare = process.cpu;
    }
    ASSERT_TRUE(busyShare && idleShare);
    EXPECT_LT(*idleShare, 1.0);
    if (!ranBefore || !ranAfter) {
        std::printf("No /proc/PID/schedstat on this kernel: checking the share against one core only.\n");
        EXPECT_GT(*busyShare, 50.0);
        return;
    }
    // 100% is one core kept busy. On a machine busy with other work the child gets less, and the scheduler
    // says how much.
    const double scheduled = (*ranAfter - *ranBefore) / elapsed * 100;
    std::printf("busy child: %.1f%% of one core sampled, %.1f%% scheduled\n", *busyShare, scheduled);
    EXPECT_NEAR(*busyShare, scheduled, 10.0);
    EXPECT_LE(*busyShare, 105.0);
}

TEST(ProcessSampling, AProcessTableWithEndedAndUnreadableEntriesGivesWhatCanBeRead)
{
    FixtureTree proc;
    const QByteArray line = "4242 (tab\tand ) paren) S 1 4242 4242 0 -1 4194560 900 0 0 0 150 50 0 0 20 5 1 0 "
                            "123456 10000000 250 18446744073709551615 1 1 0 0 0 0 0 4096 0 0 0 0 17 1 0 0 0 0 0\n";
    proc.write(QStringLiteral("4242/stat"), line);
    proc.makeFolder(QStringLiteral("4343")); // ended between the listing and the read
    proc.write(QStringLiteral("17/stat"), "not a stat line");
    proc.write(QStringLiteral("self/stat"), line);
    proc.write(QStringLiteral("meminfo"), "MemTotal: 1000 kB\nMemAvailable: 600 kB\nCached: 100 kB\n");

    ProcessSampling sampling(proc.path());
    const ProcessSnapshot snapshot = sampling.sample({}, std::nullopt);
    ASSERT_EQ(snapshot.processes.size(), 1);
    const RunningProcess& process = snapshot.processes.first();
    EXPECT_EQ(process.id, 4242);
    EXPECT_EQ(process.name, QStringLiteral("tab\tand ) paren"));
    EXPECT_EQ(process.nice, 5);
    EXPECT_EQ(process.startTicks, 123456u);
    EXPECT_EQ(process.memory, 250 * ::sysconf(_SC_PAGESIZE));
    EXPECT_EQ(process.uid, ::getuid()); // the owner of its folder
    ASSERT_TRUE(snapshot.memory);
    EXPECT_EQ(snapshot.memory->available, 600 * 1024);
    EXPECT_FALSE(snapshot.stall);
    EXPECT_FALSE(snapshot.systemProcessesHidden);
}
