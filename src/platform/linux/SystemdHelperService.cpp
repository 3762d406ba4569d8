#include "platform/SystemdHelperService.h"

#include "common/AtomicFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <cstdio>
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
// The status of a tool that is not installed.
constexpr int notFound = -2;

ToolRun runTool(const QString& program, const QStringList& arguments, int timeoutMs = 60'000)
{
    const QString found = QStandardPaths::findExecutable(program);
    if (found.isEmpty())
        return {notFound, QStringLiteral("%1 is not installed").arg(program)};
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

SystemdHelperService::SystemdHelperService()
    : m_helperProgram(QCoreApplication::applicationDirPath() + QStringLiteral("/velloru-helper"))
{
}

QString SystemdHelperService::installedProgram()
{
    return QStringLiteral("/usr/local/libexec/velloru/velloru-helper");
}

HelperService::Status SystemdHelperService::status()
{
    // Read from the unit files rather than asked of systemctl: the window reads this whenever a page that
    // needs the helper is shown, and two file checks cost nothing where a child process could take seconds.
    // An enabled socket unit is the link its [Install] section asks for, which is what "systemctl
    // is-enabled" looks for too.
    if (!QFileInfo::exists(unitFolder + QLatin1Char('/') + socketUnit))
        return Status::notInstalled;
    return QFileInfo::exists(unitFolder + QStringLiteral("/sockets.target.wants/") + socketUnit)
        ? Status::enabled
        : Status::installedNotEnabled;
}

namespace {

const QString installerDomain = QStringLiteral("velloru-helper");
// The exit status of "velloru-helper --install" when systemd refused; any other failure exits with 1.
constexpr int serviceManagerRefused = 3;

// What systemd said, as a sentence that says what to do. A machine not started by systemd (a container,
// say) cannot start the helper's socket at all; that is worth saying plainly.
QString systemctlFailure(const QStringList& arguments, const QString& output, unsigned forUid)
{
    const QString startByHand = forUid == 0
        ? SystemdHelperService::installedProgram()
        : QStringLiteral("%1 --allow-uid %2").arg(SystemdHelperService::installedProgram()).arg(forUid);
    if (output.contains(QLatin1String("not been booted with systemd"))
        || output.contains(QLatin1String("Failed to connect to bus")))
        return QStringLiteral("Couldn’t switch the helper on — this computer wasn’t started by systemd, which starts "
                              "the helper when Velloru calls it. Start it yourself as root with “%1”, or use a "
                              "system started by systemd.")
            .arg(startByHand);
    return QStringLiteral("Couldn’t switch the helper on — “systemctl %1” answered: %2")
        .arg(arguments.join(u' '), output.isEmpty() ? QStringLiteral("nothing") : output);
}

// `forUid` is the user the helper is being installed for (0 when removing it).
std::optional<HelperService::Error> systemctl(const QStringList& arguments, unsigned forUid = 0)
{
    const ToolRun run = runTool(QStringLiteral("systemctl"), arguments);
    if (run.status == 0)
        return std::nullopt;
    return HelperService::Error{
        HelperService::serviceManagerDomain, run.status, systemctlFailure(arguments, run.output, forUid)};
}

// Why pkexec did not run the installer, as a sentence that says what to do.
QString approvalFailure(const ToolRun& run)
{
    if (run.status == notFound)
        return QStringLiteral("Couldn’t install the helper — pkexec isn’t installed, so Velloru can’t ask for an "
                              "administrator. Install the pkexec package (policykit-1 on older systems), then try "
                              "again.");
    if (run.output.contains(QLatin1String("authentication agent")))
        return QStringLiteral("Couldn’t install the helper — no password prompt for administrators is running in "
                              "this session. Run “sudo velloru helper install” in a terminal, then come back.");
    if (run.status == 126)
        return QStringLiteral("Couldn’t install the helper — the administrator’s approval was dismissed. Press the "
                              "button again and approve it.");
    return QStringLiteral("Couldn’t install the helper — the administrator’s approval was not given. Press the "
                          "button again and enter an administrator’s password.");
}

// Runs the helper's own installer or remover as root, through pkexec unless Velloru already is root.
std::optional<HelperService::Error> asAdministrator(const QString& helperProgram, const QStringList& arguments)
{
    const ToolRun run = runTool(QStringLiteral("pkexec"), QStringList{helperProgram} + arguments, 300'000);
    if (run.status == 0)
        return std::nullopt;
    // pkexec itself answers 126 when the approval was dismissed and 127 when it was not given.
    if (run.status == 126 || run.status == 127 || run.status < 0)
        return HelperService::Error{QStringLiteral("pkexec"), run.status, approvalFailure(run)};
    return HelperService::Error{
        run.status == serviceManagerRefused ? HelperService::serviceManagerDomain : installerDomain, run.status,
        run.output};
}

} // namespace

std::optional<HelperService::Error> SystemdHelperService::registerService()
{
    const unsigned uid = ::getuid();
    if (uid == 0)
        return installAsRoot(m_helperProgram, uid);
    return asAdministrator(
        m_helperProgram, {QStringLiteral("--install"), QStringLiteral("--for-uid"), QString::number(uid)});
}

std::optional<HelperService::Error> SystemdHelperService::unregisterService()
{
    if (::getuid() == 0)
        return uninstallAsRoot();
    return asAdministrator(installedProgram(), {QStringLiteral("--uninstall")});
}

int SystemdHelperService::exitStatusFor(const Error& error)
{
    return error.domain == serviceManagerDomain ? serviceManagerRefused : 1;
}

std::optional<HelperService::Error> SystemdHelperService::installAsRoot(const QString& fromProgram, unsigned uid)
{
    const auto failed = [](const QString& description) { return Error{installerDomain, 1, description}; };
    // A root daemon must never run a file its user could change, so the program is copied somewhere only
    // root can write.
    const QString target = installedProgram();
    const QString staged = target + QStringLiteral(".new");
    QDir().mkpath(QFileInfo(target).absolutePath());
    QFile::remove(staged);
    if (!QFile::copy(fromProgram, staged))
        return failed(QStringLiteral("Couldn’t copy %1 to %2.").arg(fromProgram, target));
    QFile::setPermissions(staged,
        QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner | QFileDevice::ReadGroup
            | QFileDevice::ExeGroup | QFileDevice::ReadOther | QFileDevice::ExeOther);
    // A rename replaces the program even while an older helper is still running it.
    if (::rename(QFile::encodeName(staged).constData(), QFile::encodeName(target).constData()) != 0)
        return failed(QStringLiteral("Couldn’t put the helper at %1.").arg(target));

    for (const auto& [path, text] : {std::pair{unitFolder + QLatin1Char('/') + socketUnit, socketUnitText()},
             std::pair{unitFolder + QLatin1Char('/') + serviceUnit, serviceUnitText()},
             std::pair{usersFile, QByteArray::number(uid) + '\n'}})
        if (const auto problem = writeFileAtomically(path, text))
            return failed(*problem);

    if (auto refused = systemctl({QStringLiteral("daemon-reload")}, uid))
        return refused;
    return systemctl({QStringLiteral("enable"), QStringLiteral("--now"), socketUnit}, uid);
}

std::optional<HelperService::Error> SystemdHelperService::uninstallAsRoot()
{
    // Stopping the socket first means nothing starts the daemon again while it is being removed. Without
    // a running systemd there is nothing to stop, so only the files decide whether the helper is gone.
    systemctl({QStringLiteral("disable"), QStringLiteral("--now"), socketUnit});
    systemctl({QStringLiteral("stop"), serviceUnit});
    for (const QString& path : {unitFolder + QLatin1Char('/') + socketUnit, unitFolder + QLatin1Char('/') + serviceUnit,
             usersFile, installedProgram()})
        if (QFileInfo::exists(path) && !QFile::remove(path))
            return Error{installerDomain, 1, QStringLiteral("Couldn’t remove %1.").arg(path)};
    QDir().rmdir(QFileInfo(usersFile).absolutePath());
    QDir().rmdir(QFileInfo(installedProgram()).absolutePath());
    systemctl({QStringLiteral("daemon-reload")});
    return std::nullopt;
}

std::optional<int> systemdListeningSocket()
{
    // systemd passes sockets from descriptor 3 on, naming the process they are meant for.
    if (qEnvironmentVariable("LISTEN_PID").toLongLong() != ::getpid() || qEnvironmentVariable("LISTEN_FDS").toInt() < 1)
        return std::nullopt;
    return 3;
}
