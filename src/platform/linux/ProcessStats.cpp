#include "platform/ProcessStats.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <ctime>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr qint64 kernelThreadFlag = 0x00200000; // PF_KTHREAD

// Reads a small /proc file relative to `dirFd` whole (its text is made when it is read, so one read gives a
// consistent line); the number of bytes, or -1 when it cannot be read.
ssize_t readSmall(int dirFd, const char* name, char* buffer, size_t size)
{
    const int fd = ::openat(dirFd, name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0)
        return -1;
    ssize_t got;
    do
        got = ::read(fd, buffer, size);
    while (got < 0 && errno == EINTR);
    ::close(fd);
    return got;
}

// Steps through the space-separated fields after the command name.
class FieldCursor {
public:
    FieldCursor(const char* begin, const char* end)
        : m_at(begin)
        , m_end(end)
    {
    }

    // Skips to field `index` (0 is the state letter) and reads it as a number.
    std::optional<qint64> number(int index)
    {
        while (m_index < index && m_at < m_end) {
            if (*m_at++ == ' ')
                ++m_index;
        }
        if (m_index != index || m_at >= m_end)
            return std::nullopt;
        qint64 value = 0;
        const auto [next, error] = std::from_chars(m_at, m_end, value);
        if (error != std::errc())
            return std::nullopt;
        m_at = next;
        return value;
    }

private:
    const char* m_at;
    const char* m_end;
    int m_index = 0;
};

// The effective uid on the "Uid:" line of a status file.
std::optional<unsigned> effectiveUidFromStatus(const QByteArray& status)
{
    const qsizetype at = status.indexOf("\nUid:");
    if (at < 0)
        return std::nullopt;
    const qsizetype end = status.indexOf('\n', at + 1);
    const QList<QByteArray> ids = status.mid(at + 5, end < 0 ? -1 : end - at - 5).simplified().split(' ');
    bool ok = false;
    const unsigned uid = ids.value(1).toUInt(&ok);
    return ok ? std::optional(uid) : std::nullopt;
}

// The real owner of a process whose folder shows as root's.
unsigned ownerFromStatus(int procFd, std::string_view pidName)
{
    char path[64];
    std::snprintf(path, sizeof path, "%.*s/status", int(pidName.size()), pidName.data());
    char status[4096];
    const ssize_t length = readSmall(procFd, path, status, sizeof status);
    if (length <= 0)
        return 0;
    return effectiveUidFromStatus(QByteArray::fromRawData(status, length)).value_or(0);
}

bool isMember(unsigned gid)
{
    if (::getegid() == gid)
        return true;
    gid_t groups[256];
    const int count = ::getgroups(256, groups);
    return std::find(groups, groups + std::max(count, 0), gid_t(gid)) != groups + std::max(count, 0);
}

} // namespace

std::optional<ProcessStat> parseProcessStat(const QByteArray& line, qint64 pageSize)
{
    // The command name may hold spaces and parentheses, so it runs from the first '(' to the last ')'.
    const qsizetype open = line.indexOf('(');
    const qsizetype close = line.lastIndexOf(')');
    if (open < 1 || close < open || close + 2 >= line.size())
        return std::nullopt;
    ProcessStat stat;
    bool ok = false;
    stat.pid = line.left(open).trimmed().toInt(&ok);
    if (!ok)
        return std::nullopt;
    stat.command = line.mid(open + 1, close - open - 1);
    const char* fields = line.constData() + close + 2;
    stat.state = fields[0];
    FieldCursor cursor(fields, line.constData() + line.size());
    // Field numbers as proc(5) counts them, less 3: the state letter is field 3.
    const auto parent = cursor.number(4 - 3);
    const auto flags = cursor.number(9 - 3);
    const auto userTime = cursor.number(14 - 3);
    const auto systemTime = cursor.number(15 - 3);
    const auto nice = cursor.number(19 - 3);
    const auto start = cursor.number(22 - 3);
    const auto residentPages = cursor.number(24 - 3);
    if (!parent || !flags || !userTime || !systemTime || !nice || !start || !residentPages)
        return std::nullopt;
    stat.parentPid = int(*parent);
    stat.isKernelThread = (*flags & kernelThreadFlag) != 0;
    stat.cpuTicks = quint64(*userTime + *systemTime);
    stat.nice = int(*nice);
    stat.startTicks = quint64(*start);
    stat.residentBytes = *residentPages * pageSize;
    return stat;
}

ProcessStatReader::ProcessStatReader(QString procRoot)
    : m_procRoot(std::move(procRoot))
    , m_listing(std::make_unique<std::byte[]>(directoryBufferSize))
{
    // Half of what this process may open, so the rest of Velloru never runs short.
    rlimit limit{};
    m_heldBudget = ::getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY
        ? qsizetype(limit.rlim_cur / 2)
        : 512;
}

ProcessStatReader::~ProcessStatReader()
{
    for (const int fd : std::as_const(m_held))
        ::close(fd);
}

ProcessTableRead ProcessStatReader::read()
{
    ProcessTableRead table;
    auto listing = DirectoryReader::open(
        AT_FDCWD, QFile::encodeName(m_procRoot).constData(), std::span(m_listing.get(), directoryBufferSize));
    if (!listing)
        return table;
    static const qint64 pageSize = ::sysconf(_SC_PAGESIZE);
    const bool asRoot = ::geteuid() == 0;
    QHash<QPair<int, quint64>, unsigned> stillUndumpable;
    QHash<int, int> stillHeld;
    char line[2048];
    char path[64];
    DirectoryEntry entry;
    while (listing->next(entry)) {
        int pid = 0;
        const auto [end, error] = std::from_chars(entry.name.data(), entry.name.data() + entry.name.size(), pid);
        if (error != std::errc() || end != entry.name.data() + entry.name.size())
            continue;
        // The folder's owner is the process's owner now (looking the folder up brings it up to date).
        struct stat folder;
        if (::fstatat(listing->fd(), entry.name.data(), &folder, AT_SYMLINK_NOFOLLOW) != 0)
            continue; // ended since it was listed
        // A stat file held open from an earlier sample is read again without a path lookup. It stays bound to
        // its process: once that process ends it reads nothing, even when a new one gets the same pid.
        ssize_t length = -1;
        int held = -1;
        if (const auto found = m_held.constFind(pid); found != m_held.constEnd()) {
            held = *found;
            m_held.erase(found);
            length = ::pread(held, line, sizeof line, 0);
            if (length <= 0) {
                ::close(held);
                held = -1;
            }
        }
        if (held < 0) {
            std::snprintf(path, sizeof path, "%d/stat", pid);
            held = ::openat(listing->fd(), path, O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
            if (held < 0 && (errno == EACCES || errno == EPERM))
                ++table.unreadable;
            if (held < 0)
                continue;
            length = ::read(held, line, sizeof line);
        }
        if (length > 0 && stillHeld.size() < m_heldBudget)
            stillHeld.insert(pid, held);
        else
            ::close(held);
        auto stat = length > 0 ? parseProcessStat(QByteArray::fromRawData(line, length), pageSize) : std::nullopt;
        if (!stat)
            continue;
        stat->uid = folder.st_uid;
        if (folder.st_uid == 0 && !asRoot) {
            const QPair<int, quint64> identity(pid, stat->startTicks);
            stat->uid = m_undumpableOwners.contains(identity) ? m_undumpableOwners.value(identity)
                                                              : ownerFromStatus(listing->fd(), entry.name);
            stillUndumpable.insert(identity, stat->uid);
        }
        table.processes.append(std::move(*stat));
    }
    for (const int fd : std::as_const(m_held))
        ::close(fd); // processes that ended
    m_held = std::move(stillHeld);
    m_undumpableOwners = std::move(stillUndumpable);
    return table;
}

double clockTicksPerSecond()
{
    static const double ticks = double(::sysconf(_SC_CLK_TCK));
    return ticks;
}

double secondsSinceBoot()
{
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

bool procHidesOtherUsers(const QString& procRoot)
{
    if (::geteuid() == 0)
        return false;
    QFile mounts(QStringLiteral("/proc/self/mountinfo"));
    if (!mounts.open(QIODevice::ReadOnly))
        return false;
    const QByteArray where = QFile::encodeName(QDir(procRoot).canonicalPath());
    QByteArray options;
    // The last mount at that place is the one that shows.
    for (const QByteArray& line : mounts.readAll().split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype separator = fields.indexOf("-");
        if (fields.size() < 5 || separator < 0 || separator + 3 >= fields.size())
            continue;
        if (fields[4] == where && fields[separator + 1] == "proc")
            options = fields[separator + 3];
    }
    bool hides = false;
    std::optional<unsigned> allowedGroup;
    for (const QByteArray& option : options.split(',')) {
        if (option.startsWith("hidepid="))
            hides = option != "hidepid=0" && option != "hidepid=off";
        else if (option.startsWith("gid="))
            allowedGroup = option.mid(4).toUInt();
    }
    return hides && !(allowedGroup && isMember(*allowedGroup));
}
