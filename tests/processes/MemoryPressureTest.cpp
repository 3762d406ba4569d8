#include "processes/MemoryPressure.h"
#include "platform/MemoryStatus.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

namespace {

// A /proc with the memory files given; a file left empty is not there.
struct FixtureProc {
    FixtureProc(const QByteArray& meminfo, const QByteArray& pressure)
    {
        if (!meminfo.isEmpty())
            tree.write(QStringLiteral("meminfo"), meminfo);
        if (!pressure.isEmpty())
            tree.write(QStringLiteral("pressure/memory"), pressure);
    }
    MemoryPressure assess() const
    {
        return MemoryPressures::assess(readMemoryInfo(tree.path()).value(), readMemoryStall(tree.path()));
    }
    FixtureTree tree;
};

const QByteArray roomy = "MemTotal:        8000000 kB\nMemFree:  1000000 kB\nMemAvailable:    6000000 kB\n"
                         "Buffers: 1000 kB\nCached:  2000000 kB\nSwapTotal: 2000000 kB\nSwapFree: 1500000 kB\n";
const QByteArray tight = "MemTotal: 8000000 kB\nMemAvailable: 800000 kB\nCached: 100000 kB\n";

QByteArray stalls(const char* some, const char* full)
{
    return QByteArray("some avg10=") + some + " avg60=0.00 avg300=0.00 total=12345\nfull avg10=" + full
        + " avg60=0.00 avg300=0.00 total=678\n";
}

} // namespace

TEST(MemoryPressure, StallsAndAvailableMemoryGiveTheLevel)
{
    const auto reading = readMemoryInfo(FixtureProc(roomy, {}).tree.path());
    ASSERT_TRUE(reading);
    EXPECT_EQ(reading->total, 8000000LL * 1024);
    EXPECT_EQ(usedMemory(*reading), 2000000LL * 1024);
    EXPECT_EQ(usedSwap(*reading), 500000LL * 1024);

    EXPECT_EQ(FixtureProc(roomy, stalls("0.00", "0.00")).assess().level, PressureLevel::normal);
    EXPECT_TRUE(FixtureProc(roomy, stalls("0.00", "0.00")).assess().fromStallFigures);
    EXPECT_EQ(FixtureProc(roomy, stalls("12.50", "0.20")).assess().level, PressureLevel::elevated);
    EXPECT_EQ(FixtureProc(roomy, stalls("45.00", "2.00")).assess().level, PressureLevel::critical);
    EXPECT_EQ(FixtureProc(roomy, stalls("20.00", "11.00")).assess().level, PressureLevel::critical);
    // Little memory left is at least elevated, even before anything waits.
    EXPECT_EQ(FixtureProc(tight, stalls("0.00", "0.00")).assess().level, PressureLevel::elevated);
}

TEST(MemoryPressure, WithoutPressureFiguresTheLevelComesFromMeminfoAlone)
{
    // Kernels before 4.20, or built without pressure stall information, have no /proc/pressure.
    const FixtureProc older(roomy, {});
    EXPECT_FALSE(readMemoryStall(older.tree.path()));
    const MemoryPressure roomyLevel = older.assess();
    EXPECT_EQ(roomyLevel.level, PressureLevel::normal);
    EXPECT_FALSE(roomyLevel.fromStallFigures);
    EXPECT_EQ(FixtureProc(tight, {}).assess().level, PressureLevel::elevated);
    EXPECT_EQ(
        FixtureProc("MemTotal: 8000000 kB\nMemAvailable: 100000 kB\n", {}).assess().level, PressureLevel::critical);

    // Kernels before 3.14 have no MemAvailable: free memory and the caches it could drop stand in.
    const auto oldest = readMemoryInfo(
        FixtureProc("MemTotal: 1000 kB\nMemFree: 100 kB\nBuffers: 50 kB\nCached: 200 kB\nSReclaimable: 25 kB\n", {})
            .tree.path());
    ASSERT_TRUE(oldest);
    EXPECT_EQ(oldest->available, 375 * 1024);

    EXPECT_FALSE(readMemoryInfo(FixtureProc("garbage\n", {}).tree.path()));
    EXPECT_FALSE(readMemoryInfo(FixtureTree().path()));
}

TEST(MemoryPressure, TheHistoryKeepsTheLastFiveMinutes)
{
    MemoryHistory history;
    const MemoryReading reading{1000, 400, 100, 0, 0};
    for (int second = 0; second <= 600; second += 2)
        history.add(second, reading, PressureLevel::normal);
    ASSERT_FALSE(history.points().isEmpty());
    EXPECT_EQ(history.points().first().at, 300);
    EXPECT_EQ(history.points().last().at, 600);
    EXPECT_EQ(history.points().last().used, 600);
}
