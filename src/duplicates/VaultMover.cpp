#include "duplicates/VaultMover.h"

#include "common/Log.h"
#include "common/ReferenceDate.h"
#include "duplicates/DuplicateRules.h"
#include "duplicates/VaultFolders.h"
#include "duplicates/VaultNames.h"
#include "duplicates/VaultOrigin.h"
#include "duplicates/VaultRename.h"
#include "duplicates/VaultStore.h"
#include "duplicates/VaultTexts.h"
#include "platform/FileAccess.h"
#include "platform/FileStatus.h"
#include "platform/VolumeIdentity.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <cerrno>
#include <fcntl.h>

namespace {

struct PlannedMove {
    VaultEntry entry;
    const DuplicateFile* file = nullptr;
};

// Why the copy is no longer what the scan saw, or nothing when it still is.
std::optional<QString> changeSinceScan(const DuplicateFile& file, int& error)
{
    error = 0;
    const std::optional<FileStatus> status = statusAt(AT_FDCWD, QFile::encodeName(file.path).constData());
    if (!status) {
        if (errno == ENOENT || errno == ENOTDIR)
            return VaultTexts::gone();
        error = errno;
        return std::nullopt;
    }
    if (!status->isRegular())
        return VaultTexts::notRegular();
    if (status->inode != file.fileID)
        return VaultTexts::replaced();
    if (status->size != file.size)
        return VaultTexts::resized();
    if (status->modifiedSeconds * 1'000'000'000 + status->modifiedNanoseconds != file.mtimeNsec)
        return VaultTexts::modified();
    return std::nullopt;
}

// The copies that may go, each with the place it will take in the vault; the others into `failed`.
QList<PlannedMove> planMoves(const QList<DuplicateGroup>& groups, const VaultStore& store,
    const QList<VaultEntry>& current, QList<VaultFailure>& failed)
{
    VaultFolders folders(store.homeVault());
    QSet<QString> claimed;
    for (const VaultEntry& entry : current)
        claimed.insert(entry.vaultPath);
    QHash<QString, QString> volumeOfFolder;
    const QUuid batchID = QUuid::createUuid();
    const double movedAt = ReferenceDate::secondsSinceReference(QDateTime::currentDateTimeUtc());

    QList<PlannedMove> planned;
    for (const DuplicateGroup& group : groups) {
        const DuplicateFile* keeper = group.keeper();
        for (const DuplicateFile& member : group.members) {
            if (!group.selected.contains(member.id) || &member == keeper)
                continue;
            if (keeper && member.device == keeper->device && member.fileID == keeper->fileID) {
                failed.append({member.path, VaultTexts::anotherNameOfKeeper()});
                continue;
            }
            if (const std::optional<QString> reason = DuplicateRules::blockReason(member)) {
                failed.append({member.path, *reason});
                continue;
            }
            const VaultFolder folder = folders.folderFor(member.path);
            if (!folder.failure.isEmpty()) {
                failed.append({member.path, folder.failure});
                continue;
            }
            const QString vaultPath
                = firstFreeName(VaultFolders::pathInside(folder.folder, member.path), [&claimed](const QString& path) {
                      return claimed.contains(path) || QFileInfo::exists(path) || QFileInfo(path).isSymLink();
                  });
            claimed.insert(vaultPath);
            if (!volumeOfFolder.contains(folder.folder))
                volumeOfFolder.insert(folder.folder,
                    QString::fromStdString(volumeUUID(QFile::encodeName(member.path).toStdString()).value_or("")));

            VaultEntry entry;
            entry.id = QUuid::createUuid();
            entry.originalPath = member.path;
            entry.vaultPath = vaultPath;
            entry.keeperPath = keeper ? keeper->path : QString();
            entry.size = member.size;
            entry.reclaimable = member.reclaimable;
            entry.contentHashHex = group.contentHash.hex();
            entry.groupID = group.id;
            entry.batchID = batchID;
            entry.movedAt = movedAt;
            entry.fileID = member.fileID;
            entry.mtimeNsec = member.mtimeNsec;
            entry.volumeUUID = volumeOfFolder.value(folder.folder);
            planned.append({entry, &member});
        }
    }
    return planned;
}

QString couldNotMove(int error)
{
    if (error == EXDEV)
        return QStringLiteral("The copy is on another volume than its vault folder — Velloru never copies a file "
                              "to remove it.");
    return QStringLiteral("Couldn’t move it into the vault — %1").arg(systemErrorSentence(error));
}

} // namespace

VaultMoveOutcome moveTickedCopies(const QList<DuplicateGroup>& groups, const VaultStore& store, VaultProgress& progress)
{
    VaultMoveOutcome outcome;
    const std::optional<FileLock> lock = store.lock();
    if (!lock) {
        outcome.result.abortedBecause
            = QStringLiteral("Couldn’t lock the vault’s list — %1 Nothing was moved.").arg(systemErrorSentence(errno));
        outcome.entries = store.read();
        return outcome;
    }
    const QList<VaultEntry> current = store.read();
    const QList<PlannedMove> planned = planMoves(groups, store, current, outcome.result.failed);
    progress.reset(planned.size());
    outcome.entries = current;
    if (planned.isEmpty())
        return outcome;

    // The planned entries are on the list before any file moves: if Velloru stops midway, the next start
    // finds each file either in the vault (its entry is there) or still at its origin (its entry is dropped).
    QList<VaultEntry> withPlanned = current;
    for (const PlannedMove& move : planned)
        withPlanned.append(move.entry);
    store.markUnfinished();
    if (const std::optional<QString> problem = store.write(withPlanned)) {
        store.markFinished();
        outcome.result.abortedBecause = VaultTexts::listNotSaved(*problem);
        return outcome;
    }

    VaultRename rename;
    QSet<QString> madeFolders;
    for (const PlannedMove& move : planned) {
        progress.advance();
        const DuplicateFile& file = *move.file;
        int error = 0;
        if (const std::optional<QString> change = changeSinceScan(file, error)) {
            outcome.result.abortedBecause = VaultTexts::changedWhileReviewing(QFileInfo(file.path).fileName(), *change);
            break;
        }
        if (error != 0) {
            outcome.result.failed.append({file.path, couldNotMove(error)});
            continue;
        }
        const QString parent = QFileInfo(move.entry.vaultPath).absolutePath();
        if (!madeFolders.contains(parent)) {
            if (!QDir().mkpath(parent)) {
                outcome.result.failed.append({file.path,
                    QStringLiteral("Couldn’t create the vault folder %1 — check that the volume has room and can be "
                                   "written to.")
                        .arg(parent)});
                continue;
            }
            madeFolders.insert(parent);
        }
        if (const int failure = rename.move(file.path, move.entry.vaultPath); failure != 0) {
            outcome.result.failed.append({file.path, couldNotMove(failure)});
            continue;
        }
        markOrigin(move.entry);
        outcome.result.moved.append(move.entry);
        outcome.result.bytesHeld += move.entry.reclaimable;
    }

    outcome.entries = current + outcome.result.moved;
    outcome.saveProblem = store.write(outcome.entries);
    if (!outcome.saveProblem)
        store.markFinished(); // otherwise the next start settles the planned entries that did not move
    logLine(QStringLiteral("vault move moved=%1 failed=%2 aborted=%3 bytesHeld=%4")
                .arg(outcome.result.moved.size())
                .arg(outcome.result.failed.size())
                .arg(outcome.result.abortedBecause ? 1 : 0)
                .arg(outcome.result.bytesHeld));
    return outcome;
}
