#include "duplicates/VaultStore.h"

#include "common/AtomicFile.h"
#include "common/JsonFile.h"
#include "common/Log.h"
#include "duplicates/VaultListParser.h"
#include "duplicates/VaultNames.h"
#include "platform/FileStatus.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>

namespace {

const QString listName = QStringLiteral("duplicates-vault.json");
const QString lockName = QStringLiteral("duplicates-vault.lock");
const QString markerName = QStringLiteral("duplicates-vault.unfinished");

std::optional<FileStatus> statusOf(const QString& path)
{
    return statusAt(AT_FDCWD, QFile::encodeName(path).constData());
}

} // namespace

VaultStore::VaultStore(QString dataFolder)
    : m_dataFolder(std::move(dataFolder))
{
}

QString VaultStore::listPath() const
{
    return m_dataFolder + QLatin1Char('/') + listName;
}

QString VaultStore::homeVault() const
{
    return m_dataFolder + QStringLiteral("/Duplicates Vault");
}

QList<VaultEntry> VaultStore::read() const
{
    QFile file(listPath());
    if (!file.exists())
        return {};
    if (!file.open(QIODevice::ReadOnly)) {
        setAsideUnusableFile(listPath(), file.errorString());
        return {};
    }
    // Mapped rather than read, so the bytes are not copied once more before they are parsed.
    const qint64 size = file.size();
    const uchar* mapped = size > 0 ? file.map(0, size) : nullptr;
    const QByteArray read = mapped ? QByteArray() : file.readAll();
    std::optional<QList<VaultEntry>> entries
        = parseVaultList(mapped ? QByteArrayView(reinterpret_cast<const char*>(mapped), size) : QByteArrayView(read));
    if (!entries) {
        setAsideUnusableFile(listPath(), QStringLiteral("not a list of held copies"));
        return {};
    }
    return std::move(*entries);
}

std::optional<QString> VaultStore::write(const QList<VaultEntry>& entries) const
{
    QByteArray text;
    text.reserve(entries.size() * 512 + 2);
    text += '[';
    for (qsizetype i = 0; i < entries.size(); ++i) {
        if (i > 0)
            text += ',';
        text += entries[i].toJson();
    }
    text += ']';
    return writeFileAtomically(listPath(), text);
}

std::optional<FileLock> VaultStore::lock() const
{
    QDir().mkpath(m_dataFolder);
    return FileLock::acquire(m_dataFolder + QLatin1Char('/') + lockName, FileLock::Mode::exclusive);
}

void VaultStore::markUnfinished() const
{
    writeFileAtomically(m_dataFolder + QLatin1Char('/') + markerName, {});
}

void VaultStore::markFinished() const
{
    QFile::remove(m_dataFolder + QLatin1Char('/') + markerName);
}

QList<VaultEntry> VaultStore::load() const
{
    if (!QFile::exists(m_dataFolder + QLatin1Char('/') + markerName))
        return read();
    // Someone holding the lock is still at work and will finish the list itself.
    const std::optional<FileLock> held
        = FileLock::tryAcquire(m_dataFolder + QLatin1Char('/') + lockName, FileLock::Mode::exclusive);
    if (!held)
        return read();
    QList<VaultEntry> entries = read();
    const qsizetype before = entries.size();
    entries.removeIf([](const VaultEntry& entry) {
        if (!fileIsBackAtOrigin(entry))
            return false;
        logLine(QStringLiteral("vault entry dropped, its file is back at its origin id=%1 path=%2")
                    .arg(entry.id.toString(QUuid::WithoutBraces), logValue(entry.originalPath)));
        return true;
    });
    if (entries.size() != before) {
        if (const std::optional<QString> problem = write(entries)) {
            logLine(QStringLiteral("vault list not saved after settling error=%1").arg(logValue(*problem)));
            return entries; // the marker stays, so the next start settles again
        }
    }
    markFinished();
    return entries;
}

bool fileIsBackAtOrigin(const VaultEntry& entry)
{
    if (statusOf(entry.vaultPath) || errno != ENOENT)
        return false;
    const auto sameFile = [&entry](const QString& path) {
        const std::optional<FileStatus> status = statusOf(path);
        return status && status->isRegular() && status->inode == entry.fileID;
    };
    if (sameFile(entry.originalPath))
        return true;
    // A restore that found the place taken put the file beside it under the first free numbered name.
    for (int number = 2;; ++number) {
        const QString candidate = numberedName(entry.originalPath, number);
        if (!statusOf(candidate))
            return false;
        if (sameFile(candidate))
            return true;
    }
}
