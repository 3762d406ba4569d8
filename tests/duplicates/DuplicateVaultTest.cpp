#include "DuplicateFixtures.h"
#include "TestSupport.h"
#include "VaultFixtures.h"

#include "duplicates/DuplicateTexts.h"
#include "duplicates/DuplicateVaultController.h"
#include "duplicates/VaultOrigin.h"
#include "duplicates/VaultStore.h"
#include "duplicates/VaultTexts.h"
#include "removal/AuditLog.h"
#include "removal/Trasher.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <unistd.h>

namespace {

// A vault with a data folder of its own, over a fixture tree of duplicate files.
class VaultTest : public ::testing::Test {
protected:
    QString dataFolder() const { return tree.path(QStringLiteral("data")); }
    QString homeVault() const { return dataFolder() + QStringLiteral("/Duplicates Vault"); }
    QString listPath() const { return dataFolder() + QStringLiteral("/duplicates-vault.json"); }

    // A set of `copies` + 1 files of one content: the keeper at the top of the tree, the copies deeper.
    QString writeSet(const QString& name, int seed, const QStringList& copies, std::int64_t size = 10'000)
    {
        const QByteArray content = patternBytes(size, seed);
        for (const QString& copy : copies)
            tree.write(copy, content);
        return tree.write(name, content);
    }

    QList<DuplicateGroup> scan() { return scannedGroups({tree.path(QStringLiteral("files"))}); }

    bool move(const QList<DuplicateGroup>& groups)
    {
        return finishOperation(vault, [&] { return vault.moveTicked(groups); });
    }

    FixtureTree tree;
    AuditLog log{tree.path(QStringLiteral("data"))};
    Trasher trasher;
    DuplicateVaultController vault{tree.path(QStringLiteral("data")), log, trasher};
};

QList<QString> tickedPaths(const DuplicateGroup& group)
{
    QList<QString> paths;
    for (const DuplicateFile& member : group.members)
        if (group.selected.contains(member.id))
            paths.append(member.path);
    return paths;
}

qsizetype entriesWithOutcome(const AuditLog& log, const QString& outcome)
{
    return std::count_if(log.entries().cbegin(), log.entries().cend(), [&](const AuditEntry& entry) {
        return entry.outcome == outcome && entry.feature == QLatin1String("Duplicates");
    });
}

} // namespace

TEST_F(VaultTest, MovesTickedCopiesIntoTheMirroredVaultAndRecordsThem)
{
    const QString keeper = writeSet(QStringLiteral("files/photo.jpg"), 1,
        {QStringLiteral("files/copies/a/photo.jpg"), QStringLiteral("files/copies/b/photo.jpg")});
    const QList<DuplicateGroup> groups = scan();
    ASSERT_EQ(groups.size(), 1);
    EXPECT_EQ(groups.first().keeper()->path, keeper);
    ASSERT_EQ(groups.first().selected.size(), 2);

    ASSERT_TRUE(move(groups));
    ASSERT_TRUE(vault.lastMove());
    const VaultMoveResult& result = *vault.lastMove();
    EXPECT_EQ(result.moved.size(), 2);
    EXPECT_TRUE(result.failed.isEmpty());
    EXPECT_FALSE(result.abortedBecause);
    EXPECT_EQ(result.bytesHeld, 20'000);

    for (const VaultEntry& entry : result.moved) {
        EXPECT_EQ(entry.vaultPath, homeVault() + entry.originalPath);
        EXPECT_FALSE(QFileInfo::exists(entry.originalPath));
        EXPECT_EQ(readWholeFile(entry.vaultPath), patternBytes(10'000, 1));
        EXPECT_EQ(originOf(entry.vaultPath), entry.originalPath);
        EXPECT_EQ(entry.keeperPath, keeper);
        EXPECT_EQ(entry.contentHashHex, groups.first().contentHash.hex());
        EXPECT_EQ(entry.groupID, groups.first().id);
        EXPECT_EQ(entry.batchID, result.moved.first().batchID);
    }
    EXPECT_TRUE(QFileInfo::exists(keeper));

    // The list is one compact array, each entry's keys in their fixed order.
    const QByteArray text = readWholeFile(listPath());
    EXPECT_FALSE(text.contains('\n'));
    EXPECT_EQ(QJsonDocument::fromJson(text).array().size(), 2);
    const QStringList keys = {"id", "originalPath", "vaultPath", "keeperPath", "size", "reclaimable", "contentHashHex",
        "groupID", "batchID", "movedAt", "fileID", "mtimeNsec", "volumeUUID"};
    qsizetype at = 0;
    for (const QString& key : keys) {
        const qsizetype next = text.indexOf("\"" + key.toUtf8() + "\":", at);
        EXPECT_GT(next, at - 1) << key.toStdString();
        at = next;
    }
    EXPECT_EQ(entriesWithOutcome(log, AuditOutcome::movedToVault), 2);

    // Another start reads the same list back, exactly.
    DuplicateVaultController again(dataFolder(), log, trasher);
    again.load();
    EXPECT_EQ(again.entries(), vault.entries());
    EXPECT_EQ(again.bytesHeld(), 20'000);
    ASSERT_EQ(again.batches().size(), 1);
}

TEST_F(VaultTest, ACopyChangedSinceTheScanStopsTheMoveAndKeepsWhatMovedBefore)
{
    struct Change {
        QString reason;
        std::function<void(const QString&)> apply;
    };
    const QList<Change> changes = {
        {VaultTexts::modified(),
            [](const QString& path) {
                QFile file(path); // the same length and inode, other bytes and a new modification time
                ASSERT_TRUE(file.open(QIODevice::ReadWrite));
                file.write("changed");
            }},
        {VaultTexts::resized(), [](const QString& path) { ASSERT_TRUE(QFile::resize(path, 9'000)); }},
        {VaultTexts::replaced(),
            [](const QString& path) {
                ASSERT_TRUE(writeFileNamedBytes(QFile::encodeName(path + ".new"), patternBytes(10'000, 7)));
                ASSERT_EQ(::rename(QFile::encodeName(path + ".new"), QFile::encodeName(path)), 0);
            }},
        {VaultTexts::gone(), [](const QString& path) { ASSERT_TRUE(QFile::remove(path)); }},
        {VaultTexts::notRegular(),
            [](const QString& path) {
                ASSERT_TRUE(QFile::remove(path));
                ASSERT_TRUE(QDir().mkdir(path));
            }},
    };
    for (const Change& change : changes) {
        SCOPED_TRACE(change.reason.toStdString());
        FixtureTree files;
        const QByteArray content = patternBytes(10'000, 3);
        files.write(QStringLiteral("keep.bin"), content);
        for (const QString& name :
            {QStringLiteral("c/one.bin"), QStringLiteral("c/two.bin"), QStringLiteral("c/three.bin")})
            files.write(name, content);
        const QList<DuplicateGroup> groups = scannedGroups({files.path()});
        ASSERT_EQ(groups.size(), 1);
        const QList<QString> ticked = tickedPaths(groups.first());
        ASSERT_EQ(ticked.size(), 3);

        change.apply(ticked[1]);
        ASSERT_TRUE(move(groups));
        const VaultMoveResult& result = *vault.lastMove();
        EXPECT_EQ(result.abortedBecause,
            QFileInfo(ticked[1]).fileName() + QStringLiteral(" changed while you were reviewing — ") + change.reason
                + QStringLiteral(". Nothing further was moved; scan again to pick up the current state."));
        ASSERT_EQ(result.moved.size(), 1);
        EXPECT_EQ(result.moved.first().originalPath, ticked[0]);
        EXPECT_TRUE(QFileInfo::exists(ticked[2]));
        EXPECT_TRUE(QFileInfo::exists(result.moved.first().vaultPath));

        // What moved before the change stays held, on the list too.
        DuplicateVaultController again(dataFolder(), log, trasher);
        again.load();
        EXPECT_TRUE(std::any_of(again.entries().cbegin(), again.entries().cend(),
            [&](const VaultEntry& entry) { return entry.originalPath == ticked[0]; }));
        EXPECT_FALSE(std::any_of(again.entries().cbegin(), again.entries().cend(),
            [&](const VaultEntry& entry) { return entry.originalPath == ticked[2]; }));
        EXPECT_EQ(vault.notice()->contains(*result.abortedBecause), true);
    }
}

TEST_F(VaultTest, AHardLinkOfTheKeeperAndABundledCopyStayWithTheirReasons)
{
    const QString keeper = writeSet(QStringLiteral("files/photo.jpg"), 4, {QStringLiteral("files/c/photo.jpg")});
    QList<DuplicateGroup> groups = scan();
    ASSERT_EQ(groups.size(), 1);
    DuplicateGroup& group = groups.first();

    // Members the engine would never offer, as a stale or hand-edited selection might still hold them.
    const QString link = tree.path(QStringLiteral("files/link.jpg"));
    ASSERT_EQ(::link(QFile::encodeName(keeper), QFile::encodeName(link)), 0);
    DuplicateFile hardLink = *group.keeper();
    hardLink.id = QUuid::createUuid();
    hardLink.path = link;
    const QString bundled = tree.write(QStringLiteral("files/Thing.app/photo.jpg"), patternBytes(10'000, 4));
    DuplicateFile inBundle = group.members.last();
    inBundle.id = QUuid::createUuid();
    inBundle.path = bundled;
    group.members.append(hardLink);
    group.members.append(inBundle);
    group.selected.append(hardLink.id);
    group.selected.append(inBundle.id);

    ASSERT_TRUE(move(groups));
    const VaultMoveResult& result = *vault.lastMove();
    EXPECT_EQ(result.moved.size(), 1);
    ASSERT_EQ(result.failed.size(), 2);
    EXPECT_EQ(result.failed[0].path, link);
    EXPECT_EQ(result.failed[0].reason,
        QStringLiteral("Another name for the copy being kept — removing it would not free anything"));
    EXPECT_EQ(result.failed[1].path, bundled);
    EXPECT_EQ(result.failed[1].reason, DuplicateTexts::blockedInsideBundle());
    EXPECT_TRUE(QFileInfo::exists(link));
    EXPECT_TRUE(QFileInfo::exists(bundled));
    EXPECT_EQ(entriesWithOutcome(log, AuditOutcome::failed), 2);
}

TEST_F(VaultTest, ACopyOnAnotherVolumeGoesToThatVolumesOwnVault)
{
    if (!runningAsRoot())
        GTEST_SKIP() << "mounting a tmpfs as a second volume needs root; run the tests as root to cover it.";
    std::optional<TmpfsMount> volume
        = TmpfsMount::mount(tree.path(QStringLiteral("volume")), QStringLiteral("size=8m"));
    std::optional<TmpfsMount> readOnly
        = TmpfsMount::mount(tree.path(QStringLiteral("readonly")), QStringLiteral("size=8m"));
    if (!volume || !readOnly)
        GTEST_SKIP() << "could not mount a tmpfs here (no CAP_SYS_ADMIN?): " << strerror(errno);
    const QByteArray content = patternBytes(20'000, 5);
    const QString keeper = tree.write(QStringLiteral("k.bin"), content);
    const QString onVolume = tree.write(QStringLiteral("volume/deep/folder/copy.bin"), content);
    const QString onReadOnly = tree.write(QStringLiteral("readonly/deep/folder/copy.bin"), content);
    ASSERT_TRUE(readOnly->remount(QStringLiteral("ro")));

    const QList<DuplicateGroup> groups
        = scannedGroups({keeper.section(QLatin1Char('/'), 0, -2), volume->path(), readOnly->path()});
    ASSERT_EQ(groups.size(), 1);
    ASSERT_EQ(groups.first().keeper()->path, keeper);
    ASSERT_TRUE(move(groups));
    const VaultMoveResult& result = *vault.lastMove();
    ASSERT_EQ(result.moved.size(), 1);
    EXPECT_EQ(result.moved.first().vaultPath, volume->path() + QStringLiteral("/.Velloru/Duplicates Vault") + onVolume);
    EXPECT_EQ(readWholeFile(result.moved.first().vaultPath), content);
    EXPECT_FALSE(QFileInfo::exists(homeVault() + onVolume));
    ASSERT_EQ(result.failed.size(), 1);
    EXPECT_EQ(result.failed.first().path, onReadOnly);
    EXPECT_EQ(result.failed.first().reason, VaultTexts::volumeNotWritable(readOnly->path()));
    EXPECT_TRUE(QFileInfo::exists(onReadOnly));

    // Emptying sends that volume's vault folder to the Trash too, and the list forgets the copy.
    ASSERT_TRUE(finishOperation(vault, [&] { return vault.emptyToTrash(); }));
    EXPECT_TRUE(vault.entries().isEmpty());
    EXPECT_FALSE(QFileInfo::exists(volume->path() + QStringLiteral("/.Velloru/Duplicates Vault")));
    EXPECT_TRUE(vault.lastEmpty()->failed.isEmpty());
}

TEST_F(VaultTest, PuttingBackOntoATakenPathNeverOverwrites)
{
    // Two copies that came from the same path at different times: the second is held beside the first.
    const QByteArray content = patternBytes(10'000, 6);
    tree.write(QStringLiteral("files/keep.jpg"), content);
    const QString origin = tree.write(QStringLiteral("files/in/x.jpg"), content);
    ASSERT_TRUE(move(scan()));
    tree.write(QStringLiteral("files/in/x.jpg"), content);
    ASSERT_TRUE(move(scan()));
    ASSERT_EQ(vault.entries().size(), 2);
    EXPECT_EQ(vault.entries()[0].vaultPath, homeVault() + origin);
    EXPECT_EQ(vault.entries()[1].vaultPath, homeVault() + tree.path(QStringLiteral("files/in/x (2).jpg")));

    const QByteArray newer = "something the user made since";
    tree.write(QStringLiteral("files/in/x.jpg"), newer);
    const QUuid first = vault.entries()[0].id;
    const QUuid second = vault.entries()[1].id;
    ASSERT_TRUE(finishOperation(vault, [&] { return vault.restore({first}); }));
    EXPECT_EQ(vault.lastRestore()->restored, 1);
    ASSERT_EQ(vault.lastRestore()->renamed.size(), 1);
    EXPECT_EQ(vault.lastRestore()->renamed.first().restoredPath, tree.path(QStringLiteral("files/in/x (2).jpg")));
    EXPECT_TRUE(vault.notice()->contains(QStringLiteral("Something was already at ") + origin
        + QStringLiteral(", so the file went back as x (2).jpg instead. Nothing was overwritten.")));
    ASSERT_TRUE(finishOperation(vault, [&] { return vault.restore({second}); }));
    EXPECT_EQ(vault.lastRestore()->renamed.first().restoredPath, tree.path(QStringLiteral("files/in/x (3).jpg")));

    EXPECT_EQ(readWholeFile(origin), newer);
    EXPECT_EQ(readWholeFile(tree.path(QStringLiteral("files/in/x (2).jpg"))), content);
    EXPECT_EQ(readWholeFile(tree.path(QStringLiteral("files/in/x (3).jpg"))), content);
    EXPECT_FALSE(originOf(tree.path(QStringLiteral("files/in/x (2).jpg"))));
    EXPECT_TRUE(vault.entries().isEmpty());
    EXPECT_EQ(entriesWithOutcome(log, AuditOutcome::restoredFromVault), 2);

    // A held copy that is gone cannot go back; it says so and stays listed.
    tree.write(QStringLiteral("elsewhere/keep"), content);
    tree.write(QStringLiteral("elsewhere/in/y"), content);
    ASSERT_TRUE(move(scannedGroups({tree.path(QStringLiteral("elsewhere"))})));
    ASSERT_EQ(vault.entries().size(), 1);
    ASSERT_TRUE(QFile::remove(vault.entries().first().vaultPath));
    ASSERT_TRUE(finishOperation(vault, [&] { return vault.restoreAll(); }));
    ASSERT_EQ(vault.lastRestore()->failed.size(), 1);
    EXPECT_EQ(vault.lastRestore()->failed.first().reason, QStringLiteral("It is no longer in the vault"));
    EXPECT_EQ(vault.entries().size(), 1);
}

TEST_F(VaultTest, SeveralRenamedRestoresAreSummedUpInOneSentence)
{
    tree.write(QStringLiteral("files/keep"), patternBytes(5'000, 8));
    tree.write(QStringLiteral("files/a/n"), patternBytes(5'000, 8));
    tree.write(QStringLiteral("files/b/n"), patternBytes(5'000, 8));
    ASSERT_TRUE(move(scan()));
    ASSERT_EQ(vault.entries().size(), 2);
    tree.write(QStringLiteral("files/a/n"), "taken");
    tree.write(QStringLiteral("files/b/n"), "taken");
    ASSERT_TRUE(finishOperation(vault, [&] { return vault.restoreAll(); }));
    EXPECT_EQ(vault.lastRestore()->renamed.size(), 2);
    EXPECT_TRUE(QFileInfo::exists(tree.path(QStringLiteral("files/a/n (2)"))));
    EXPECT_TRUE(vault.notice()->contains(QStringLiteral("2 files had something already at their original path, so "
                                                        "they went back under new names beside them. Nothing was "
                                                        "overwritten.")));
}

TEST_F(VaultTest, VerifyComparesEachHeldCopyWithTheKeptOne)
{
    QList<QString> keepers;
    for (int set = 0; set < 5; ++set)
        keepers.append(writeSet(QStringLiteral("files/k%1.bin").arg(set), 10 + set,
            {QStringLiteral("files/c/copy%1.bin").arg(set)}, 3'000'000 + set));
    ASSERT_TRUE(move(scan()));
    ASSERT_EQ(vault.entries().size(), 5);
    const auto entryOf = [this](const QString& keeper) {
        return *std::find_if(vault.entries().cbegin(), vault.entries().cend(),
            [&](const VaultEntry& entry) { return entry.keeperPath == keeper; });
    };

    ASSERT_TRUE(finishOperation(vault, [&] { return vault.verifyAll(); }));
    EXPECT_EQ(vault.verificationSummary(), QStringLiteral("checked — every kept copy is intact"));
    EXPECT_EQ(vault.verifyProgress(), 1.0);

    ASSERT_TRUE(QFile::remove(keepers[1]));
    {
        QFile changed(keepers[2]); // one byte differs past the first megabyte
        ASSERT_TRUE(changed.open(QIODevice::ReadWrite));
        changed.seek(2'500'000);
        changed.write("!");
    }
    ASSERT_TRUE(QFile::remove(entryOf(keepers[3]).vaultPath));
    ASSERT_TRUE(QFile::resize(entryOf(keepers[4]).vaultPath, 1'000'000));

    ASSERT_TRUE(finishOperation(vault, [&] { return vault.verifyAll(); }));
    const auto resultOf = [&](int set) { return vault.verifications().value(entryOf(keepers[set]).id); };
    EXPECT_EQ(resultOf(0).result, VaultVerification::Result::keeperIntact);
    EXPECT_EQ(resultOf(0).sentence(), QStringLiteral("The copy at ") + keepers[0] + " is present and identical");
    EXPECT_EQ(resultOf(1).result, VaultVerification::Result::keeperMissing);
    EXPECT_EQ(resultOf(1).sentence(),
        QStringLiteral("The copy that was kept is no longer at ") + keepers[1] + " — this may be the only one left");
    EXPECT_EQ(resultOf(2).result, VaultVerification::Result::keeperChanged);
    EXPECT_EQ(resultOf(3).result, VaultVerification::Result::vaultedFileMissing);
    EXPECT_EQ(resultOf(3).sentence(), QStringLiteral("This file is no longer in the vault"));
    EXPECT_EQ(resultOf(4).result, VaultVerification::Result::unreadable);
    EXPECT_EQ(resultOf(4).sentence(), QStringLiteral("Could not check: it ended sooner than its size said"));
    EXPECT_EQ(vault.verificationSummary(),
        QStringLiteral("no intact copy elsewhere — the file that was kept is missing or has changed. Put those back "
                       "before emptying."));
    EXPECT_EQ(std::count_if(log.entries().cbegin(), log.entries().cend(),
                  [](const AuditEntry& entry) { return entry.subjectKind == AuditSubject::action; }),
        2);
}

TEST_F(VaultTest, EmptyingSendsTheVaultFolderToTheTrashAsOneItem)
{
    writeSet(QStringLiteral("files/k.bin"), 20, {QStringLiteral("files/a/1.bin"), QStringLiteral("files/b/2.bin")});
    ASSERT_TRUE(move(scan()));
    ASSERT_EQ(vault.entries().size(), 2);
    ASSERT_TRUE(finishOperation(vault, [&] { return vault.emptyToTrash(); }));
    const TrashResult& result = *vault.lastEmpty();
    ASSERT_EQ(result.succeeded.size(), 1);
    EXPECT_EQ(result.succeeded.first().path, homeVault());
    EXPECT_TRUE(result.failed.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(homeVault()));
    const QString trashed = result.trashedURLs.value(homeVault());
    EXPECT_TRUE(QFileInfo(trashed).isDir());
    EXPECT_TRUE(vault.entries().isEmpty());
    EXPECT_EQ(readWholeFile(listPath()), "[]");
    EXPECT_EQ(vault.notice(), VaultTexts::emptyExplanation());
    EXPECT_EQ(entriesWithOutcome(log, AuditOutcome::movedToTrash), 1);
}

TEST_F(VaultTest, AnUndecodableListIsKeptAsideAndTheVaultStartsEmpty)
{
    for (const QByteArray& broken : {QByteArray("[{\"id\": 12"), QByteArray("[{\"id\":\"not a uuid\"}]")}) {
        SCOPED_TRACE(broken.toStdString());
        FixtureTree data;
        ASSERT_TRUE(writeFileNamedBytes(QFile::encodeName(data.path(QStringLiteral("duplicates-vault.json"))), broken));
        DuplicateVaultController fresh(data.path(), log, trasher);
        fresh.load();
        EXPECT_TRUE(fresh.entries().isEmpty());
        const QStringList aside = QDir(data.path()).entryList({QStringLiteral("duplicates-vault.json.unreadable-*")});
        ASSERT_EQ(aside.size(), 1);

        FixtureTree files;
        files.write(QStringLiteral("k"), patternBytes(5'000, 30));
        files.write(QStringLiteral("d/c"), patternBytes(5'000, 30));
        ASSERT_TRUE(finishOperation(fresh, [&] { return fresh.moveTicked(scannedGroups({files.path()})); }));
        EXPECT_EQ(fresh.entries().size(), 1);
        EXPECT_EQ(readWholeFile(data.path(aside.first())), broken);
    }
}

TEST(VaultList, ReadsBackExactlyWhatItWritesWhateverTheNamesHold)
{
    FixtureTree data;
    const VaultStore store(data.path());
    QList<VaultEntry> entries;
    for (const QString& name : {QStringLiteral("plain.jpg"), QStringLiteral("quote \" and \\ backslash"),
             QStringLiteral("line\nbreak\tand tab"), QStringLiteral("Ünïcödé ✓ 😀"), QStringLiteral("\x01 control")}) {
        VaultEntry entry;
        entry.id = QUuid::createUuid();
        entry.originalPath = QStringLiteral("/home/a/") + name;
        entry.vaultPath = QStringLiteral("/home/a/.local/share/Velloru/Duplicates Vault") + entry.originalPath;
        entry.keeperPath = QStringLiteral("/home/a/keep/") + name;
        entry.size = 9'007'199'254'740'993; // past what a double holds exactly
        entry.reclaimable = 0;
        entry.contentHashHex = QStringLiteral("00ff00ff00ff00ff00ff00ff00ff00ff");
        entry.groupID = QUuid::createUuid();
        entry.batchID = QUuid::createUuid();
        entry.movedAt = 785'123'456.789;
        entry.fileID = 9'223'372'036'854'775'000ULL;
        entry.mtimeNsec = 1'700'000'000'123'456'789;
        entry.volumeUUID = QStringLiteral("FSID-0123456789ABCDEF");
        entries.append(entry);
    }
    ASSERT_FALSE(store.write(entries));
    EXPECT_EQ(store.read(), entries);

    // Another writer's spacing and key order read the same.
    const QByteArray reordered = R"( [ { "volumeUUID" : "V", "mtimeNsec" : 5, "fileID" : 7, "movedAt" : 1.5,
        "batchID" : "2B0D4D0F-8A67-4C36-9E0B-5C8F6E1F6A01", "groupID" : "2B0D4D0F-8A67-4C36-9E0B-5C8F6E1F6A02",
        "contentHashHex" : "ab", "reclaimable" : 3, "size" : 3, "keeperPath" : "/k", "vaultPath" : "/v\/x",
        "originalPath" : "/o\u00e9\ud83d\ude00", "id" : "2B0D4D0F-8A67-4C36-9E0B-5C8F6E1F6A03", "note" : null } ] )";
    ASSERT_TRUE(writeFileNamedBytes(QFile::encodeName(store.listPath()), reordered));
    const QList<VaultEntry> read = store.read();
    ASSERT_EQ(read.size(), 1);
    EXPECT_EQ(read.first().originalPath, QStringLiteral("/oé😀"));
    EXPECT_EQ(read.first().vaultPath, QStringLiteral("/v/x"));
    EXPECT_EQ(read.first().movedAt, 1.5);
    EXPECT_EQ(read.first().fileID, 7u);
}

TEST(VaultList, AnythingButAListOfWholeEntriesIsSetAside)
{
    const QByteArray good = R"({"id":"2B0D4D0F-8A67-4C36-9E0B-5C8F6E1F6A03","originalPath":"/o","vaultPath":"/v",)"
                            R"("keeperPath":"/k","size":3,"reclaimable":3,"contentHashHex":"ab",)"
                            R"("groupID":"2B0D4D0F-8A67-4C36-9E0B-5C8F6E1F6A02",)"
                            R"("batchID":"2B0D4D0F-8A67-4C36-9E0B-5C8F6E1F6A01","movedAt":1,"fileID":7,)"
                            R"("mtimeNsec":5,"volumeUUID":"V"})";
    const QList<QByteArray> broken = {
        "{}",
        "[" + good + "] trailing",
        "[" + QByteArray(good).replace(R"("size":3,)", "") + "]",
        "[" + QByteArray(good).replace(R"("size":3)", R"("size":3.5)") + "]",
        "[" + QByteArray(good).replace(R"("size":3)", R"("size":"3")") + "]",
        "[" + QByteArray(good).replace(R"("size":3)", R"("size":-3)") + "]",
        "[" + QByteArray(good).replace("2B0D4D0F-8A67-4C36-9E0B-5C8F6E1F6A03", "not-a-uuid") + "]",
        "[" + QByteArray(good).replace(R"("volumeUUID":"V")", R"("volumeUUID":"V","extra":{"a":1})") + "]",
        "[" + QByteArray(good).replace(R"("originalPath":"/o")", "\"originalPath\":\"/o\xff\"") + "]",
        "[" + QByteArray(good).replace(R"("originalPath":"/o")", R"("originalPath":"/o\ud800")") + "]",
        "[" + good + ",]",
    };
    for (const QByteArray& text : broken) {
        SCOPED_TRACE(text.toStdString());
        FixtureTree data;
        const VaultStore store(data.path());
        ASSERT_TRUE(writeFileNamedBytes(QFile::encodeName(store.listPath()), text));
        EXPECT_TRUE(store.read().isEmpty());
        EXPECT_FALSE(QFileInfo::exists(store.listPath()));
        EXPECT_EQ(QDir(data.path()).entryList({QStringLiteral("duplicates-vault.json.unreadable-*")}).size(), 1);
    }
    FixtureTree data;
    const VaultStore store(data.path());
    ASSERT_TRUE(writeFileNamedBytes(QFile::encodeName(store.listPath()), "[" + good + "]"));
    EXPECT_EQ(store.read().size(), 1);
}
