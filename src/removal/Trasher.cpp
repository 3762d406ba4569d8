#include "removal/Trasher.h"

#include "common/ByteCount.h"
#include "common/LocalPath.h"
#include "platform/FileAccess.h"
#include "platform/FileStatus.h"
#include "platform/FolderHandle.h"
#include "platform/Sandbox.h"
#include "platform/TrashStore.h"
#include "removal/ItemSize.h"
#include "removal/PrivilegedTrash.h"
#include "removal/TrashRecorder.h"
#include "removal/TrashTexts.h"

#include <QDir>
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

Attempt failedWith(int error)
{
    return {{}, error, false, {}};
}

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

bool holds(const QString& folder, const QString& path)
{
    return folder == QLatin1String("/") || path.startsWith(folder + QLatin1Char('/'));
}

// Moves the item by hand into the Trash of its volume, journaling the move before it happens.
// `item` carries the resolved path, which is also what the journal records.
Attempt moveByHand(const TrashItem& item, TrashRecorder* recorder)
{
    const QString& path = item.path;
    const QFileInfo info(path);
    const auto parentPath = LocalPath::encode(info.absolutePath());
    const auto name = LocalPath::encode(info.fileName());
    if (!parentPath || !name)
        return failedWith(EILSEQ);
    const auto parent = FolderHandle::open(*parentPath);
    if (!parent)
        return failedWith(errno);
    const auto status = parent->childStatus(*name);
    if (!status)
        return failedWith(errno);
    if (isInsideTrash(path))
        return failedWith(EINVAL);

    const TrashOpening opening = openTrashFor(info.absolutePath(), status->device);
    if (!opening.trash)
        return failedWith(opening.error);
    bool announced = false;
    const TrashMove move = moveIntoTrash(*parent, *name, path, *opening.trash, [&](const QString& trashedPath) {
        if (recorder)
            recorder->willMove(item, trashedPath);
        announced = true;
    });
    if (move.error == 0)
        return {move.trashedPath, 0, false, {}};
    if (announced && recorder)
        recorder->didNotMove(item);
    return failedWith(move.error);
}

Attempt moveOne(const TrashItem& item, PrivilegedTrash* helper, TrashRecorder* recorder)
{
    const QString& path = item.path;
    Attempt attempt = moveByHand(item, recorder);
    if (!attempt.trashedPath.isEmpty() || attempt.error == ENOENT || attempt.error == EILSEQ || attempt.error == EINVAL)
        return attempt;

    // Root-owned places are the helper's to move, when it is set up.
    const QString parent = QFileInfo(path).absolutePath();
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

TrashResult Trasher::moveToTrash(const QList<TrashItem>& items, TrashRecorder* recorder, std::stop_token stop) const
{
    TrashResult result;
    const auto fail = [&](const TrashItem& item, const TrashItem& resolved, const QString& reason) {
        result.failed.append({item.path, reason});
        if (recorder)
            recorder->failed(resolved, reason);
    };
    // Refused outright: nothing was tried, so there is no failed removal to record either.
    const auto refuse = [&](const TrashItem& item, const QString& reason) {
        result.failed.append({item.path, reason});
    };
    for (const TrashItem& item : items) {
        if (stop.stop_requested()) {
            result.failed.append({item.path, TrashTexts::stoppedBeforeTried()});
            continue;
        }
        const TrashItem resolved{resolvedPath(item.path), item.size};
        if (const auto refused = refusal(resolved.path)) {
            refuse(item, *refused);
            continue;
        }
        const Attempt attempt = moveOne(resolved, m_helper, recorder);
        if (attempt.trashedPath.isEmpty()) {
            fail(item, resolved,
                describeFailure(resolved.path, attempt.helperRefused, attempt.helperReason, attempt.error));
            continue;
        }
        result.succeeded.append(item);
        result.trashedURLs.insert(item.path, attempt.trashedPath);
        result.freed = checkedAdd(result.freed, item.size);
        if (recorder)
            recorder->moved(resolved, attempt.trashedPath);
    }
    return result;
}

std::optional<QString> Trasher::refusal(const QString& absolutePath)
{
    if (absolutePath == QLatin1String("/"))
        return TrashTexts::wholeFileSystem();
    // Compared as written and as resolved: a home folder reached through a link is still the home folder.
    const auto bothForms = [](const QString& path) {
        const QString canonical = QFileInfo(path).canonicalFilePath();
        return QStringList{path, canonical.isEmpty() ? path : canonical};
    };
    for (const QString& home : bothForms(QDir::homePath())) {
        if (absolutePath == home)
            return TrashTexts::homeFolder();
        if (holds(absolutePath, home))
            return TrashTexts::holdsHomeFolder();
    }
    for (const QString& trash : bothForms(homeTrashPath()))
        if (absolutePath == trash || holds(absolutePath, trash))
            return TrashTexts::holdsTrash();
    return std::nullopt;
}

QString Trasher::describeFailure(const QString& path, bool helperRefused, const QString& helperReason, int error)
{
    const auto local = LocalPath::encode(path);
    if (!local || error == EILSEQ)
        return TrashTexts::unnamable();
    const auto status = statusAt(AT_FDCWD, local->constData(), StatDetail::full);
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
