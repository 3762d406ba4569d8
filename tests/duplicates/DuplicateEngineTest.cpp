#include "DuplicateFixtures.h"
#include "TestSupport.h"

#include "duplicates/DuplicateEngine.h"
#include "duplicates/NotScannedSummary.h"
#include "duplicates/SampleHash.h"
#include "duplicates/Sha256.h"
#include "duplicates/VolumeHashCaches.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

// The confirmed sets as sorted lists of file names, sorted, so a test can compare them whole.
QList<QStringList> setsByName(const Inventory& inventory, const std::vector<VerifiedGroup>& groups)
{
    QList<QStringList> sets;
    for (const VerifiedGroup& group : groups) {
        QStringList names;
        for (const std::uint32_t index : group.members)
            names.append(QString::fromUtf8(inventory.records[index].name));
        names.sort();
        sets.append(names);
    }
    std::sort(sets.begin(), sets.end());
    return sets;
}

DuplicateEngine::Result runEngine(const Inventory& inventory, const VolumeHashCaches* caches = nullptr)
{
    return DuplicateEngine::run(inventory, caches, {}, [] { return false; });
}

QByteArray withByteFlipped(QByteArray bytes, qsizetype at)
{
    bytes[at] = char(bytes[at] ^ 0xFF);
    return bytes;
}

} // namespace

TEST(DuplicateEngine, EqualEndsWithADifferentMiddleAreSampledTogetherAndSeparatedByTheComparison)
{
    FixtureTree tree;
    const QByteArray original = patternBytes(3 * 1024 * 1024 + 5, 1); // spans several 1 MiB chunks
    tree.write(QStringLiteral("a/original"), original);
    tree.write(QStringLiteral("b/middle-differs"), withByteFlipped(original, 2 * 1024 * 1024 + 3));
    tree.write(QStringLiteral("c/copy-of-middle-differs"), withByteFlipped(original, 2 * 1024 * 1024 + 3));
    tree.write(QStringLiteral("d/first-byte-differs"), withByteFlipped(original, 0));
    tree.write(QStringLiteral("e/copy"), original);

    const Inventory inventory = inventoryOf({tree.path()});
    const DuplicateEngine::Result result = runEngine(inventory);
    EXPECT_EQ(result.stats.sizeBuckets, 1);
    EXPECT_EQ(result.stats.candidatesAfterSize, 5);
    EXPECT_EQ(result.stats.candidatesAfterPrehash, 4);
    // The anchor differs from the two middle-differs files, which are still proven equal to each other.
    EXPECT_EQ(setsByName(inventory, result.groups),
        QList<QStringList>({{"copy", "original"}, {"copy-of-middle-differs", "middle-differs"}}));
    EXPECT_EQ(result.stats.groupsConfirmed, 2);
    EXPECT_EQ(result.stats.unreadable, 0);
    // Each set carries the SHA-256 of its whole content, hashed chunk by chunk beside the comparison.
    Sha256 hasher;
    hasher.update(std::as_bytes(std::span(original.constData(), std::size_t(original.size()))));
    const ContentHash originalHash = hasher.finish();
    int setsWithOriginalHash = 0;
    for (const VerifiedGroup& group : result.groups) {
        EXPECT_EQ(group.size, std::uint64_t(original.size()));
        setsWithOriginalHash += group.hash == originalHash;
    }
    EXPECT_EQ(setsWithOriginalHash, 1);
}

TEST(DuplicateEngine, FilesOfUpTo8192BytesAreSampledWholeAndLargerOnesAtBothEnds)
{
    FixtureTree tree;
    // 8,192 bytes: the byte at 4096 is sampled, so the two files never become candidates.
    const QByteArray whole = patternBytes(8192, 1);
    tree.write(QStringLiteral("whole/a"), whole);
    tree.write(QStringLiteral("whole/b"), withByteFlipped(whole, 4096));
    // 8,193 bytes: the samples are [0, 4096) and [4097, 8193), so byte 4096 is the one byte left out.
    const QByteArray split = patternBytes(8193, 2);
    tree.write(QStringLiteral("split/a"), split);
    tree.write(QStringLiteral("split/b"), withByteFlipped(split, 4096));
    tree.write(QStringLiteral("split/c"), withByteFlipped(split, 4097));

    const Inventory inventory = inventoryOf({tree.path()});
    const DuplicateEngine::Result result = runEngine(inventory);
    EXPECT_EQ(result.stats.candidatesAfterSize, 5);
    EXPECT_EQ(result.stats.candidatesAfterPrehash, 2);
    EXPECT_EQ(result.stats.prehashBytesRead, 2 * 8192 + 3 * 8192);
    EXPECT_TRUE(result.groups.empty());

    // The sample hash itself: the spans, then the size as 8 little-endian bytes.
    Sha256 hasher;
    const auto expected = [&](const QByteArray& content, std::uint64_t size) {
        hasher.reset();
        hasher.update(std::as_bytes(std::span(content.constData(), std::size_t(content.size()))));
        const unsigned char length[8] = {std::uint8_t(size), std::uint8_t(size >> 8), 0, 0, 0, 0, 0, 0};
        hasher.update(std::as_bytes(std::span(length)));
        return hasher.finish();
    };
    SampleBuffer buffer;
    const auto sampleOf = [&](const QString& path, std::uint64_t size) {
        const ReadOnlyFile folder = ReadOnlyFile::openFolder(QFile::encodeName(QFileInfo(path).path()).constData());
        const ReadOnlyFile file
            = ReadOnlyFile::openIn(folder, QFile::encodeName(QFileInfo(path).fileName()).constData());
        return sampleHash(file, size, hasher, buffer);
    };
    EXPECT_EQ(sampleOf(tree.path(QStringLiteral("whole/a")), 8192).hash, expected(whole, 8192));
    const SampleResult sampled = sampleOf(tree.path(QStringLiteral("split/a")), 8193);
    EXPECT_EQ(sampled.hash, expected(split.left(4096) + split.mid(4097), 8193));
    EXPECT_EQ(sampled.bytesRead, 8192u);
}

TEST(DuplicateEngine, SecondRunTakesEverySampleFromTheHashCache)
{
    FixtureTree tree;
    for (int i = 0; i < 6; ++i) {
        tree.write(QStringLiteral("one/%1.bin").arg(i), patternBytes(10000 + i % 3, i % 3));
        tree.write(QStringLiteral("two/%1.bin").arg(i), patternBytes(10000 + i % 3, 100 + i));
    }
    const auto runWithCache = [&] {
        const Inventory inventory = inventoryOf({tree.path()});
        const VolumeHashCaches caches = VolumeHashCaches::open(inventory);
        EXPECT_NE(caches.forDevice(inventory.records[0].device), nullptr);
        const DuplicateEngine::Result result = runEngine(inventory, &caches);
        return std::pair(setsByName(inventory, result.groups), result.stats);
    };
    const auto [firstSets, first] = runWithCache();
    EXPECT_EQ(first.prunedByCache, 0);
    EXPECT_GT(first.prehashBytesRead, 0);
    EXPECT_EQ(firstSets.size(), 3);

    const auto [secondSets, second] = runWithCache();
    EXPECT_EQ(second.prunedByCache, second.candidatesAfterSize);
    EXPECT_EQ(second.prehashBytesRead, 0);
    EXPECT_EQ(secondSets, firstSets);

    // A rewritten file misses the cache (new content time) and is sampled again.
    tree.write(QStringLiteral("one/0.bin"), patternBytes(10000, 0));
    ::utimensat(AT_FDCWD, QFile::encodeName(tree.path(QStringLiteral("one/0.bin"))), nullptr, 0);
    const auto [thirdSets, third] = runWithCache();
    EXPECT_EQ(third.prunedByCache, third.candidatesAfterSize - 1);
    EXPECT_EQ(third.prehashBytesRead, 8192);
    EXPECT_EQ(thirdSets, firstSets);
}

TEST(DuplicateEngine, FilesThatChangeOrVanishAfterTheInventoryAreLeftOut)
{
    FixtureTree tree;
    const QByteArray content = patternBytes(20000, 1);
    for (const char* name : {"a", "b", "c", "d", "e", "f"})
        tree.write(QString::fromLatin1(name), content);
    const Inventory inventory = inventoryOf({tree.path()});
    ASSERT_EQ(inventory.records.size(), 6u);

    QFile::remove(tree.path(QStringLiteral("b")));
    // Same length and the same ends, so it is still sampled alike and only the comparison can notice.
    tree.write(QStringLiteral("c"), withByteFlipped(content, 10000));
    const struct timespec later[2] = {{0, UTIME_OMIT}, {2'000'000'000, 0}};
    ::utimensat(AT_FDCWD, QFile::encodeName(tree.path(QStringLiteral("c"))), later, 0);
    // A named pipe (which must not make the scan wait for a writer) and a folder in two files' places.
    QFile::remove(tree.path(QStringLiteral("e")));
    ASSERT_EQ(::mkfifo(QFile::encodeName(tree.path(QStringLiteral("e"))), 0600), 0);
    QFile::remove(tree.path(QStringLiteral("f")));
    ASSERT_TRUE(QDir(tree.path()).mkdir(QStringLiteral("f")));

    const DuplicateEngine::Result result = runEngine(inventory);
    EXPECT_EQ(setsByName(inventory, result.groups), QList<QStringList>({{"a", "d"}}));
    EXPECT_EQ(result.stats.unreadable, 0); // gone or changed is not "could not be read"
    EXPECT_EQ(result.stats.changedDuringScan, 4);
    EXPECT_EQ(notScannedSummary(inventory.stats, result.stats),
        QStringLiteral("4 files changed during the scan and were left out — scan again to compare them."));
}

TEST(DuplicateEngine, AnUnreadableFileIsCountedAndTheOthersAreStillCompared)
{
    FixtureTree tree;
    const QByteArray content = patternBytes(9000, 1);
    for (const char* name : {"a", "b", "locked-out"})
        tree.write(QString::fromLatin1(name), content);
    ASSERT_EQ(::chmod(QFile::encodeName(tree.path(QStringLiteral("locked-out"))), 0), 0);
    const Inventory inventory = inventoryOf({tree.path()});

    FileAccessChecksEnforced enforced;
    const DuplicateEngine::Result result = runEngine(inventory);
    EXPECT_EQ(setsByName(inventory, result.groups), QList<QStringList>({{"a", "b"}}));
    EXPECT_EQ(result.stats.unreadable, 1);
    EXPECT_EQ(notScannedSummary(inventory.stats, result.stats), QStringLiteral("1 file could not be read."));
}

TEST(DuplicateEngine, OnlySharedSizesBecomeCandidatesAndEqualSamplesGroupWithinASize)
{
    Inventory inventory;
    for (const std::uint64_t size : {10, 20, 10, 30, 20, 40, 30, 10, 50}) {
        FileRecord record;
        record.size = size;
        inventory.records.push_back(record);
    }
    EngineStats stats;
    Candidates candidates = DuplicateEngine::sizeCandidates(inventory, stats);
    EXPECT_EQ(candidates.records, std::vector<std::uint32_t>({0, 2, 7, 1, 4, 3, 6}));
    EXPECT_EQ(stats.sizeBuckets, 3);
    EXPECT_EQ(stats.candidatesAfterSize, 7);
    EXPECT_EQ(stats.candidateBytesAfterSize, 30 + 60 + 40);

    // Sizes 10: two alike and one apart; 20: alike but one left out; 30: the same sample as the 10s.
    using State = Candidates::State;
    const ContentHash same{1, 2};
    candidates.samples = {same, {3, 4}, same, same, same, same, same};
    candidates.states
        = {State::sampled, State::cached, State::cached, State::sampled, State::leftOut, State::sampled, State::cached};
    const auto groups = DuplicateEngine::sampleGroups(inventory, candidates, stats);
    // The group with more bytes to compare comes first.
    EXPECT_EQ(groups, std::vector<std::vector<std::uint32_t>>({{3, 6}, {0, 7}}));
    EXPECT_EQ(stats.candidatesAfterPrehash, 4);
    EXPECT_EQ(stats.candidateBytesAfterPrehash, 60 + 20);
}

TEST(DuplicateEngine, AFolderRemovedAfterTheInventoryLeavesItsFilesOutAsChanged)
{
    FixtureTree tree;
    const QByteArray content = patternBytes(12000, 4);
    for (const char* name : {"kept/a", "kept/b", "gone/c", "gone/d", "gone/e"})
        tree.write(QString::fromLatin1(name), content);
    const Inventory inventory = inventoryOf({tree.path()});
    ASSERT_EQ(inventory.records.size(), 5u);
    ASSERT_TRUE(QDir(tree.path(QStringLiteral("gone"))).removeRecursively());

    const DuplicateEngine::Result result = runEngine(inventory);
    EXPECT_EQ(setsByName(inventory, result.groups), QList<QStringList>({{"a", "b"}}));
    EXPECT_EQ(result.stats.unreadable, 0);
    EXPECT_EQ(result.stats.changedDuringScan, 3);
}

TEST(DuplicateEngine, LargeAndSmallSetsComparedTogetherEachCarryTheirOwnContentHash)
{
    // Hashing a large anchor falls behind the comparison; the worker then takes small sets from the end of
    // the queue and hashes those itself. However the work interleaves, every set must be the right one
    // with the hash of its own content.
    FixtureTree tree;
    const QByteArray large = patternBytes(5 * 1024 * 1024 + 3, 1);
    tree.write(QStringLiteral("large/a"), large);
    tree.write(QStringLiteral("large/b"), large);
    tree.write(QStringLiteral("large/c-differs"), withByteFlipped(large, 3 * 1024 * 1024));
    QList<QStringList> expected{{"a", "b"}};
    for (int i = 0; i < 40; ++i) {
        const QByteArray small = patternBytes(9000 + i * 3000, 100 + i);
        const QString name = QStringLiteral("small-%1").arg(i);
        tree.write(QStringLiteral("one/%1").arg(name), small);
        tree.write(QStringLiteral("two/%1").arg(name), small);
        expected.append(QStringList{name, name});
    }
    // The anchor differs in the middle; the other two are still proven equal to each other.
    const QByteArray middle = patternBytes(50000, 7);
    tree.write(QStringLiteral("m/0-anchor"), withByteFlipped(middle, 25000));
    tree.write(QStringLiteral("m/1"), middle);
    tree.write(QStringLiteral("m/2"), middle);
    expected.append(QStringList{"1", "2"});
    std::sort(expected.begin(), expected.end());

    const Inventory inventory = inventoryOf({tree.path()});
    const DuplicateEngine::Result result = runEngine(inventory);
    EXPECT_EQ(setsByName(inventory, result.groups), expected);
    EXPECT_EQ(result.stats.groupsConfirmed, std::int64_t(expected.size()));
    for (const VerifiedGroup& group : result.groups) {
        const QByteArray content
            = readWholeFile(QString::fromStdString(inventory.path(inventory.records[group.members[0]])));
        Sha256 hasher;
        hasher.update(std::as_bytes(std::span(content.constData(), std::size_t(content.size()))));
        EXPECT_EQ(group.hash, hasher.finish()) << inventory.path(inventory.records[group.members[0]]);
    }
}
