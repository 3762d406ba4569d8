#include "duplicates/HashCache.h"

#include "common/JsonFile.h"
#include "common/Log.h"
#include "common/StoragePaths.h"
#include "duplicates/HashCacheFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

HashCache::HashCache(std::string volumeUUID)
    : m_fileURL(fileFor(volumeUUID))
    , m_volumeUUID(std::move(volumeUUID))
{
}

QString HashCache::fileFor(const std::string& volumeUUID)
{
    return StoragePaths::cacheFolder()
        + QStringLiteral("/Duplicates/hashes-%1.json").arg(QString::fromStdString(volumeUUID));
}

bool HashCache::isStored() const
{
    return QFile::exists(m_fileURL);
}

bool HashCache::read(const std::function<void(const Entry&)>& onEntry) const
{
    QFile file(m_fileURL);
    if (!file.exists())
        return true;
    if (!file.open(QIODevice::ReadOnly)) {
        setAsideUnusableFile(m_fileURL, file.errorString());
        return false;
    }
    HashCacheFile::Reader reader(file);
    const std::optional<std::string> fileVolume = reader.volumeUUID();
    if (fileVolume && *fileVolume != m_volumeUUID) {
        // Inode numbers mean nothing on another volume: the whole file is ignored and replaced at the next save.
        logLine(QStringLiteral("hash cache for another volume ignored path=%1 volume=%2")
                    .arg(logValue(m_fileURL), logValue(QString::fromStdString(*fileVolume))));
        return true;
    }
    Entry entry;
    while (reader.next(entry))
        onEntry(entry);
    if (reader.failed()) {
        file.close();
        setAsideUnusableFile(m_fileURL, QStringLiteral("not a hash cache"));
        return false;
    }
    return true;
}

std::optional<QString> HashCache::save(const AddedEntries& added) const
{
    bool storedUsable = true;
    std::optional<QString> failure = write(added, true, storedUsable);
    if (!storedUsable) // the stored file was not a cache after all: only what this run sampled is kept
        failure = write(added, false, storedUsable);
    if (failure)
        logLine(QStringLiteral("hash cache not saved path=%1 reason=%2").arg(logValue(m_fileURL), logValue(*failure)));
    return failure;
}

std::optional<QString> HashCache::write(const AddedEntries& added, bool withStored, bool& storedUsable) const
{
    const QString folder = QFileInfo(m_fileURL).absolutePath();
    if (!QDir().mkpath(folder))
        return QStringLiteral("Couldn’t create the folder %1.").arg(folder);
    QSaveFile out(m_fileURL); // discarded unless committed
    // Unbuffered, so that a full disk fails a write itself rather than the close, which commit() would not
    // notice, leaving a truncated file in the good one's place.
    if (!out.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return QStringLiteral("Couldn’t write %1 — %2.").arg(m_fileURL, out.errorString());
    HashCacheFile::Writer writer(out, m_volumeUUID);
    bool written = true;
    std::size_t next = 0;
    Key lastAdded;
    std::optional<Entry> pending = added.count > 0 ? std::optional(added.at(0)) : std::nullopt;
    const auto addUpTo = [&](const Key* key) { // adds the added entries up to `key`; all when it is null
        while (pending && (!key || pending->key() <= *key)) {
            written = writer.add(*pending) && written;
            lastAdded = pending->key();
            pending = ++next < added.count ? std::optional(added.at(next)) : std::nullopt;
        }
    };
    if (withStored) {
        storedUsable = read([&](const Entry& entry) {
            const Key key = entry.key();
            addUpTo(&key);
            if (next == 0 || lastAdded != key)
                written = writer.add(entry) && written;
        });
        if (!storedUsable)
            return std::nullopt;
    }
    addUpTo(nullptr);
    if (!writer.finish() || !written || !out.commit())
        return QStringLiteral("Couldn’t write %1 — %2.").arg(m_fileURL, out.errorString());
    return std::nullopt;
}
