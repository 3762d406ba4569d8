#include "duplicates/HashCache.h"

#include "common/AtomicFile.h"
#include "common/JsonFile.h"
#include "common/Log.h"
#include "common/StoragePaths.h"
#include "duplicates/HashCacheFile.h"

#include <QFile>

std::size_t HashCache::KeyHash::operator()(const Key& key) const
{
    std::uint64_t mixed = key.fileID * 0x9E3779B97F4A7C15ull;
    mixed ^= std::uint64_t(key.mtimeNsec) + 0x7F4A7C159E3779B9ull + (mixed << 6) + (mixed >> 2);
    mixed ^= key.size + 0x9E3779B97F4A7C15ull + (mixed << 6) + (mixed >> 2);
    return std::size_t(mixed);
}

QString HashCache::fileFor(const std::string& volumeUUID)
{
    return StoragePaths::cacheFolder()
        + QStringLiteral("/Duplicates/hashes-%1.json").arg(QString::fromStdString(volumeUUID));
}

HashCache::HashCache(std::string volumeUUID)
    : m_fileURL(fileFor(volumeUUID))
    , m_volumeUUID(std::move(volumeUUID))
{
    QFile file(m_fileURL);
    if (!file.exists())
        return;
    if (!file.open(QIODevice::ReadOnly)) {
        setAsideUnusableFile(m_fileURL, file.errorString());
        return;
    }
    // Parsed straight from a mapping of the file, so a large cache is never copied onto the heap first.
    const qint64 length = file.size();
    const uchar* mapped = length > 0 ? file.map(0, length) : nullptr;
    const QByteArray readInstead = (length > 0 && !mapped) ? file.readAll() : QByteArray();
    const std::string_view text = mapped ? std::string_view(reinterpret_cast<const char*>(mapped), std::size_t(length))
                                         : std::string_view(readInstead.constData(), std::size_t(readInstead.size()));
    const std::optional<std::string> fileVolume = HashCacheFile::decode(text, [this](const Entry& entry) {
        m_map.insert_or_assign(Key{entry.fileID, entry.mtimeNsec, entry.size}, ContentHash{entry.low, entry.high});
    });
    if (mapped)
        file.unmap(const_cast<uchar*>(mapped));
    file.close();
    if (!fileVolume) {
        m_map.clear();
        setAsideUnusableFile(m_fileURL, QStringLiteral("not a hash cache"));
        return;
    }
    if (*fileVolume != m_volumeUUID) {
        // Inode numbers mean nothing on another volume: the whole file is ignored and replaced at the next save.
        m_map.clear();
        logLine(QStringLiteral("hash cache for another volume ignored path=%1 volume=%2")
                    .arg(m_fileURL, QString::fromStdString(*fileVolume)));
    }
}

std::optional<ContentHash> HashCache::lookup(const Key& key) const
{
    std::lock_guard guard(m_lock);
    const auto found = m_map.find(key);
    if (found == m_map.end())
        return std::nullopt;
    return found->second;
}

void HashCache::store(const Key& key, const ContentHash& hash)
{
    std::lock_guard guard(m_lock);
    m_map.insert_or_assign(key, hash);
    m_dirty = true;
}

std::size_t HashCache::size() const
{
    std::lock_guard guard(m_lock);
    return m_map.size();
}

std::optional<QString> HashCache::save()
{
    QByteArray text;
    {
        std::lock_guard guard(m_lock);
        if (!m_dirty)
            return std::nullopt;
        HashCacheFile::Writer writer(m_volumeUUID, m_map.size());
        for (const auto& [key, hash] : m_map)
            writer.add({key.fileID, key.mtimeNsec, key.size, hash.low, hash.high});
        text = writer.finish();
        m_dirty = false;
    }
    std::optional<QString> failure = writeFileAtomically(m_fileURL, text);
    if (failure) {
        std::lock_guard guard(m_lock);
        m_dirty = true; // try again at the next save
        logLine(QStringLiteral("hash cache not saved path=%1 reason=\"%2\"").arg(m_fileURL, *failure));
    }
    return failure;
}
