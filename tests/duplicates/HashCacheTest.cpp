#include "TestSupport.h"

#include "duplicates/HashCache.h"
#include "duplicates/HashCacheFile.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

namespace {

const HashCache::Key key{18'000'000'000'000'000'001ull, -1'234'567'890'123'456'789ll, 9'000'000'000ull};
const ContentHash value{0xFEDCBA9876543210ull, 0x0123456789ABCDEFull};

QByteArray encoded(std::string_view volumeUUID, const std::vector<HashCache::Entry>& entries)
{
    HashCacheFile::Writer writer(volumeUUID, entries.size());
    for (const HashCache::Entry& entry : entries)
        writer.add(entry);
    return writer.finish();
}

// The volume UUID and entries of a payload, or nothing when it is not one.
std::optional<std::pair<std::string, std::vector<HashCache::Entry>>> decoded(const QByteArray& text)
{
    std::vector<HashCache::Entry> entries;
    const auto volume = HashCacheFile::decode(std::string_view(text.constData(), std::size_t(text.size())),
        [&](const HashCache::Entry& entry) { entries.push_back(entry); });
    if (!volume)
        return std::nullopt;
    return std::pair(*volume, entries);
}

void writeText(const QString& path, const QByteArray& text)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
}

} // namespace

TEST(HashCache, KeepsFullSixtyFourBitValuesAcrossASave)
{
    const std::string volume = "11111111-2222-3333-4444-555555555555";
    {
        HashCache cache(volume);
        EXPECT_FALSE(cache.lookup(key));
        cache.store(key, value);
        cache.store({1, 2, 3}, {4, 5});
        EXPECT_FALSE(cache.save());
    }
    EXPECT_TRUE(HashCache::fileFor(volume).endsWith(
        QStringLiteral("/Velloru/Duplicates/hashes-11111111-2222-3333-4444-555555555555.json")));
    HashCache reloaded(volume);
    EXPECT_EQ(reloaded.size(), 2u);
    EXPECT_EQ(reloaded.lookup(key), value);
    // Any change of inode, content time or length misses.
    EXPECT_FALSE(reloaded.lookup({key.fileID + 1, key.mtimeNsec, key.size}));
    EXPECT_FALSE(reloaded.lookup({key.fileID, key.mtimeNsec + 1, key.size}));
    EXPECT_FALSE(reloaded.lookup({key.fileID, key.mtimeNsec, key.size + 1}));

    // Nothing new: nothing written.
    QFile::remove(HashCache::fileFor(volume));
    EXPECT_FALSE(reloaded.save());
    EXPECT_FALSE(QFile::exists(HashCache::fileFor(volume)));
}

TEST(HashCache, AFileWrittenForAnotherVolumeIsIgnoredWhole)
{
    const std::string volume = "AAAAAAAA-0000-0000-0000-000000000001";
    writeText(HashCache::fileFor(volume),
        encoded("BBBBBBBB-0000-0000-0000-000000000002", {{key.fileID, key.mtimeNsec, key.size, 1, 2}}));

    HashCache cache(volume);
    EXPECT_EQ(cache.size(), 0u);
    EXPECT_FALSE(cache.lookup(key));
    cache.store({7, 8, 9}, value);
    EXPECT_FALSE(cache.save());
    const auto saved = decoded(readWholeFile(HashCache::fileFor(volume)));
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->first, volume);
    EXPECT_EQ(saved->second.size(), 1u);
}

TEST(HashCache, AnUnreadableFileIsKeptAsideAndTheCacheStartsEmpty)
{
    const std::string volume = "CCCCCCCC-0000-0000-0000-000000000003";
    const QString path = HashCache::fileFor(volume);
    writeText(path, "{\"volumeUUID\":\"CCCCCCCC-0000-0000-0000-000000000003\",\"entries\":[{\"fileID\":1,");
    LogCapture log;
    HashCache cache(volume);
    EXPECT_EQ(cache.size(), 0u);
    EXPECT_FALSE(QFile::exists(path));
    const QStringList aside = QDir(QFileInfo(path).absolutePath())
                                  .entryList({QFileInfo(path).fileName() + QStringLiteral(".unreadable-*")});
    EXPECT_EQ(aside.size(), 1);
    EXPECT_TRUE(log.contains(QStringLiteral("state file unusable")));
}

TEST(HashCacheFile, ReadsWhatItWritesAndRefusesWhatIsNotAPayload)
{
    const auto roundTrip = decoded(encoded("V", {{1, -2, 3, 18446744073709551615ull, 0}, {5, 6, 7, 8, 9}}));
    ASSERT_TRUE(roundTrip);
    EXPECT_EQ(roundTrip->first, "V");
    ASSERT_EQ(roundTrip->second.size(), 2u);
    EXPECT_EQ(roundTrip->second[0].low, 18446744073709551615ull);
    EXPECT_EQ(roundTrip->second[0].mtimeNsec, -2);

    // Keys in any order, white space, and keys a later version may add are fine.
    const auto relaxed = decoded(" { \"entries\" : [ { \"high\":5, \"low\":4, \"size\":3, \"mtimeNsec\":2, "
                                 "\"fileID\":1, \"note\":[1,{\"a\":null}] } ],"
                                 " \"volumeUUID\" : \"V\", \"version\": 2 } ");
    ASSERT_TRUE(relaxed);
    EXPECT_EQ(relaxed->second[0].high, 5u);

    for (const char* bad : {"", "[]", "{\"volumeUUID\":\"V\"}", "{\"entries\":[]}",
             "{\"volumeUUID\":\"V\",\"entries\":[{\"fileID\":1,\"fileID\":1,\"size\":3,\"low\":4,\"high\":5}]}",
             "{\"volumeUUID\":\"V\",\"entries\":[{\"fileID\":-1,\"mtimeNsec\":2,\"size\":3,\"low\":4,\"high\":5}]}",
             "{\"volumeUUID\":\"V\",\"entries\":[]} trailing", "{\"volumeUUID\":\"V\",\"entries\":[1.5]}"})
        EXPECT_FALSE(decoded(bad)) << bad;
}
