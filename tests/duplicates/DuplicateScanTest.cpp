#include "DuplicateFixtures.h"
#include "TestSupport.h"

#include "duplicates/DuplicateScan.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QSignalSpy>

namespace {

// A tree with enough folders and sets that several workers of every pool have work at once.
void writeBusyTree(FixtureTree& tree, int folders)
{
    for (int folder = 0; folder < folders; ++folder) {
        for (int file = 0; file < 8; ++file) {
            const int content = (folder * 8 + file) % 37; // many sets of two to five copies
            tree.write(QStringLiteral("f%1/sub%2/file%3.bin").arg(folder).arg(file % 3).arg(file),
                patternBytes(5000 + content * 1000, content));
        }
    }
}

bool waitForPhase(DuplicateScan& scan, DuplicateScan::Phase phase)
{
    QSignalSpy spy(&scan, &DuplicateScan::phaseChanged);
    while (scan.phase() != phase)
        if (!spy.wait(60'000))
            return false;
    return true;
}

} // namespace

TEST(DuplicateScan, RunsOnWorkersAndHandsOverResultsAndTelemetryOnce)
{
    FixtureTree tree;
    writeBusyTree(tree, 40);
    DuplicateScan scan;
    scan.setRoots({tree.path(), tree.path(QStringLiteral("f1"))});
    QList<DuplicateStage> stagesSeen;
    QObject::connect(&scan, &DuplicateScan::telemetryChanged, [&] {
        if (stagesSeen.isEmpty() || stagesSeen.last() != scan.telemetry().stage)
            stagesSeen.append(scan.telemetry().stage);
    });
    scan.start();
    EXPECT_EQ(scan.phase(), DuplicateScan::Phase::scanning);
    ASSERT_TRUE(waitForPhase(scan, DuplicateScan::Phase::results));

    EXPECT_EQ(scan.groups().size(), 37);
    EXPECT_EQ(scan.inventoryStats().filesIndexed, 320);
    const ScanTelemetry& telemetry = scan.telemetry();
    EXPECT_EQ(telemetry.stage, DuplicateStage::ready);
    EXPECT_EQ(telemetry.overallFraction, 1.0);
    EXPECT_EQ(telemetry.groupsConfirmed, 37);
    EXPECT_EQ(telemetry.firstBand, 12);
    std::int64_t reclaimable = 0;
    for (const DuplicateGroup& group : scan.groups())
        reclaimable += group.reclaimable();
    EXPECT_EQ(telemetry.reclaimableBytes, reclaimable);
    EXPECT_EQ(telemetry.discoveries.size(), 37u);
    EXPECT_EQ(stagesSeen.last(), DuplicateStage::ready);
    EXPECT_TRUE(std::is_sorted(stagesSeen.begin(), stagesSeen.end()));
    EXPECT_TRUE(scan.notScanned().isEmpty());

    // A second scan of the same files takes every sample from the hash cache.
    scan.start();
    ASSERT_TRUE(waitForPhase(scan, DuplicateScan::Phase::results));
    EXPECT_EQ(scan.groups().size(), 37);
    EXPECT_EQ(scan.engineStats().prehashBytesRead, 0);
    EXPECT_EQ(scan.engineStats().prunedByCache, scan.engineStats().candidatesAfterSize);
}

TEST(DuplicateScan, CancelStopsTheWorkersAndLeavesNoResults)
{
    FixtureTree tree;
    writeBusyTree(tree, 30);
    DuplicateScan scan;
    scan.setRoots({tree.path()});
    scan.start();
    scan.cancel();
    ASSERT_TRUE(waitForPhase(scan, DuplicateScan::Phase::idle));
    EXPECT_TRUE(scan.groups().isEmpty());

    // A scan can start again after a cancelled one, and a scan being destroyed mid-run stops cleanly.
    scan.start();
    ASSERT_TRUE(waitForPhase(scan, DuplicateScan::Phase::results));
    EXPECT_FALSE(scan.groups().isEmpty());
    auto dropped = std::make_unique<DuplicateScan>();
    dropped->setRoots({tree.path()});
    dropped->start();
    dropped.reset();
}

TEST(DuplicateScan, DefaultRootsAreTheUserFoldersThatExist)
{
    const QString home = QDir::homePath();
    for (const char* folder : {"Music", "Documents", "Developer", "Desktop"})
        QDir().mkpath(home + QLatin1Char('/') + QLatin1String(folder));
    EXPECT_EQ(DuplicateScan::defaultRoots(),
        QStringList({home + QStringLiteral("/Documents"), home + QStringLiteral("/Music"),
            home + QStringLiteral("/Developer"), home + QStringLiteral("/Desktop")}));
}
