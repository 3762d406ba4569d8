#include "AppTestSupport.h"

#include "apps/AppInventory.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

#include <atomic>
#include <semaphore>

namespace {

AppSources folderSources(const QString& folder)
{
    AppSources sources;
    sources.applicationFolders = {folder};
    return sources;
}

} // namespace

TEST(AppInventory, LookupsIgnoreCaseAndComeFromTheLastScan)
{
    FixtureTree tree;
    const QString folder = tree.makeFolder(QStringLiteral("applications"));
    tree.write(QStringLiteral("applications/org.mozilla.firefox.desktop"), appEntry("Firefox", "firefox %u"));
    AppInventory inventory([folder] { return folderSources(folder); });
    EXPECT_FALSE(inventory.isBundleIDInstalled(QStringLiteral("org.mozilla.firefox")));

    inventory.scan();
    EXPECT_TRUE(inventory.isLoading());
    ASSERT_TRUE(QTest::qWaitFor([&] { return inventory.hasScanned(); }, 10'000));
    EXPECT_FALSE(inventory.isLoading());
    EXPECT_TRUE(inventory.isBundleIDInstalled(QStringLiteral("Org.Mozilla.Firefox")));
    EXPECT_TRUE(inventory.isAppNameInstalled(QStringLiteral("firefox")));
    EXPECT_TRUE(inventory.isVendorKnown(QStringLiteral("Mozilla.org")));
    EXPECT_FALSE(inventory.isAppGroupClaimed(QStringLiteral("group.org.mozilla")));
    EXPECT_TRUE(inventory.knownExecutableNames().contains(QStringLiteral("firefox")));
}

TEST(AppInventory, ChangesDuringAScanMakeExactlyOneMoreScan)
{
    FixtureTree tree;
    const QString folder = tree.makeFolder(QStringLiteral("applications"));
    std::atomic<int> scans{0};
    std::binary_semaphore firstScanMayGoOn{0};
    AppInventory inventory([&, folder] {
        if (++scans == 1)
            firstScanMayGoOn.acquire();
        return folderSources(folder);
    });
    QSignalSpy published(&inventory, &AppInventory::scanned);

    inventory.scan();
    inventory.scan();
    inventory.scan();
    inventory.scan();
    EXPECT_TRUE(inventory.isLoading());
    ASSERT_TRUE(QTest::qWaitFor([&] { return scans.load() == 1; }, 10'000));
    firstScanMayGoOn.release();

    ASSERT_TRUE(QTest::qWaitFor([&] { return published.size() == 2; }, 10'000));
    QTest::qWait(300);
    EXPECT_EQ(published.size(), 2);
    EXPECT_EQ(scans.load(), 2);
    EXPECT_FALSE(inventory.isLoading());
}

TEST(AppInventory, MonitoringPicksUpNewAndRemovedEntries)
{
    FixtureTree tree;
    const QString folder = tree.makeFolder(QStringLiteral("applications"));
    tree.makeFolder(QStringLiteral("applications/wine"));
    const QString first = tree.write(QStringLiteral("applications/first.desktop"), appEntry("First", "first"));
    AppInventory inventory([folder] { return folderSources(folder); });
    inventory.startMonitoring();
    inventory.scan();
    ASSERT_TRUE(QTest::qWaitFor([&] { return inventory.hasScanned(); }, 10'000));

    tree.write(QStringLiteral("applications/wine/notepad.desktop"), appEntry("Notepad", "wine notepad.exe"));
    QFile::remove(first);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            return inventory.isBundleIDInstalled(QStringLiteral("wine-notepad"))
                && !inventory.isBundleIDInstalled(QStringLiteral("first"));
        },
        15'000));
}

TEST(AppInventory, AFolderThatNeverStopsChangingIsStillRescannedInBatches)
{
    FixtureTree tree;
    const QString folder = tree.makeFolder(QStringLiteral("applications"));
    AppInventory inventory([folder] { return folderSources(folder); });
    inventory.startMonitoring();
    inventory.scan();
    ASSERT_TRUE(QTest::qWaitFor([&] { return inventory.hasScanned(); }, 10'000));
    QSignalSpy published(&inventory, &AppInventory::scanned);

    // A download keeps creating and removing partial files every 200 ms, far more often than the latency.
    // An app entry written while it goes on is picked up without waiting for the folder to fall quiet.
    QElapsedTimer churning;
    churning.start();
    int round = 0;
    const auto churn = [&] {
        QFile::remove(tree.path(QStringLiteral("applications/partial-%1.tmp").arg(round)));
        ++round;
        tree.write(QStringLiteral("applications/partial-%1.tmp").arg(round), QByteArray::number(round));
        QTest::qWait(200);
    };
    while (churning.elapsed() < AppInventory::changeLatencyMs)
        churn();
    tree.write(QStringLiteral("applications/arrived.desktop"), appEntry("Arrived", "arrived"));
    while (!inventory.isBundleIDInstalled(QStringLiteral("arrived")) && churning.elapsed() < 20'000)
        churn();
    EXPECT_TRUE(inventory.isBundleIDInstalled(QStringLiteral("arrived")))
        << "no rescan in " << churning.elapsed() << " ms of changes every 200 ms";
    // One rescan per latency at most (plus the one a change after the quiet spell starts), never one per change.
    EXPECT_LE(published.size(), churning.elapsed() / AppInventory::changeLatencyMs + 2) << round << " changes";
}
