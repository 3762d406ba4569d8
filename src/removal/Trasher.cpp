#include "removal/Trasher.h"

#include "common/ByteCount.h"
#include "platform/FileAccess.h"
#include "platform/FileStatus.h"
#include "platform/Sandbox.h"
#include "platform/TrashStore.h"
#include "removal/AuditLog.h"
#include "removal/ItemSize.h"
#include "removal/PrivilegedTrash.h"
#include "removal/TrashTexts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>

namespace {

struct Attempt {
    QString trashedPath; // set when the item moved
    int error = 0;
    bool helperRefused = false;
    QString helperReason;
};

// The item's path with its parent folder resolved, the item itself left as it is (a link is trashed as
// the link).
QString resolvedPath(const QString& path)
{
    const QFileInfo item(QDir::cleanPath(expandTilde(path)));
    const QString parent = QFileInfo(item.absolutePath()).canonicalFilePath();
    if (parent.isEmpty())
        return item.absoluteFilePath();
    return parent == QLatin1String("/") ? parent + item.fileName() : parent + QLatin1Char('/') + item.fileName();
}

Attempt moveOne(const QString& path, PrivilegedTrash* helper)
{
    const auto status = statusAt(AT_FDCWD, QFile::encodeName(path).constData(), StatDetail::full);
    if (!status)
        return {{}, errno, false, {}};
    if (isInsideTrash(path))
        return {{}, EINVAL, false, {}};

    const QString parent = QFileInfo(path).absolutePath();
    const TrashFolderLookup lookup = trashFolderFor(parent, status->device);
    Attempt attempt;
    if (lookup.folder) {
        const TrashMove move = moveIntoTrash(path, *lookup.folder);
        if (move.error == 0)
            return {move.trashedPath, 0, false, {}};
        attempt.error = move.error;
    } else {
        attempt.error = lookup.error;
    }

    // Root-owned places are the helper's to move, when it is set up.
    if (helper && helper->isReady() && !canWriteInFolder(parent)) {
        const PrivilegedTrash::Outcome outcome = helper->moveToTrash(path, Trasher::helperTimeout);
        if (outcome.moved)
            return {outcome.trashedPath, 0, false, {}};
        attempt.helperRefused = true;
        attempt.helperReason = outcome.reason;
    }
    return attempt;
}

} // namespace

Trasher::Trasher(PrivilegedTrash* helper)
    : m_helper(helper)
{
}

TrashResult Trasher::moveToTrash(const QList<TrashItem>& items, std::stop_token stop) const
{
    TrashResult result;
    for (const TrashItem& item : items) {
        if (stop.stop_requested()) {
            result.failed.append({item.path, TrashTexts::stoppedBeforeTried()});
            continue;
        }
        const QString path = resolvedPath(item.path);
        const Attempt attempt = moveOne(path, m_helper);
        if (!attempt.trashedPath.isEmpty()) {
            result.succeeded.append(item);
            result.trashedURLs.insert(item.path, attempt.trashedPath);
            result.freed = checkedAdd(result.freed, item.size);
        } else {
            result.failed.append(
                {item.path, describeFailure(path, attempt.helperRefused, attempt.helperReason, attempt.error)});
        }
    }
    return result;
}

QString Trasher::describeFailure(const QString& path, bool helperRefused, const QString& helperReason, int error)
{
    const QByteArray local = QFile::encodeName(path);
    const auto status = statusAt(AT_FDCWD, local.constData(), StatDetail::full);
    if (!status)
        return TrashTexts::vanished();
    if (status->immutable || status->appendOnly)
        return TrashTexts::systemProtected();
    if (isInsideTrash(path))
        return TrashTexts::alreadyInTrash();

    // A read-only file system refuses root too; that is no question of ownership.
    const QString parent = QFileInfo(path).absolutePath();
    if (!canWriteInFolder(parent) && error != EROFS)
        return helperRefused ? TrashTexts::rootOwnedHelperRefused(helperReason) : TrashTexts::rootOwnedNoHelper();
    const QString home = QDir::homePath();
    if (runningSandboxed() && (path == home || path.startsWith(home + QLatin1Char('/'))))
        return TrashTexts::needsFullDiskAccess();
    return systemErrorSentence(error);
}

void recordTrashResult(AuditLog& log, const QString& feature, const TrashResult& result)
{
    QList<AuditLog::MovedItem> moved;
    for (const TrashItem& item : result.succeeded)
        moved.append({item.path, item.size, result.trashedURLs.value(item.path)});
    log.recordMoves(feature, moved);

    QList<AuditLog::FailedItem> failed;
    for (const TrashFailure& failure : result.failed)
        failed.append({failure.path, failure.reason});
    log.recordFailures(feature, failed);
}
