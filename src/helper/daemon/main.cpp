// velloru-helper: Velloru's privileged helper daemon. Runs as root (started by its systemd socket unit),
// serving the user recorded at installation and root.
#include "common/Log.h"
#include "helper/HelperProtocol.h"
#include "helper/daemon/HelperServer.h"
#include "platform/MaintenanceCommands.h"
#include "platform/SystemdHelperService.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace {

// The installer writes the user it installed for here, one uid per line.
const QString allowedUsersFile = QStringLiteral("/etc/velloru/helper-users");

QSet<unsigned> readAllowedUids(const QStringList& given)
{
    QSet<unsigned> uids;
    QStringList texts = given;
    QFile file(allowedUsersFile);
    if (given.isEmpty() && file.open(QIODevice::ReadOnly))
        texts = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString& text : texts) {
        bool ok = false;
        const unsigned uid = text.trimmed().toUInt(&ok);
        if (ok)
            uids.insert(uid);
    }
    return uids;
}

// Tests give their own task programs as JSON: {"task": [["program", "argument", …], …]}.
HelperOperations::TaskCommands readTasks(const QString& path)
{
    if (path.isEmpty())
        return defaultMaintenanceCommands();
    QFile file(path);
    HelperOperations::TaskCommands tasks;
    if (!file.open(QIODevice::ReadOnly))
        return tasks;
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    for (auto it = object.begin(); it != object.end(); ++it) {
        QList<QStringList> commands;
        for (const QJsonValue& command : it.value().toArray())
            commands.append(command.toVariant().toStringList());
        tasks.insert(it.key(), commands);
    }
    return tasks;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    qSetMessagePattern(QStringLiteral("%{message}"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Velloru's privileged helper."));
    parser.addHelpOption();
    const QCommandLineOption socket(QStringLiteral("socket"), QStringLiteral("Socket path."), QStringLiteral("path"),
        HelperProtocol::installedSocketPath);
    const QCommandLineOption allow(
        QStringLiteral("allow-uid"), QStringLiteral("A user to serve (besides root)."), QStringLiteral("uid"));
    const QCommandLineOption tasks(
        QStringLiteral("tasks"), QStringLiteral("Maintenance commands as JSON (tests)."), QStringLiteral("file"));
    const QCommandLineOption timeout(QStringLiteral("task-timeout"), QStringLiteral("Seconds a task may run."),
        QStringLiteral("seconds"), QStringLiteral("110"));
    const QCommandLineOption requestTimeLimit(QStringLiteral("request-time-limit"),
        QStringLiteral("Seconds a request may take to arrive once begun (tests)."), QStringLiteral("seconds"),
        QString::number(HelperServer::defaultRequestTimeLimit.count()));
    const QCommandLineOption mountRoot(QStringLiteral("mount-root"), QStringLiteral("Where mount points are made."),
        QStringLiteral("folder"), QStringLiteral("/mnt/velloru"));
    const QCommandLineOption install(QStringLiteral("install"), QStringLiteral("Install the helper (as root)."));
    const QCommandLineOption uninstall(QStringLiteral("uninstall"), QStringLiteral("Remove the helper (as root)."));
    const QCommandLineOption forUid(
        QStringLiteral("for-uid"), QStringLiteral("The user to install for."), QStringLiteral("uid"));
    parser.addOptions({socket, allow, tasks, timeout, requestTimeLimit, mountRoot, install, uninstall, forUid});
    parser.process(app);

    if (parser.isSet(install)) {
        bool ok = false;
        const unsigned uid = parser.value(forUid).toUInt(&ok);
        if (!ok) {
            helperLog(QStringLiteral("--install needs --for-uid"));
            return 2;
        }
        const auto problem = SystemdHelperService::installAsRoot(QCoreApplication::applicationFilePath(), uid);
        if (problem)
            qCritical().noquote() << problem->description;
        return problem ? SystemdHelperService::exitStatusFor(*problem) : 0;
    }
    if (parser.isSet(uninstall)) {
        const auto problem = SystemdHelperService::uninstallAsRoot();
        if (problem)
            qCritical().noquote() << problem->description;
        return problem ? SystemdHelperService::exitStatusFor(*problem) : 0;
    }

    HelperServer server(readAllowedUids(parser.values(allow)),
        HelperOperations(PathPolicy(), readTasks(parser.value(tasks)),
            std::chrono::seconds(parser.value(timeout).toInt()), parser.value(mountRoot)),
        HelperProtocol::version);
    server.setRequestTimeLimit(std::chrono::milliseconds(qRound(parser.value(requestTimeLimit).toDouble() * 1000)));
    // Started by systemd's socket unit, the helper serves the socket it was handed.
    const auto handed = systemdListeningSocket();
    if (const auto problem = handed ? server.adopt(*handed) : server.listen(parser.value(socket))) {
        helperLog(*problem);
        return 1;
    }
    QObject::connect(&server, &HelperServer::shutdownAccepted, &app, &QCoreApplication::quit, Qt::QueuedConnection);
    if (handed) {
        // Started on demand, the helper leaves once Velloru has been gone for a while.
        server.reportIdleAfter(std::chrono::minutes(10));
        QObject::connect(&server, &HelperServer::idle, &app, [] {
            helperLog(QStringLiteral("idle, exiting"));
            QCoreApplication::quit();
        });
    }
    return app.exec();
}
