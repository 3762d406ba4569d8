#include "platform/SystemdHelperService.h"

#include "common/AtomicFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <unistd.h>

namespace {

const QString unitFolder = QStringLiteral("/etc/systemd/system");
const QString socketUnit = QStringLiteral("velloru-helper.socket");
const QString serviceUnit = QStringLiteral("velloru-helper.service");
const QString usersFile = QStringLiteral("/etc/velloru/helper-users");

struct ToolRun {
    int status = -1;
    QString output;
};

ToolRun runTool(const QString& program, const QStringList& arguments, int timeoutMs = 60'000)
{
    const QString found = QStandardPaths::findExecutable(program);
    if (found.isEmpty())
        return {-1, QStringLiteral("%1 is not installed").arg(program)};
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(found, arguments);
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        return {-1, QStringLiteral("%1 did not finish").arg(program)};
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
        QString::fromLocal8Bit(process.readAll()).trimmed()};
}

QByteArray socketUnitText()
{
    return "[Unit]\n"
           "Description=Velloru privileged helper socket\n\n"
           "[Socket]\n"
           "ListenStream=/run/velloru/helper.sock\n"
           "SocketMode=0666\n"
           "RemoveOnStop=yes\n\n"
           "[Install]\n"
           "WantedBy=sockets.target\n";
}

QByteArray serviceUnitText()
{
    return "[Unit]\n"
           "Description=Velloru privileged helper\n"
           "Requires=velloru-helper.socket\n\n"
           "[Service]\n"
           "ExecStart="
        + QFile::encodeName(SystemdHelperService::installedProgram()) + "\n";
}

} // namespace

SystemdHelperService::SystemdHelperService(QString helperProgram)
    : m_helperProgram(std::move(helperProgram))
{
}

QString SystemdHelperService::installedProgram()
{
    return QStringLiteral("/usr/local/libexec/velloru/velloru-helper");
}

HelperService::Status SystemdHelperService::status()
{
    if (!QFileInfo::exists(unitFolder + QLatin1Char('/') + socketUnit))
        return Status::notInstalled;
    const ToolRun enabled = runTool(QStringLiteral("systemctl"), {QStringLiteral("is-enabled"), socketUnit}, 10'000);
    return enabled.status == 0 ? Status::enabled : Status::installedNotEnabled;
}

std::optional<QString> SystemdHelperService::install()
{
    const unsigned uid = ::getuid();
    if (uid == 0)
        return installAsRoot(m_helperProgram, uid);
    const ToolRun approved = runTool(QStringLiteral("pkexec"),
        {m_helperProgram, QStringLiteral("--install"), QStringLiteral("--for-uid"), QString::number(uid)}, 300'000);
    if (approved.status == 0)
        return std::nullopt;
    return QStringLiteral("The helper couldn’t be installed — %1.")
        .arg(approved.output.isEmpty() ? QStringLiteral("the approval was not given") : approved.output);
}

std::optional<QString> SystemdHelperService::installAsRoot(const QString& fromProgram, unsigned uid)
{
    // A root daemon must never run a file its user could change, so the program is copied somewhere only
    // root can write.
    const QString target = installedProgram();
    QDir().mkpath(QFileInfo(target).absolutePath());
    QFile::remove(target + QStringLiteral(".new"));
    if (!QFile::copy(fromProgram, target + QStringLiteral(".new")))
        return QStringLiteral("Couldn’t copy %1 to %2.").arg(fromProgram, target);
    QFile::setPermissions(target + QStringLiteral(".new"),
        QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner | QFileDevice::ReadGroup
            | QFileDevice::ExeGroup | QFileDevice::ReadOther | QFileDevice::ExeOther);
    QFile::remove(target);
    if (!QFile::rename(target + QStringLiteral(".new"), target))
        return QStringLiteral("Couldn’t put the helper at %1.").arg(target);

    for (const auto& [path, text] : {std::pair{unitFolder + QLatin1Char('/') + socketUnit, socketUnitText()},
             std::pair{unitFolder + QLatin1Char('/') + serviceUnit, serviceUnitText()},
             std::pair{usersFile, QByteArray::number(uid) + '\n'}})
        if (const auto problem = writeFileAtomically(path, text))
            return problem;

    const ToolRun reload = runTool(QStringLiteral("systemctl"), {QStringLiteral("daemon-reload")});
    const ToolRun enable
        = runTool(QStringLiteral("systemctl"), {QStringLiteral("enable"), QStringLiteral("--now"), socketUnit});
    if (reload.status != 0 || enable.status != 0)
        return QStringLiteral("systemd didn’t enable the helper — %1")
            .arg(enable.output.isEmpty() ? reload.output : enable.output);
    return std::nullopt;
}

std::optional<int> systemdListeningSocket()
{
    // systemd passes sockets from descriptor 3 on, naming the process they are meant for.
    if (qEnvironmentVariable("LISTEN_PID").toLongLong() != ::getpid() || qEnvironmentVariable("LISTEN_FDS").toInt() < 1)
        return std::nullopt;
    return 3;
}
