#include "helper/daemon/HelperOperations.h"

#include "common/ByteCount.h"
#include "common/LocalPath.h"
#include "common/Log.h"
#include "helper/HelperProtocol.h"
#include "helper/daemon/CommandRunner.h"
#include "helper/daemon/SystemControl.h"
#include "platform/DirectoryReader.h"
#include "platform/FileAccess.h"
#include "platform/FileStatus.h"
#include "platform/FolderHandle.h"
#include "platform/MaintenanceCommands.h"
#include "platform/TrashStore.h"
#include "platform/TreeRemoval.h"
#include "removal/ItemSize.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QStorageInfo>

#include <cerrno>
#include <fcntl.h>
#include <vector>

namespace {

QString notInThisEdition(const QString& op)
{
    return QStringLiteral("“%1” isn’t available in this edition of Velloru yet.").arg(op);
}

QJsonArray pathsOf(const QJsonValue& value)
{
    return value.isArray() ? value.toArray() : QJsonArray();
}

} // namespace

QJsonObject taskResultJson(bool success, const QString& message, qint64 freedBytes)
{
    return {{QStringLiteral("success"), success}, {QStringLiteral("message"), message},
        {QStringLiteral("freedBytes"), freedBytes}};
}

HelperOperations::HelperOperations(
    PathPolicy policy, TaskCommands tasks, std::chrono::seconds taskTimeout, QString mountRoot)
    : m_policy(std::move(policy))
    , m_tasks(std::move(tasks))
    , m_taskTimeout(taskTimeout)
    , m_mountRoot(std::move(mountRoot))
{
}

bool HelperOperations::isLong(const QString& op)
{
    namespace Op = HelperProtocol::Op;
    return op == Op::performMaintenance || op == Op::sizesOfPaths || op == Op::moveItemsToTrash || op == Op::emptyTrash
        || op == Op::processMemory || op == Op::setUnitEnabled;
}

QJsonObject HelperOperations::perform(
    const QString& op, const QJsonObject& arguments, unsigned callerUid, const Progress& progress) const
{
    namespace Op = HelperProtocol::Op;
    if (op == Op::performMaintenance)
        return performMaintenance(arguments.value(u"task").toString(), progress);
    if (op == Op::existing)
        return existing(pathsOf(arguments.value(u"paths")));
    if (op == Op::listChildren)
        return listChildren(arguments.value(u"folder").toString(), arguments.value(u"includeHidden").toBool());
    if (op == Op::sizesOfPaths)
        return sizesOfPaths(pathsOf(arguments.value(u"paths")));
    if (op == Op::emptyTrash)
        return emptyTrash(pathsOf(arguments.value(u"trashFolders")), callerUid);
    if (op == Op::moveItemsToTrash)
        return moveItemsToTrash(
            pathsOf(arguments.value(u"paths")), arguments.value(u"userTrash").toString(), callerUid);
    if (op == Op::signalProcess)
        return signalProcess(arguments.value(u"pid").toInt(), arguments.value(u"signal").toInt());
    if (op == Op::setProcessPriority)
        return setProcessPriority(arguments.value(u"pid").toInt(), arguments.value(u"nice").toInt(100));
    if (op == Op::processMemory)
        return processMemory();
    if (op == Op::setUnitEnabled)
        return setUnitEnabled(arguments.value(u"unit").toString(), arguments.value(u"enabled").toBool(), m_taskTimeout);
    if (op == Op::createMountpoint)
        return createMountpoint(
            m_mountRoot, arguments.value(u"name").toString(), arguments.value(u"uid").toInteger(-1), callerUid);
    if (op == Op::cancelFlash)
        return taskResultJson(false, QStringLiteral("Nothing is being written to a drive."));
    if (op == Op::firstAid || op == Op::flashImage || op == Op::cloneDisk || op == Op::cloneDiskContents)
        return taskResultJson(false, notInThisEdition(op));
    return {{QStringLiteral("error"), QStringLiteral("The helper has no operation “%1”.").arg(op)}};
}

namespace {

// Names the programs a task could not find and the packages that install them.
QString missingToolsSentence(const QList<QStringList>& commands)
{
    QStringList programs, packages;
    for (const QStringList& command : commands) {
        programs.append(command.first());
        if (!packages.contains(packageProviding(command.first())))
            packages.append(packageProviding(command.first()));
    }
    if (programs.size() == 1)
        return QStringLiteral("This task needs %1, which isn’t installed — install the %2 package, then try again.")
            .arg(programs.first(), packages.first());
    return QStringLiteral("This task needs %1, none of which is installed — install the %2 packages, then try again.")
        .arg(programs.join(QStringLiteral(" or ")), packages.join(QStringLiteral(" and ")));
}

} // namespace

QJsonObject HelperOperations::performMaintenance(const QString& task, const Progress& progress) const
{
    const auto commands = m_tasks.constFind(task);
    if (commands == m_tasks.cend())
        return taskResultJson(false, QStringLiteral("There is no maintenance task “%1”.").arg(task));

    const QStorageInfo root(QStringLiteral("/"));
    const qint64 freeBefore = root.bytesAvailable();
    const auto cachedBefore = cachedFileMemory();
    int ran = 0;
    for (qsizetype done = 0; done < commands->size(); ++done) {
        const QStringList& command = commands->at(done);
        progress({{QStringLiteral("step"), command.join(u' ')}, {QStringLiteral("done"), done},
            {QStringLiteral("total"), commands->size()}});
        const CommandOutcome outcome = runCommand(command, m_taskTimeout);
        if (outcome.ran && !outcome.succeeded)
            return taskResultJson(false, outcome.problem + QLatin1Char('.'));
        ran += outcome.ran ? 1 : 0;
    }
    if (task == QLatin1String("purgeMemory") && !dropCleanPageCache())
        return taskResultJson(false, QStringLiteral("The kernel refused to drop cached memory."));
    if (ran == 0 && task != QLatin1String("purgeMemory"))
        return taskResultJson(false, missingToolsSentence(*commands));

    if (task == QLatin1String("thinSnapshots")) {
        QStorageInfo after(QStringLiteral("/"));
        const qint64 freed = std::max<qint64>(0, after.bytesAvailable() - freeBefore);
        return taskResultJson(true, QStringLiteral("Old journal files and cached packages removed."), freed);
    }
    if (task == QLatin1String("purgeMemory")) {
        const auto cachedAfter = cachedFileMemory();
        const qint64 released = cachedBefore && cachedAfter ? std::max<qint64>(0, *cachedBefore - *cachedAfter) : 0;
        return taskResultJson(true, QStringLiteral("Cached file memory released."), released);
    }
    return taskResultJson(true, QStringLiteral("Done."));
}

namespace {

// The parent folder of `path`, held open, with its real path as the kernel resolved it, and the item's
// name in it; or the sentence saying why the path cannot be used.
struct HeldItem {
    std::optional<FolderHandle> parent;
    QByteArray name;
    QString realPath;
    QString realParent;
    QString refusal;
};

HeldItem holdItem(const QString& path)
{
    HeldItem held;
    const auto encoded = LocalPath::encode(path);
    if (!encoded || !QDir::isAbsolutePath(path)) {
        held.refusal = QStringLiteral("%1 is not a full path inside an existing folder.").arg(path);
        return held;
    }
    const QFileInfo item(QDir::cleanPath(path));
    const auto name = LocalPath::encode(item.fileName());
    if (!name || name->isEmpty() || *name == "." || *name == "..") {
        held.refusal = QStringLiteral("%1 does not name a file or folder.").arg(path);
        return held;
    }
    held.parent = FolderHandle::open(*LocalPath::encode(item.absolutePath()));
    const auto realParentBytes = held.parent ? held.parent->currentPath() : std::nullopt;
    const auto realParent = realParentBytes ? LocalPath::decode(*realParentBytes) : std::nullopt;
    if (!realParent) {
        held.refusal = QStringLiteral("%1 is not a full path inside an existing folder.").arg(path);
        held.parent.reset();
        return held;
    }
    held.name = *name;
    held.realParent = *realParent;
    held.realPath = (*realParent == QLatin1String("/") ? QString() : *realParent) + QLatin1Char('/') + item.fileName();
    return held;
}

QJsonObject refusedItem(const QString& path, const QString& reason)
{
    return {{QStringLiteral("path"), path}, {QStringLiteral("moved"), false}, {QStringLiteral("reason"), reason}};
}

} // namespace

QJsonObject HelperOperations::moveItemsToTrash(
    const QJsonArray& paths, const QString& userTrash, unsigned callerUid) const
{
    const auto trashBytes = LocalPath::encode(userTrash);
    const auto trash = trashBytes ? FolderHandle::open(*trashBytes) : std::nullopt;
    const auto trashReal = trash ? trash->currentPath() : std::nullopt;
    const auto trashStatus = trash ? trash->status() : std::nullopt;
    const auto trashText = trashReal ? LocalPath::decode(*trashReal) : std::nullopt;
    if (!trashText || !trashStatus)
        return {{QStringLiteral("error"), QStringLiteral("%1 is not a Trash folder of yours.").arg(userTrash)}};
    if (const auto refusal = PathPolicy::refuseUserTrash(*trashText, *trashStatus, callerUid))
        return {{QStringLiteral("error"), *refusal}};
    const TrashOwner owner{callerUid, *trashText};

    QJsonArray outcomes;
    for (const QJsonValue& value : paths) {
        const QString path = value.toString();
        const QJsonObject outcome = moveOneToTrash(path, owner);
        logLine(QStringLiteral("trash path=%1 uid=%2 moved=%3")
                    .arg(logValue(path))
                    .arg(callerUid)
                    .arg(outcome.value(u"moved").toBool()),
            LogSource::helper);
        outcomes.append(outcome);
    }
    return {{QStringLiteral("items"), outcomes}};
}

QJsonObject HelperOperations::moveOneToTrash(const QString& path, const TrashOwner& owner) const
{
    const HeldItem held = holdItem(path);
    if (!held.parent)
        return refusedItem(path, held.refusal);
    if (const auto refusal = m_policy.refuseMove(held.realPath, owner.uid))
        return refusedItem(path, *refusal);
    // Decided on the descriptors the move then uses: a rename in the meantime cannot swap another item in.
    const auto parentStatus = held.parent->status();
    const auto itemStatus = held.parent->childStatus(held.name);
    if (!parentStatus || !itemStatus)
        return refusedItem(path, systemErrorSentence(errno));
    if (const auto refusal = PathPolicy::refuseOwnership(held.realPath, *itemStatus, *parentStatus, owner.uid))
        return refusedItem(path, *refusal);
    if (isInsideTrash(held.realPath))
        return refusedItem(path, QStringLiteral("%1 is in a Trash already.").arg(held.realPath));

    const TrashOpening opening = openTrashFor(held.realParent, itemStatus->device, owner);
    const TrashMove move = opening.trash ? moveIntoTrash(*held.parent, held.name, held.realPath, *opening.trash)
                                         : TrashMove{{}, opening.error};
    if (move.error != 0)
        return refusedItem(path, systemErrorSentence(move.error));
    return {{QStringLiteral("path"), path}, {QStringLiteral("moved"), true},
        {QStringLiteral("trashPath"), move.trashedPath}};
}

QJsonObject HelperOperations::emptyTrash(const QJsonArray& folders, unsigned callerUid) const
{
    qint64 freed = 0;
    int emptied = 0;
    int leftBehind = 0;
    int firstError = 0;
    for (const QJsonValue& value : folders) {
        const QString folder = value.toString();
        const auto encoded = LocalPath::encode(folder);
        const auto trash = encoded ? FolderHandle::open(*encoded) : std::nullopt;
        const auto realBytes = trash ? trash->currentPath() : std::nullopt;
        const auto real = realBytes ? LocalPath::decode(*realBytes) : std::nullopt;
        const auto status = trash ? trash->status() : std::nullopt;
        if (!real || !status)
            return taskResultJson(false, QStringLiteral("%1 is not a Trash folder of yours.").arg(folder), freed);
        if (const auto refusal = PathPolicy::refuseTrashToEmpty(*real, *status, callerUid))
            return taskResultJson(false, *refusal, freed);
        if (real->endsWith(QStringLiteral("/.Trash/") + QString::number(callerUid))) {
            // A volume's shared Trash is only trusted with the sticky bit, as when items were moved there.
            const auto shared = trash->openChild("..");
            const auto sharedStatus = shared ? shared->status() : std::nullopt;
            if (!sharedStatus || !sharedStatus->isSticky())
                return taskResultJson(false, QStringLiteral("%1 is not a Trash folder of yours.").arg(folder), freed);
        }
        for (const char* part : {"files", "info"}) {
            const auto contents = trash->openChild(part);
            const auto partStatus = contents ? contents->status() : std::nullopt;
            if (!partStatus) {
                if (errno != ENOENT)
                    return taskResultJson(
                        false, QStringLiteral("%1 is not a Trash folder of yours.").arg(folder), freed);
                continue;
            }
            if (partStatus->uid != callerUid)
                return taskResultJson(false, QStringLiteral("%1 is not a Trash folder of yours.").arg(folder), freed);
            const TreeRemoval removal = removeContents(*contents);
            if (qstrcmp(part, "files") == 0)
                freed += removal.removedBytes;
            leftBehind += removal.leftBehind;
            if (firstError == 0)
                firstError = removal.firstError;
        }
        ++emptied;
        logLine(
            QStringLiteral("emptied trash=%1 uid=%2 leftBehind=%3").arg(logValue(*real)).arg(callerUid).arg(leftBehind),
            LogSource::helper);
    }
    if (leftBehind > 0)
        return taskResultJson(false,
            QStringLiteral("%1 %2 couldn’t be deleted — %3")
                .arg(leftBehind)
                .arg(leftBehind == 1 ? QStringLiteral("item") : QStringLiteral("items"))
                .arg(systemErrorSentence(firstError)),
            freed);
    return taskResultJson(true,
        emptied == 1 ? QStringLiteral("The Trash is empty.") : QStringLiteral("%1 Trash folders emptied.").arg(emptied),
        freed);
}

QJsonObject HelperOperations::existing(const QJsonArray& paths) const
{
    QJsonArray present;
    for (const QJsonValue& value : paths) {
        const QString path = value.toString();
        if (!m_policy.refuseRead(path) && (QFileInfo::exists(path) || QFileInfo(path).isSymLink()))
            present.append(path);
    }
    return {{QStringLiteral("existing"), present}};
}

QJsonObject HelperOperations::listChildren(const QString& folder, bool includeHidden) const
{
    if (const auto refusal = m_policy.refuseRead(folder))
        return {{QStringLiteral("error"), *refusal}};
    const auto encoded = LocalPath::encode(folder);
    const auto held = encoded ? FolderHandle::open(*encoded) : std::nullopt;
    if (!held)
        return {{QStringLiteral("error"), systemErrorSentence(encoded ? errno : EILSEQ)}};
    // Names with no exact text form are counted, never passed on in a form that names another file.
    QJsonArray names;
    int unrepresentable = 0;
    std::vector<std::byte> buffer(directoryBufferSize);
    auto reader = DirectoryReader::open(held->fd(), ".", buffer);
    DirectoryEntry entry;
    while (reader && reader->next(entry)) {
        const QByteArrayView bytes(entry.name.data(), qsizetype(entry.name.size()));
        if (!includeHidden && bytes.startsWith('.'))
            continue;
        if (const auto name = LocalPath::decode(bytes))
            names.append(*name);
        else
            ++unrepresentable;
    }
    return {{QStringLiteral("children"), names}, {QStringLiteral("unrepresentable"), unrepresentable}};
}

QJsonObject HelperOperations::sizesOfPaths(const QJsonArray& paths) const
{
    QJsonObject sizes;
    for (const QJsonValue& value : paths) {
        const QString path = value.toString();
        if (!m_policy.refuseRead(path))
            sizes.insert(path, measureItemSize(path));
    }
    return {{QStringLiteral("sizes"), sizes}};
}
