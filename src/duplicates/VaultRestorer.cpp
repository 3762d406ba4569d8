#include "duplicates/VaultRestorer.h"

#include "common/Log.h"
#include "duplicates/VaultNames.h"
#include "duplicates/VaultOrigin.h"
#include "duplicates/VaultRename.h"
#include "duplicates/VaultStore.h"
#include "duplicates/VaultTexts.h"
#include "platform/FileAccess.h"
#include "platform/FileStatus.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>

namespace {

bool isTaken(const QString& path)
{
    return statusAt(AT_FDCWD, QFile::encodeName(path).constData(), StatDetail::identity).has_value() || errno != ENOENT;
}

// Moves the held copy back; the path it went to, or the sentence saying why it stayed.
std::variant<QString, VaultFailure> putBack(const VaultEntry& entry, VaultRename& rename)
{
    if (!statusAt(AT_FDCWD, QFile::encodeName(entry.vaultPath).constData(), StatDetail::identity))
        return VaultFailure{entry.originalPath, VaultTexts::noLongerInVault()};
    const QString parent = QFileInfo(entry.originalPath).absolutePath();
    if (!QDir().mkpath(parent))
        return VaultFailure{entry.originalPath,
            QStringLiteral("Couldn’t create the folder %1 to put it back in — check that it can be written to.")
                .arg(parent)};
    // Someone may take the chosen name between the look and the rename; the rename never replaces, so
    // the next free name is tried.
    for (int attempt = 0; attempt < 16; ++attempt) {
        const QString target = firstFreeName(entry.originalPath, isTaken);
        const int error = rename.move(entry.vaultPath, target);
        if (error == 0) {
            clearOrigin(target);
            return target;
        }
        if (error != EEXIST)
            return VaultFailure{
                entry.originalPath, QStringLiteral("Couldn’t put it back — %1").arg(systemErrorSentence(error))};
    }
    return VaultFailure{entry.originalPath,
        QStringLiteral("Couldn’t put it back — every free name beside it was taken at once. Try again.")};
}

} // namespace

VaultRestoreOutcome restoreEntries(const QSet<QUuid>& ids, const VaultStore& store, VaultProgress& progress)
{
    VaultRestoreOutcome outcome;
    const std::optional<FileLock> lock = store.lock();
    outcome.entries = store.read();
    if (!lock) {
        outcome.result.failed.append({store.listPath(),
            QStringLiteral("Couldn’t lock the vault’s list — %1 Nothing was put back.")
                .arg(systemErrorSentence(errno))});
        return outcome;
    }
    const auto wanted = [&ids](const VaultEntry& entry) { return ids.isEmpty() || ids.contains(entry.id); };
    progress.reset(std::count_if(outcome.entries.cbegin(), outcome.entries.cend(), wanted));

    // The files move before the list loses their entries: if Velloru stops midway, the next start drops the
    // entries of files that are already back.
    store.markUnfinished();
    VaultRename rename;
    QSet<QUuid> restored;
    for (const VaultEntry& entry : outcome.entries) {
        if (!wanted(entry))
            continue;
        progress.advance();
        const std::variant<QString, VaultFailure> result = putBack(entry, rename);
        if (const auto* failure = std::get_if<VaultFailure>(&result)) {
            outcome.result.failed.append(*failure);
            continue;
        }
        const QString& target = std::get<QString>(result);
        restored.insert(entry.id);
        ++outcome.result.restored;
        outcome.putBack.append({target, entry.size});
        if (target != entry.originalPath)
            outcome.result.renamed.append({entry.originalPath, target});
    }
    if (restored.isEmpty()) {
        store.markFinished();
        return outcome;
    }
    outcome.entries.removeIf([&restored](const VaultEntry& entry) { return restored.contains(entry.id); });
    outcome.saveProblem = store.write(outcome.entries);
    if (!outcome.saveProblem)
        store.markFinished();
    logLine(QStringLiteral("vault restore restored=%1 renamed=%2 failed=%3")
                .arg(outcome.result.restored)
                .arg(outcome.result.renamed.size())
                .arg(outcome.result.failed.size()));
    return outcome;
}
