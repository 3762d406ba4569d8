#include "TestSupport.h"

#include "duplicates/HashCache.h"
#include "duplicates/HashCacheFile.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

using Entry = HashCache::Entry;

const Entry wide{18'000'000'000'000'000'001ull, -1'234'567'890'123'456'789ll, 9'000'000'000ull, 0xFEDCBA9876543210ull,
    0x0123456789ABCDEFull};

QByteArray encoded(std::string_view volumeUUID, const std::vector<Entry>& entries)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    HashCacheFile::Writer writer(buffer, volumeUUID);
    for (const Entry& entry : entries)
        writer.add(entry);
    writer.finish();
    return buffer.data();
}

// The volume UUID and entries of a file's bytes, or nothing when they are not a hash cache.
std::optional<std::pair<std::string, std::vector<Entry>>> decoded(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    HashCacheFile::Reader reader(buffer);
    const std::optional<std::string> volume = reader.volumeUUID();
    std::vector<Entry> entries;
    Entry entry;
    while (reader.next(entry))
        entries.push_back(entry);
    if (!volume || reader.failed())
        return std::nullopt;
    return std::pair(*volume, entries);
}

// What a scan adds, from a list.
HashCache::AddedEntries added(const std::vector<Entry>& entries)
{
    return {entries.size(), [entries](std::size_t i) { return entries[i]; }};
}

std::vector<Entry> storedIn(const HashCache& cache, bool* usable = nullptr)
{
    std::vector<Entry> entries;
    const bool ok = cache.read([&](const Entry& entry) { entries.push_back(entry); });
    if (usable)
        *usable = ok;
    return entries;
}

void writeBytes(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

} // namespace

TEST(HashCache, MergesEachSaveWithWhatIsStoredAndKeepsFullSixtyFourBitValues)
{
    const std::string volume = "11111111-2222-3333-4444-555555555555";
    const HashCache cache(volume);
    EXPECT_TRUE(storedIn(cache).empty()) << "no file yet";
    EXPECT_FALSE(cache.save(added({{1, 2, 3, 4, 5}, wide})));
    EXPECT_TRUE(HashCache::fileFor(volume).endsWith(
        QStringLiteral("/Velloru/Duplicates/hashes-11111111-2222-3333-4444-555555555555.json")));

    // A second run adds files before, between and after the stored ones, and replaces one whose key it
    // sampled again.
    EXPECT_FALSE(cache.save(added({{0, 9, 9, 9, 9}, {1, 2, 3, 40, 50}, {7, 0, 0, 1, 1}})));
    bool usable = false;
    const std::vector<Entry> stored = storedIn(HashCache(volume), &usable);
    EXPECT_TRUE(usable);
    EXPECT_EQ(stored, std::vector<Entry>({{0, 9, 9, 9, 9}, {1, 2, 3, 40, 50}, {7, 0, 0, 1, 1}, wide}));
}

TEST(HashCache, AFileWrittenForAnotherVolumeIsIgnoredWholeAndReplaced)
{
    const std::string volume = "AAAAAAAA-0000-0000-0000-000000000001";
    writeBytes(HashCache::fileFor(volume), encoded("BBBBBBBB-0000-0000-0000-000000000002", {{1, 2, 3, 4, 5}}));

    LogCapture log;
    const HashCache cache(volume);
    bool usable = false;
    EXPECT_TRUE(storedIn(cache, &usable).empty());
    EXPECT_TRUE(usable);
    EXPECT_TRUE(log.contains(QStringLiteral("hash cache for another volume ignored")));
    EXPECT_FALSE(cache.save(added({{7, 8, 9, 1, 2}})));
    const auto saved = decoded(readWholeFile(HashCache::fileFor(volume)));
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->first, volume);
    EXPECT_EQ(saved->second, std::vector<Entry>({{7, 8, 9, 1, 2}}));
}

TEST(HashCache, AFileThatIsNotACacheIsKeptAsideAndOnlyNewEntriesAreSaved)
{
    const std::string volume = "CCCCCCCC-0000-0000-0000-000000000003";
    const QString path = HashCache::fileFor(volume);
    // Entries out of order: the file cannot be matched in one pass, so none of it may be trusted.
    writeBytes(path, encoded(volume, {{5, 0, 0, 1, 1}, {2, 0, 0, 1, 1}}));
    LogCapture log;
    const HashCache cache(volume);
    bool usable = true;
    storedIn(cache, &usable);
    EXPECT_FALSE(usable);
    EXPECT_FALSE(QFile::exists(path));
    const QStringList aside = QDir(QFileInfo(path).absolutePath())
                                  .entryList({QFileInfo(path).fileName() + QStringLiteral(".unreadable-*")});
    EXPECT_EQ(aside.size(), 1);
    EXPECT_TRUE(log.contains(QStringLiteral("state file unusable")));

    // Unusable again at save time (written meanwhile by something else): only the new entries are kept.
    writeBytes(path, QByteArray("not a cache at all"));
    EXPECT_FALSE(cache.save(added({{3, 3, 3, 3, 3}})));
    const auto saved = decoded(readWholeFile(path));
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->second, std::vector<Entry>({{3, 3, 3, 3, 3}}));
}

TEST(HashCacheFile, ReadsWhatItWritesAndRefusesWhatIsNotACache)
{
    // Long enough to need several blocks on both sides.
    std::vector<Entry> many;
    for (std::uint64_t i = 0; i < 5000; ++i)
        many.push_back({i, std::int64_t(i) - 2500, i * 3, ~i, i << 40});
    many.push_back(wide);
    const auto roundTrip = decoded(encoded("V", many));
    ASSERT_TRUE(roundTrip);
    EXPECT_EQ(roundTrip->first, "V");
    EXPECT_EQ(roundTrip->second, many);

    // What it writes is plain JSON of the documented shape.
    const QJsonObject asJson = QJsonDocument::fromJson(encoded("V", many)).object();
    EXPECT_EQ(asJson.value(u"volumeUUID").toString(), QStringLiteral("V"));
    EXPECT_EQ(asJson.value(u"entries").toArray().size(), qsizetype(many.size()));
    EXPECT_EQ(asJson.value(u"entries").toArray().at(7).toObject().value(u"size").toInteger(), 21);

    // Any spacing and any order of an entry's fields read the same.
    const auto spaced = decoded(R"( { "volumeUUID" : "V" , "entries" : [
        { "high" : 5, "low" : 4, "size" : 3, "mtimeNsec" : -2, "fileID" : 1 } ] }
    )");
    ASSERT_TRUE(spaced);
    EXPECT_EQ(spaced->second, std::vector<Entry>({{1, -2, 3, 4, 5}}));
    EXPECT_TRUE(decoded(R"({"volumeUUID":"V","entries":[]})"));

    const QByteArray good = encoded("VOLUME-1", {{1, 2, 3, 4, 5}, {1, 2, 4, 4, 5}});
    ASSERT_TRUE(decoded(good));
    const QByteArray oneEntry = R"({"volumeUUID":"V","entries":[{"fileID":1,"mtimeNsec":2,"size":3,"low":4,)";
    for (const QByteArray& bad : {QByteArray(), QByteArray(R"({"volumeUUID":"V")"), good.chopped(3), good + "x",
             encoded("V", {{1, 2, 3, 4, 5}, {1, 2, 3, 6, 7}}), encoded("", {}), encoded("a\"b", {}),
             QByteArray(R"({"entries":[],"volumeUUID":"V"})"), QByteArray(R"({"volumeUUID":"V","entries":[,]})"),
             oneEntry + R"("high":5},]})", oneEntry + R"("high":5.5}]})", oneEntry + R"("low":5}]})",
             oneEntry + R"("high":18446744073709551616}]})", oneEntry + "\"high\":-5}]}",
             QByteArray(R"({"volumeUUID":"V","entries":[{"fileID":1,"mtimeNsec":2,"size":3,"low":4}]})")})
        EXPECT_FALSE(decoded(bad)) << bad.toStdString();
    EXPECT_TRUE(decoded(oneEntry + R"("high":18446744073709551615}]})"));
}
