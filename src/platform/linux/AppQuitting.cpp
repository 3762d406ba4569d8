#include "platform/AppQuitting.h"

#include <QDir>
#include <QFile>
#include <QThread>

#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QList<pid_t> ownProcessesNamed(const QStringList& names)
{
    QList<pid_t> pids;
    const uid_t me = ::getuid();
    for (const QString& entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool numeric = false;
        const pid_t pid = entry.toInt(&numeric);
        if (!numeric)
            continue;
        struct stat status;
        if (::stat(QFile::encodeName(QStringLiteral("/proc/") + entry).constData(), &status) != 0
            || status.st_uid != me)
            continue;
        QFile comm(QStringLiteral("/proc/%1/comm").arg(entry));
        if (comm.open(QIODevice::ReadOnly) && names.contains(QString::fromUtf8(comm.readAll()).trimmed()))
            pids.append(pid);
    }
    return pids;
}

} // namespace

bool quitProcessesNamed(const QStringList& names, std::chrono::milliseconds timeout)
{
    const QList<pid_t> running = ownProcessesNamed(names);
    for (const pid_t pid : running)
        ::kill(pid, SIGTERM);
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!ownProcessesNamed(names).isEmpty()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        QThread::msleep(100);
    }
    return true;
}
