#pragma once

#include "helper/daemon/PathPolicy.h"
#include "platform/TrashStore.h"

#include <QHash>
#include <QJsonObject>
#include <QStringList>

#include <chrono>
#include <functional>

// What the helper does for each request, as root. Each operation takes the request's arguments and the
// caller's user id and returns the reply object; none throws.
class HelperOperations {
public:
    // The command run for each maintenance task; tests replace them with their own programs.
    using TaskCommands = QHash<QString, QList<QStringList>>;

    // Reports a job's progress to its caller; called on the job's own thread.
    using Progress = std::function<void(const QJsonObject&)>;

    // `mountRoot`: the folder in which mount points are created.
    HelperOperations(PathPolicy policy, TaskCommands tasks, std::chrono::seconds taskTimeout, QString mountRoot);

    // Operations that may take long run off the server's thread.
    static bool isLong(const QString& op);

    QJsonObject perform(
        const QString& op, const QJsonObject& arguments, unsigned callerUid, const Progress& progress) const;

private:
    QJsonObject performMaintenance(const QString& task, const Progress& progress) const;
    QJsonObject moveItemsToTrash(const QJsonArray& paths, const QString& userTrash, unsigned callerUid) const;
    QJsonObject moveOneToTrash(const QString& path, const TrashOwner& owner) const;
    QJsonObject emptyTrash(const QJsonArray& folders, unsigned callerUid) const;
    QJsonObject existing(const QJsonArray& paths) const;
    QJsonObject listChildren(const QString& folder, bool includeHidden) const;
    QJsonObject sizesOfPaths(const QJsonArray& paths) const;

    PathPolicy m_policy;
    TaskCommands m_tasks;
    std::chrono::seconds m_taskTimeout;
    QString m_mountRoot;
};

// A TaskResult as the wire carries it.
QJsonObject taskResultJson(bool success, const QString& message, qint64 freedBytes = 0);
