#include "helper/daemon/HelperOperations.h"

#include "common/ByteCount.h"
#include "helper/HelperProtocol.h"
#include "helper/daemon/CommandRunner.h"
#include "helper/daemon/SystemControl.h"
#include "platform/FileAccess.h"
#include "platform/FileStatus.h"
#include "platform/MaintenanceCommands.h"
#include "platform/TrashStore.h"
#include "removal/ItemSize.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QStorageInfo>

#include <cerrno>
#include <fcntl.h>

namespace {

void helperLog(const QString& message)
{
    qInfo().noquote() << QStringLiteral("Velloru helper: ") + message;
}

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
        return taskResultJson(false, QStringLiteral("The tool for this task isn’t installed on this system."));

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

QJsonObject HelperOperations::moveItemsToTrash(
    const QJsonArray& paths, const QString& userTrash, unsigned callerUid) const
{
    if (const auto refusal = m_policy.refuseUserTrash(userTrash, callerUid))
        return {{QStringLiteral("error"), *refusal}};
    const TrashOwner owner{callerUid, QFileInfo(userTrash).canonicalFilePath()};
    QJsonArray outcomes;
    for (const QJsonValue& value : paths) {
        const QString path = value.toString();
        QJsonObject outcome{{QStringLiteral("path"), path}, {QStringLiteral("moved"), false}};
        if (const auto refusal = m_policy.refuseMove(path, callerUid)) {
            outcome.insert(QStringLiteral("reason"), *refusal);
        } else {
            const QString real = QFileInfo(QFileInfo(path).absolutePath()).canonicalFilePath() + QLatin1Char('/')
                + QFileInfo(path).fileName();
            const auto status = statusAt(AT_FDCWD, QFile::encodeName(real).constData(), StatDetail::identity);
            const TrashFolderLookup lookup = status
                ? trashFolderFor(QFileInfo(real).absolutePath(), status->device, owner)
                : TrashFolderLookup{std::nullopt, errno};
            const TrashMove move = lookup.folder ? moveIntoTrash(real, *lookup.folder) : TrashMove{{}, lookup.error};
            if (move.error == 0) {
                outcome.insert(QStringLiteral("moved"), true);
                outcome.insert(QStringLiteral("trashPath"), move.trashedPath);
            } else {
                outcome.insert(QStringLiteral("reason"), systemErrorSentence(move.error));
            }
        }
        helperLog(QStringLiteral("trash path=%1 uid=%2 moved=%3")
                      .arg(path)
                      .arg(callerUid)
                      .arg(outcome.value(u"moved").toBool()));
        outcomes.append(outcome);
    }
    return {{QStringLiteral("items"), outcomes}};
}

QJsonObject HelperOperations::emptyTrash(const QJsonArray& folders, unsigned callerUid) const
{
    qint64 freed = 0;
    int emptied = 0;
    for (const QJsonValue& value : folders) {
        const QString folder = value.toString();
        if (const auto refusal = m_policy.refuseTrashToEmpty(folder, callerUid))
            return taskResultJson(false, *refusal, freed);
        for (const QString& part : {QStringLiteral("/files"), QStringLiteral("/info")}) {
            const QDir contents(folder + part);
            for (const QFileInfo& entry :
                contents.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
                const qint64 size = measureItemSize(entry.absoluteFilePath());
                // Links are removed as links; a folder's contents go with it, links inside never followed.
                const bool removed = entry.isDir() && !entry.isSymLink()
                    ? QDir(entry.absoluteFilePath()).removeRecursively()
                    : QFile::remove(entry.absoluteFilePath());
                if (removed && part == QLatin1String("/files"))
                    freed += size;
            }
        }
        ++emptied;
        helperLog(QStringLiteral("emptied trash=%1 uid=%2").arg(folder).arg(callerUid));
    }
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
    QDir::Filters filters = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System;
    if (includeHidden)
        filters |= QDir::Hidden;
    QJsonArray names;
    for (const QString& name : QDir(folder).entryList(filters, QDir::Name))
        names.append(name);
    return {{QStringLiteral("children"), names}};
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
