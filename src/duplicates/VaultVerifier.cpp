#include "duplicates/VaultVerifier.h"

#include "duplicates/VaultTexts.h"
#include "platform/FileAccess.h"
#include "platform/FileReading.h"
#include "platform/FileStatus.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace {

constexpr std::size_t chunkSize = 1'048'576;

bool exists(const QString& path)
{
    return statusAt(AT_FDCWD, QFile::encodeName(path).constData(), StatDetail::identity).has_value() || errno != ENOENT;
}

QString readFailure(int error)
{
    return isNotPresentLocally(error) ? VaultTexts::notDownloaded() : systemErrorSentence(error);
}

} // namespace

QString VaultVerification::sentence() const
{
    switch (result) {
    case Result::vaultedFileMissing: return VaultTexts::vaultedFileMissing();
    case Result::keeperMissing: return VaultTexts::keeperMissing(entry.keeperPath);
    case Result::keeperIntact: return VaultTexts::keeperIntact(entry.keeperPath);
    case Result::keeperChanged: return VaultTexts::keeperChanged(entry.keeperPath);
    case Result::unreadable: return VaultTexts::couldNotCheck(unreadableReason);
    }
    return {};
}

VaultVerification verifyEntry(const VaultEntry& entry, std::vector<std::byte>& held, std::vector<std::byte>& kept)
{
    VaultVerification verification{entry.id, entry, VaultVerification::Result::keeperIntact, {}};
    const auto unreadable = [&verification](const QString& reason) {
        verification.result = VaultVerification::Result::unreadable;
        verification.unreadableReason = reason;
        return verification;
    };
    if (!exists(entry.vaultPath)) {
        verification.result = VaultVerification::Result::vaultedFileMissing;
        return verification;
    }
    if (!exists(entry.keeperPath)) {
        verification.result = VaultVerification::Result::keeperMissing;
        return verification;
    }
    const std::optional<ReadOnlyFile> heldFile = ReadOnlyFile::open(QFile::encodeName(entry.vaultPath).constData());
    if (!heldFile)
        return unreadable(systemErrorSentence(errno));
    const std::optional<ReadOnlyFile> keptFile = ReadOnlyFile::open(QFile::encodeName(entry.keeperPath).constData());
    if (!keptFile)
        return unreadable(systemErrorSentence(errno));
    held.resize(chunkSize);
    kept.resize(chunkSize);

    for (std::uint64_t offset = 0; offset < std::uint64_t(entry.size);) {
        const std::size_t span = std::min<std::uint64_t>(chunkSize, std::uint64_t(entry.size) - offset);
        const ReadOutcome heldRead = heldFile->readAt(offset, std::span(held.data(), span));
        if (heldRead.error != 0)
            return unreadable(readFailure(heldRead.error));
        if (heldRead.bytes < span)
            return unreadable(VaultTexts::endedEarly());
        const ReadOutcome keptRead = keptFile->readAt(offset, std::span(kept.data(), span));
        if (keptRead.error != 0)
            return unreadable(readFailure(keptRead.error));
        // A kept copy that is shorter is no longer the same file; the held copy's length is the measure.
        if (keptRead.bytes < span || std::memcmp(held.data(), kept.data(), span) != 0) {
            verification.result = VaultVerification::Result::keeperChanged;
            return verification;
        }
        offset += span;
    }
    // A kept copy that grew past the held copy's end is not identical either.
    const std::optional<FileStatus> keptStatus = keptFile->status();
    if (keptStatus && keptStatus->size != entry.size)
        verification.result = VaultVerification::Result::keeperChanged;
    return verification;
}

QHash<QUuid, VaultVerification> verifyEntries(
    const QList<VaultEntry>& entries, VaultProgress& progress, std::stop_token stop)
{
    progress.reset(entries.size());
    std::vector<std::byte> held;
    std::vector<std::byte> kept;
    QHash<QUuid, VaultVerification> results;
    results.reserve(entries.size());
    for (const VaultEntry& entry : entries) {
        if (stop.stop_requested())
            break;
        results.insert(entry.id, verifyEntry(entry, held, kept));
        progress.advance();
    }
    return results;
}
