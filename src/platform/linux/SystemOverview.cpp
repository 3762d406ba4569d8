#include "platform/SystemOverview.h"

#include <QFile>
#include <QStorageInfo>

namespace {

// A "Name:   1234 kB" line of /proc/meminfo, in bytes.
std::optional<qint64> meminfoValue(const QByteArray& meminfo, const QByteArray& name)
{
    for (const QByteArray& line : meminfo.split('\n')) {
        if (!line.startsWith(name + ':'))
            continue;
        bool ok = false;
        const qint64 kilobytes = line.mid(name.size() + 1).trimmed().split(' ').first().toLongLong(&ok);
        return ok ? std::optional<qint64>(kilobytes * 1024) : std::nullopt;
    }
    return std::nullopt;
}

} // namespace

SystemOverview readSystemOverview(const QString& path)
{
    SystemOverview overview;
    const QStorageInfo volume(path);
    if (volume.isValid() && volume.isReady()) {
        overview.diskTotal = volume.bytesTotal();
        overview.diskFree = volume.bytesAvailable();
    }
    QFile meminfo(QStringLiteral("/proc/meminfo"));
    if (meminfo.open(QIODevice::ReadOnly)) {
        const QByteArray text = meminfo.readAll();
        overview.memoryTotal = meminfoValue(text, "MemTotal");
        overview.memoryAvailable = meminfoValue(text, "MemAvailable");
    }
    return overview;
}
