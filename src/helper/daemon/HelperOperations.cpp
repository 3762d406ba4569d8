#include "helper/daemon/HelperOperations.h"

#include "common/ByteCount.h"
#include "helper/HelperProtocol.h"
#include "platform/FileAccess.h"
#include "platform/FileStatus.h"
#include "platform/MaintenanceCommands.h"
#include "platform/TrashStore.h"
#include "removal/ItemSize.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QProcess>
#include <QStandardPaths>
#include <QStorageInfo>

#include <cerrno>
#include <fcntl.h>

namespace {

void helperLog(const QString& message)
{
    qInfo().noquote() << QStringLiteral("Velloru helper: ") + message;
}

QString notInThisVersion(const QString& op)
{
    return QStringLiteral("“%1” isn’t available in this version of the helper yet.").arg(op);
}

struct CommandOutcome {
    bool ran = false; // false when the program is not installed
    bool succeeded = false;
    QString problem;
};

// Runs one command without a shell, killing it at the time limit.
CommandOutcome runCommand(const QStringList& command, std::chrono::seconds timeout)
{
    const QString program = QStandardPaths::findExecutable(command.first());
    if (program.isEmpty())
        return {};
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, command.mid(1));
    if (!process.waitForFinished(int(std::chrono::milliseconds(timeout).count()))) {
        process.kill();
        process.waitForFinished(2000);
        return {true, false, QStringLiteral("%1 didn’t finish in time").arg(command.first())};
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return {true, false, QStringLiteral("%1 failed (exit status %2)").arg(command.first()).arg(process.exitCode())};
    return {true, true, {}};
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

HelperOperations::HelperOperations(PathPolicy policy, TaskCommands tasks, std::chrono::seconds taskTimeout)
    : m_policy(std::move(policy))
    , m_tasks(std::move(tasks))
    , m_taskTimeout(taskTimeout)
{
}

bool HelperOperations::isLong(const QString& op)
{
    return op == HelperProtocol::Op::performMaintenance || op == HelperProtocol::Op::sizesOfPaths
        || op == HelperProtocol::Op::moveItemsToTrash;
}

QJsonObject HelperOperations::perform(const QString& op, const QJsonObject& arguments, unsigned callerUid) const
{
    namespace Op = HelperProtocol::Op;
    if (op == Op::performMaintenance)
        return performMaintenance(arguments.value(u"task").toString());
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
    if (op == Op::firstAid || op == Op::flashImage || op == Op::cloneDisk || op == Op::cloneDiskContents)
        return taskResultJson(false, notInThisVersion(op));
    return {{QStringLiteral("error"), QStringLiteral("The helper has no operation “%1”.").arg(op)}};
}

QJsonObject HelperOperations::performMaintenance(const QString& task) const
{
    const auto commands = m_tasks.constFind(task);
    if (commands == m_tasks.cend())
        return taskResultJson(false, QStringLiteral("There is no maintenance task “%1”.").arg(task));

    const QStorageInfo root(QStringLiteral("/"));
    const qint64 freeBefore = root.bytesAvailable();
    const auto cachedBefore = cachedFileMemory();
    int ran = 0;
    for (const QStringList& command : *commands) {
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
