#include "duplicates/DuplicateRules.h"
#include "duplicates/DuplicateTexts.h"
#include "duplicates/EngineStats.h"
#include "duplicates/FileRecord.h"
#include "duplicates/InventoryStats.h"
#include "duplicates/NotScannedSummary.h"

#include <gtest/gtest.h>

namespace {

const UserFolders folders{{"/home/ada/Documents", "/home/ada/Pictures", "/home/ada/Music", "/home/ada/Videos"},
    {"/home/ada/Downloads", "/home/ada/Desktop", "/home/ada/.local/share/Trash"}};

DuplicateFile file(const QString& path)
{
    DuplicateFile member;
    member.id = QUuid::createUuid();
    member.path = path;
    member.size = 1000;
    member.reclaimable = 1000;
    member.createdSec = 500;
    return member;
}

DuplicateGroup groupOf(QList<DuplicateFile> members)
{
    DuplicateGroup group;
    group.id = QUuid::createUuid();
    group.members = std::move(members);
    group.size = group.members.front().size;
    group.keeperID = group.members[DuplicateRules::chooseKeeper(group.members, folders)].id;
    group.selected = DuplicateRules::defaultSelection(group, folders);
    return group;
}

// The index the keeper chain picks between two files, where the second must win on exactly one test.
qsizetype keeperOf(const DuplicateFile& first, const DuplicateFile& second)
{
    return DuplicateRules::chooseKeeper({first, second}, folders);
}

} // namespace

TEST(DuplicateRules, KeeperChainCaseByCase)
{
    const DuplicateFile plain = file(QStringLiteral("/data/x/copy.bin"));

    DuplicateFile locked = file(QStringLiteral("/home/ada/Downloads/a/b/c/much-longer-name.bin"));
    locked.flags = FileFlags::userImmutable;
    EXPECT_EQ(keeperOf(plain, locked), 1) << "a protected copy beats a better place";
    DuplicateFile restricted = locked;
    restricted.flags = FileFlags::restricted;
    EXPECT_EQ(keeperOf(plain, restricted), 1);

    EXPECT_EQ(keeperOf(plain, file(QStringLiteral("/home/ada/Documents/deep/er/copy.bin"))), 1) << "class 2 beats 1";
    EXPECT_EQ(keeperOf(file(QStringLiteral("/home/ada/Downloads/c.bin")), plain), 1) << "class 1 beats 0";
    EXPECT_EQ(keeperOf(plain, file(QStringLiteral("/home/ada/Desktop/c.bin"))), 0);
    EXPECT_EQ(keeperOf(plain, file(QStringLiteral("/home/ada/Documentsx/c.bin"))), 0)
        << "a sibling with a longer name is no user folder";

    DuplicateFile linked = file(QStringLiteral("/data/x/y/z/longer-name.bin"));
    linked.linkCount = 2;
    EXPECT_EQ(keeperOf(plain, linked), 1) << "more links win";

    DuplicateFile older = file(QStringLiteral("/data/x/y/z/longer-name.bin"));
    older.createdSec = 100;
    EXPECT_EQ(keeperOf(plain, older), 1) << "the older creation wins";

    EXPECT_EQ(keeperOf(plain, file(QStringLiteral("/data/longer-name.bin"))), 1) << "fewer slashes win";
    EXPECT_EQ(keeperOf(plain, file(QStringLiteral("/data/y/c.bin"))), 1) << "the shorter name wins";
    EXPECT_EQ(keeperOf(plain, file(QStringLiteral("/data/y/abcd.bin"))), 0) << "a tie keeps the earlier member";
    EXPECT_EQ(keeperOf(plain, file(QStringLiteral("/data/y/ééé.bin"))), 1) << "names are counted in characters";

    // Three members: the best so far is replaced only by a member that beats it.
    EXPECT_EQ(DuplicateRules::chooseKeeper({plain, file(QStringLiteral("/home/ada/Music/a.bin")), older}, folders), 1);
}

TEST(DuplicateRules, DefaultTicksLeaveUserFoldersAndBlockedCopiesAlone)
{
    const DuplicateGroup documentsAndDownloads = groupOf({file(QStringLiteral("/home/ada/Downloads/report.pdf")),
        file(QStringLiteral("/home/ada/Documents/report.pdf"))});
    EXPECT_EQ(documentsAndDownloads.keeperID, documentsAndDownloads.members[1].id);
    EXPECT_EQ(documentsAndDownloads.selected, QList<QUuid>({documentsAndDownloads.members[0].id}));
    EXPECT_EQ(documentsAndDownloads.reclaimable(), 1000);

    const DuplicateGroup documentsAndPictures = groupOf(
        {file(QStringLiteral("/home/ada/Pictures/cat.jpg")), file(QStringLiteral("/home/ada/Documents/cat.jpg"))});
    EXPECT_TRUE(documentsAndPictures.selected.isEmpty());

    DuplicateFile locked = file(QStringLiteral("/data/a/b/locked.bin"));
    locked.flags = FileFlags::systemImmutable;
    DuplicateFile lockedToo = file(QStringLiteral("/data/locked2.bin"));
    lockedToo.flags = FileFlags::userImmutable;
    const DuplicateGroup withLocked = groupOf({file(QStringLiteral("/data/plain.bin")), locked, lockedToo,
        file(QStringLiteral("/data/Thing.app/Contents/plain.bin"))});
    EXPECT_EQ(withLocked.keeperID, withLocked.members[2].id) << "a locked copy is kept; the shallower locked one";
    EXPECT_EQ(withLocked.selected, QList<QUuid>({withLocked.members[0].id}));
    EXPECT_FALSE(withLocked.selected.contains(withLocked.keeperID));
}

TEST(DuplicateRules, BlockReasonsAndWhatEachCopyFrees)
{
    DuplicateFile member = file(QStringLiteral("/data/a.bin"));
    EXPECT_FALSE(DuplicateRules::blockReason(member));
    member.flags = FileFlags::restricted | FileFlags::userImmutable | FileFlags::dataless;
    EXPECT_EQ(DuplicateRules::blockReason(member), DuplicateTexts::blockedNotDownloaded());
    member.flags &= ~FileFlags::dataless;
    EXPECT_EQ(DuplicateRules::blockReason(member), DuplicateTexts::blockedLocked());
    member.flags &= ~FileFlags::userImmutable;
    EXPECT_EQ(DuplicateRules::blockReason(member), DuplicateTexts::blockedSystemProtected());
    const QString insideBundle
        = QStringLiteral("Inside an app or library bundle — those are removed whole, never file by file");
    EXPECT_EQ(
        DuplicateRules::blockReason(file(QStringLiteral("/x/Photos.photoslibrary/originals/a.jpg"))), insideBundle);
    EXPECT_EQ(DuplicateRules::blockReason(file(QStringLiteral("/x/Talks/talk.key"))), insideBundle)
        << "the file's own name counts";
    EXPECT_FALSE(DuplicateRules::blockReason(file(QStringLiteral("/x/key/talk.keynote"))));

    DuplicateFile hardLinked = file(QStringLiteral("/data/b.bin"));
    hardLinked.linkCount = 2;
    hardLinked.cloneRefCount = 2;
    EXPECT_EQ(DuplicateRules::reclaimableBytes(hardLinked), 0);
    EXPECT_EQ(DuplicateRules::reclaimNote(hardLinked),
        QStringLiteral("Another name for the same file — removing this name frees nothing"));
    DuplicateFile cloned = file(QStringLiteral("/data/c.bin"));
    cloned.cloneRefCount = 2;
    EXPECT_EQ(DuplicateRules::reclaimableBytes(cloned), 0);
    EXPECT_EQ(DuplicateRules::reclaimNote(cloned),
        QStringLiteral("Shares its storage with the copy being kept — frees 0 bytes"));
    EXPECT_EQ(DuplicateRules::reclaimableBytes(file(QStringLiteral("/data/d.bin"))), 1000);
}

TEST(DuplicateRules, GroupsWithMoreToGainComeFirstThenLargerSets)
{
    const auto sized = [](std::int64_t size, int members) {
        QList<DuplicateFile> list;
        for (int i = 0; i < members; ++i) {
            DuplicateFile member = file(QStringLiteral("/data/%1-%2/f").arg(size).arg(i));
            member.size = member.reclaimable = size;
            list.append(member);
        }
        return groupOf(list);
    };
    QList<DuplicateGroup> groups = {sized(100, 2), sized(50, 3), sized(300, 2), sized(100, 2)};
    groups[3].members[1].reclaimable = 0; // a hard link: frees nothing
    DuplicateRules::sortGroups(groups);
    QList<std::int64_t> gains;
    QList<qsizetype> counts;
    for (const DuplicateGroup& group : groups) {
        gains.append(group.reclaimable());
        counts.append(group.members.size());
    }
    EXPECT_EQ(gains, QList<std::int64_t>({300, 100, 100, 0}));
    EXPECT_EQ(counts, QList<qsizetype>({2, 3, 2, 2}));
}

TEST(DuplicateRules, SetsThatFreeAsMuchWithAsManyCopiesGoByTheKeepersPath)
{
    // The order is the same on every run, whichever order the comparison proved the sets in.
    const auto pair = [](const QString& folder) {
        return groupOf({file(folder + QStringLiteral("/copy.bin")), file(folder + QStringLiteral("/x/copy.bin"))});
    };
    QList<DuplicateGroup> groups
        = {pair(QStringLiteral("/data/b")), pair(QStringLiteral("/data/c")), pair(QStringLiteral("/data/a"))};
    DuplicateRules::sortGroups(groups);
    QStringList keepers;
    for (const DuplicateGroup& group : groups)
        keepers.append(group.keeper()->path);
    EXPECT_EQ(keepers,
        QStringList({QStringLiteral("/data/a/copy.bin"), QStringLiteral("/data/b/copy.bin"),
            QStringLiteral("/data/c/copy.bin")}));
}

TEST(NotScannedSummary, WordingForOneAndForTwo)
{
    InventoryStats inventory;
    EngineStats engine;
    EXPECT_EQ(notScannedSummary(inventory, engine), QString());

    inventory.datalessSkipped = inventory.packagesHalted = inventory.unreadableDirectories = 1;
    engine.unreadable = 1;
    EXPECT_EQ(notScannedSummary(inventory, engine),
        QStringLiteral("1 file is in the cloud and not downloaded — Velloru does not download files to compare "
                       "them. 1 app or library bundle was measured whole rather than opened up. 1 folder could "
                       "not be opened. 1 file could not be read."));

    inventory.datalessSkipped = inventory.packagesHalted = inventory.unreadableDirectories = 2;
    engine.unreadable = 12345;
    EXPECT_EQ(notScannedSummary(inventory, engine),
        QStringLiteral("2 files are in the cloud and not downloaded — Velloru does not download files to compare "
                       "them. 2 app or library bundles were measured whole rather than opened up. 2 folders "
                       "could not be opened. 12345 files could not be read."));

    inventory = {};
    inventory.unreadableDirectories = 2;
    EXPECT_EQ(notScannedSummary(inventory, {}), QStringLiteral("2 folders could not be opened."));

    engine = {};
    engine.unreadable = 1;
    engine.changedDuringScan = 1;
    EXPECT_EQ(notScannedSummary({}, engine),
        QStringLiteral("1 file could not be read. 1 file changed during the scan and was left out — scan again to "
                       "compare it."));

    inventory = {};
    inventory.badNameFilesSkipped = inventory.badNameFoldersSkipped = 1;
    EXPECT_EQ(notScannedSummary(inventory, {}),
        QStringLiteral("1 file has a name that isn’t valid UTF-8 and was left out — rename it to include it. 1 folder "
                       "has a name that isn’t valid UTF-8 and was left out with everything in it — rename it to "
                       "include it."));
    inventory.badNameFilesSkipped = 3;
    inventory.badNameFoldersSkipped = 2;
    EXPECT_EQ(notScannedSummary(inventory, {}),
        QStringLiteral("3 files have names that aren’t valid UTF-8 and were left out — rename them to include them. "
                       "2 folders have names that aren’t valid UTF-8 and were left out with everything in them — "
                       "rename them to include them."));
}
