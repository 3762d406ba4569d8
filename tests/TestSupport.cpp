#include "TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QProcess>

#include <filesystem>

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

FixtureTree::FixtureTree() = default;

FixtureTree::~FixtureTree()
{
    std::error_code error;
    std::filesystem::remove_all(QFile::encodeName(m_dir.path()).toStdString(), error);
}

QString FixtureTree::path(const QString& relative) const
{
    return relative.isEmpty() ? m_dir.path() : m_dir.filePath(relative);
}

QString FixtureTree::write(const QString& relative, const QByteArray& content)
{
    const QString file = path(relative);
    QDir().mkpath(QFileInfo(file).absolutePath());
    QFile out(file);
    if (out.open(QIODevice::WriteOnly))
        out.write(content);
    return file;
}

QString FixtureTree::makeFolder(const QString& relative)
{
    QDir().mkpath(path(relative));
    return path(relative);
}

namespace {

QMutex captureLock;
QStringList captured;
QtMessageHandler previousHandler = nullptr;

void captureHandler(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    {
        QMutexLocker guard(&captureLock);
        captured.append(message);
    }
    if (previousHandler)
        previousHandler(type, context, message);
}

} // namespace

LogCapture::LogCapture()
{
    QMutexLocker guard(&captureLock);
    captured.clear();
    previousHandler = qInstallMessageHandler(captureHandler);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(previousHandler);
}

QStringList LogCapture::lines() const
{
    QMutexLocker guard(&captureLock);
    return captured;
}

bool LogCapture::contains(const QString& fragment) const
{
    for (const QString& line : lines())
        if (line.contains(fragment))
            return true;
    return false;
}

namespace {

bool setEffectiveCapabilities(bool withFileAccess)
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    if (::syscall(SYS_capget, &header, data) != 0)
        return false;
    const auto mask = (1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH);
    data[0].effective = withFileAccess ? (data[0].effective | (data[0].permitted & mask)) : (data[0].effective & ~mask);
    return ::syscall(SYS_capset, &header, data) == 0;
}

} // namespace

FileAccessChecksEnforced::FileAccessChecksEnforced()
    : m_dropped(runningAsRoot() && setEffectiveCapabilities(false))
{
}

FileAccessChecksEnforced::~FileAccessChecksEnforced()
{
    if (m_dropped)
        setEffectiveCapabilities(true);
}

bool runningAsRoot()
{
    return geteuid() == 0;
}

std::optional<TmpfsMount> TmpfsMount::mount(const QString& where, const QString& options)
{
    if (!runningAsRoot())
        return std::nullopt;
    QDir().mkpath(where);
    if (::mount("velloru-test", where.toLocal8Bit().constData(), "tmpfs", 0, options.toLocal8Bit().constData()) != 0)
        return std::nullopt;
    return TmpfsMount(where);
}

TmpfsMount::TmpfsMount(TmpfsMount&& other) noexcept
    : m_path(std::exchange(other.m_path, {}))
{
}

TmpfsMount::~TmpfsMount()
{
    if (!m_path.isEmpty())
        ::umount2(m_path.toLocal8Bit().constData(), MNT_DETACH);
}

bool TmpfsMount::remount(const QString& options) const
{
    const unsigned long flags = MS_REMOUNT | (options.contains(QLatin1String("ro")) ? MS_RDONLY : 0);
    return ::mount("velloru-test", m_path.toLocal8Bit().constData(), "tmpfs", flags, nullptr) == 0;
}

QByteArray readWholeFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFileNamedBytes(const QByteArray& path, const QByteArray& content)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    const bool written = ::write(fd, content.constData(), std::size_t(content.size())) == content.size();
    return ::close(fd) == 0 && written;
}

bool makeFolderNamedBytes(const QByteArray& path)
{
    return ::mkdir(path.constData(), 0755) == 0;
}

CommandRun runVelloru(const QStringList& arguments, const QList<QPair<QString, QString>>& environment)
{
    return runProgram(QStringLiteral(VELLORU_BINARY), arguments, environment);
}

CommandRun runProgram(
    const QString& program, const QStringList& arguments, const QList<QPair<QString, QString>>& environment)
{
    QProcess process;
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : environment)
        variables.insert(name, value);
    process.setProcessEnvironment(variables);
    process.start(program, arguments);
    if (!process.waitForFinished(120'000))
        process.kill();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
        QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

HelperOnSocket::HelperOnSocket(const QByteArray& tasks, const QProcessEnvironment& environment)
    : m_socket(m_tree.path(QStringLiteral("helper.sock")))
{
    QStringList arguments{
        QStringLiteral("--socket"), m_socket, QStringLiteral("--allow-uid"), QString::number(::getuid())};
    if (!tasks.isNull())
        arguments << QStringLiteral("--tasks") << m_tree.write(QStringLiteral("tasks.json"), tasks);
    m_daemon.setProcessEnvironment(environment);
    m_daemon.setProcessChannelMode(QProcess::MergedChannels);
    m_daemon.start(QStringLiteral(VELLORU_HELPER_BINARY), arguments);
    QElapsedTimer waited;
    waited.start();
    // Waiting for its end a moment at a time notices a helper that gave up at once.
    while (!QFileInfo::exists(m_socket) && m_daemon.state() != QProcess::NotRunning && waited.elapsed() < 10'000)
        m_daemon.waitForFinished(20);
    m_listening = QFileInfo::exists(m_socket);
}

HelperOnSocket::~HelperOnSocket()
{
    m_daemon.kill();
    m_daemon.waitForFinished();
}
