#include "DuplicateFixtures.h"
#include "TestSupport.h"

#include "duplicates/FileInventory.h"
#include "duplicates/InventoryRules.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

TEST(FileInventory, ThreeHardLinksAreOneRecordWithTwoAliases)
{
    FixtureTree tree;
    const QString first = tree.write(QStringLiteral("a/one.bin"), patternBytes(5000, 1));
    tree.makeFolder(QStringLiteral("b/deeper"));
    ASSERT_EQ(::link(QFile::encodeName(first), QFile::encodeName(tree.path(QStringLiteral("b/two.bin")))), 0);
    ASSERT_EQ(::link(QFile::encodeName(first), QFile::encodeName(tree.path(QStringLiteral("b/deeper/three.bin")))), 0);

    const Inventory inventory = inventoryOf({tree.path()});
    ASSERT_EQ(inventory.records.size(), 1u);
    EXPECT_EQ(inventory.records[0].linkCount, 3u);
    EXPECT_EQ(inventory.stats.filesIndexed, 1);
    EXPECT_EQ(inventory.stats.bytesIndexed, 5000);
    ASSERT_EQ(inventory.hardlinkAliases.size(), 1u);
    const auto& aliases = inventory.hardlinkAliases.begin()->second;
    EXPECT_EQ(aliases.size(), 2u);
    // The first name found is the record; the other two are its aliases, whichever order the readers met them.
    QStringList all = {QFile::decodeName(QByteArray::fromStdString(inventory.path(inventory.records[0])))};
    for (const std::string& alias : aliases)
        all.append(QFile::decodeName(QByteArray::fromStdString(alias)));
    all.sort();
    EXPECT_EQ(all,
        QStringList({first, tree.path(QStringLiteral("b/deeper/three.bin")), tree.path(QStringLiteral("b/two.bin"))}));
}

TEST(FileInventory, RootsNamedTwiceOrThroughLinksAreReadOnce)
{
    FixtureTree tree;
    tree.write(QStringLiteral("docs/a.txt"), patternBytes(100, 1));
    tree.write(QStringLiteral("docs/sub/b.txt"), patternBytes(100, 2));
    ASSERT_TRUE(QFile::link(tree.path(QStringLiteral("docs")), tree.path(QStringLiteral("alias"))));
    ASSERT_TRUE(QFile::link(tree.path(QStringLiteral("docs/sub")), tree.path(QStringLiteral("docs/loop"))));

    const Inventory inventory = inventoryOf({tree.path(QStringLiteral("docs")), tree.path(QStringLiteral("docs")),
        tree.path(QStringLiteral("alias")) + QStringLiteral("/./")});
    EXPECT_EQ(recordedPaths(inventory),
        QStringList({tree.path(QStringLiteral("docs/a.txt")), tree.path(QStringLiteral("docs/sub/b.txt"))}));
    EXPECT_EQ(inventory.directories.size(), 2u);

    // A root inside another root is reached twice: the second time collapses.
    const Inventory nested = inventoryOf({tree.path(QStringLiteral("docs/sub")), tree.path(QStringLiteral("docs"))});
    EXPECT_EQ(nested.records.size(), 2u);
    EXPECT_EQ(nested.stats.aliasesCollapsed, 1);
}

TEST(FileInventory, SkipsLinksIgnoredFoldersPackagesAndSmallFiles)
{
    FixtureTree tree;
    tree.write(QStringLiteral("keep/big.bin"), patternBytes(4096, 1));
    tree.write(QStringLiteral("keep/small.bin"), patternBytes(4095, 2));
    tree.write(QStringLiteral("keep/.git/objects/x"), patternBytes(5000, 3));
    tree.write(QStringLiteral("deep/Backups.backupdb/x"), patternBytes(5000, 4));
    tree.write(QStringLiteral("deep/er/.DocumentRevisions-V100/x"), patternBytes(5000, 5));
    tree.write(QStringLiteral("Holiday.photoslibrary/originals/a.jpg"), patternBytes(5000, 6));
    tree.write(QStringLiteral("Tool.APP/Contents/bin"), patternBytes(5000, 7));
    ASSERT_TRUE(QFile::link(tree.path(QStringLiteral("keep/big.bin")), tree.path(QStringLiteral("keep/link.bin"))));
    ASSERT_TRUE(QFile::link(tree.path(QStringLiteral("nowhere")), tree.path(QStringLiteral("keep/broken"))));
    ASSERT_EQ(::mkfifo(QFile::encodeName(tree.path(QStringLiteral("keep/fifo"))), 0600), 0);

    const Inventory inventory = inventoryOf({tree.path()}, 4096);
    EXPECT_EQ(recordedPaths(inventory), QStringList({tree.path(QStringLiteral("keep/big.bin"))}));
    EXPECT_EQ(inventory.stats.packagesHalted, 2);
    EXPECT_EQ(inventory.stats.belowFloorSkipped, 1);
    EXPECT_EQ(inventory.stats.sizeHistogram[12], 1);
    EXPECT_EQ(inventory.stats.unreadableDirectories, 0);
}

TEST(FileInventory, ExclusionRules)
{
    using InventoryRules::isExcludedPath;
    const std::string home = "/home/ada";
    for (const char* path : {"/proc", "/proc/1", "/sys/kernel", "/dev", "/run/user/1000", "/usr/lib", "/usr/lib/x/y",
             "/usr/share/doc", "/home/ada/.cache", "/home/ada/.local/share/Trash", "/home/ada/.var/app/org.x",
             "/home/bob/.cache", "/media/usb/home/x/.local/share"})
        EXPECT_TRUE(isExcludedPath(path, home)) << path;
    for (const char* path :
        {"/home", "/home/ada", "/home/ada/Documents", "/home/ada/.cachet", "/tmp", "/var/tmp", "/mnt/disk",
            "/media/usb", "/srv/files", "/opt/app", "/usr/local/data", "/usr/library", "/procs", "/work/usr/lib"})
        EXPECT_FALSE(isExcludedPath(path, home)) << path;

    using InventoryRules::hasPackageComponent;
    EXPECT_TRUE(hasPackageComponent("/x/Photos.photoslibrary/a.jpg"));
    EXPECT_TRUE(hasPackageComponent("/x/Photos/talk.key"));
    EXPECT_TRUE(hasPackageComponent("Tool.APP"));
    EXPECT_FALSE(hasPackageComponent("/x/key/app/talk.txt"));
    EXPECT_FALSE(hasPackageComponent("/"));
}

TEST(FileInventory, SameDeviceFlagStopsAtAnotherFileSystem)
{
    if (!runningAsRoot())
        GTEST_SKIP() << "mounting a tmpfs needs root";
    FixtureTree tree;
    tree.write(QStringLiteral("local.bin"), patternBytes(100, 1));
    auto mount = TmpfsMount::mount(tree.path(QStringLiteral("other")), QStringLiteral("size=1m"));
    ASSERT_TRUE(mount);
    QFile out(tree.path(QStringLiteral("other/remote.bin")));
    ASSERT_TRUE(out.open(QIODevice::WriteOnly));
    out.write(patternBytes(100, 2));
    out.close();

    EXPECT_EQ(inventoryOf({tree.path()}, 1, true).records.size(), 1u);
    const Inventory both = inventoryOf({tree.path()}, 1, false);
    ASSERT_EQ(both.records.size(), 2u);
    EXPECT_NE(both.records[0].device, both.records[1].device);
}

TEST(FileInventory, UnreadableFolderIsCountedAndTheRestIsRead)
{
    FixtureTree tree;
    tree.write(QStringLiteral("open/a.bin"), patternBytes(100, 1));
    tree.write(QStringLiteral("closed/b.bin"), patternBytes(100, 2));
    ASSERT_EQ(::chmod(QFile::encodeName(tree.path(QStringLiteral("closed"))), 0), 0);
    {
        FileAccessChecksEnforced enforced;
        const Inventory inventory = inventoryOf({tree.path()});
        EXPECT_EQ(recordedPaths(inventory), QStringList({tree.path(QStringLiteral("open/a.bin"))}));
        EXPECT_EQ(inventory.stats.unreadableDirectories, 1);
    }
    ::chmod(QFile::encodeName(tree.path(QStringLiteral("closed"))), 0700);
}

TEST(FileInventory, NamesThatAreNotUtf8AreLeftOutWithTheirFolderContentsAndCounted)
{
    FixtureTree tree;
    tree.write(QStringLiteral("kept.bin"), patternBytes(100, 1));
    tree.write(QStringLiteral("good/also-kept.bin"), patternBytes(100, 2));
    const QByteArray root = QFile::encodeName(tree.path());
    ASSERT_TRUE(writeFileNamedBytes(root + "/bad\xff.bin", patternBytes(100, 1)));
    ASSERT_TRUE(writeFileNamedBytes(root + "/good/cut\xe2\x82.bin", patternBytes(100, 3)));
    ASSERT_TRUE(makeFolderNamedBytes(root + "/folder\xfe"));
    for (const char* name : {"/folder\xfe/one.bin", "/folder\xfe/two.bin"})
        ASSERT_TRUE(writeFileNamedBytes(root + name, patternBytes(100, 4)));
    // The replacement character itself is a valid name, and its file is recorded like any other.
    ASSERT_TRUE(writeFileNamedBytes(root + "/B\xef\xbf\xbd.bin", patternBytes(100, 5)));

    const Inventory inventory = inventoryOf({tree.path()});
    EXPECT_EQ(recordedPaths(inventory),
        QStringList({tree.path(QStringLiteral("B\uFFFD.bin")), tree.path(QStringLiteral("good/also-kept.bin")),
            tree.path(QStringLiteral("kept.bin"))}));
    EXPECT_EQ(inventory.stats.badNameFilesSkipped, 2);
    EXPECT_EQ(inventory.stats.badNameFoldersSkipped, 1);
}

TEST(FileInventory, CancelledBeforeStartReadsNothing)
{
    FixtureTree tree;
    tree.write(QStringLiteral("a/b.bin"), patternBytes(100, 1));
    InventoryOptions options;
    options.roots = {QFile::encodeName(tree.path()).toStdString()};
    const Inventory inventory = FileInventory::build(options, [] { return true; }, {});
    EXPECT_TRUE(inventory.records.empty());
    EXPECT_EQ(inventory.stats.directoriesRead, 0);
}
