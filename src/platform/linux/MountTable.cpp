#include "platform/MountTable.h"

#include <QFile>

#include <sys/sysmacros.h>

namespace {

// mountinfo writes space, tab, newline and backslash in paths as octal escapes ("\040").
QString unescapeMountField(const QByteArray& field)
{
    QByteArray out;
    out.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            bool ok = false;
            const int value = field.mid(i + 1, 3).toInt(&ok, 8);
            if (ok) {
                out += char(value);
                i += 3;
                continue;
            }
        }
        out += field[i];
    }
    return QString::fromUtf8(out);
}

} // namespace

QList<MountPoint> readMountTable()
{
    QFile file(QStringLiteral("/proc/self/mountinfo"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QList<MountPoint> mounts;
    // Fields: id parent major:minor root mountpoint options [optional fields…] - fstype source superoptions
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype separator = fields.indexOf("-");
        if (fields.size() < 5 || separator < 0 || separator + 2 >= fields.size())
            continue;
        const QList<QByteArray> numbers = fields[2].split(':');
        if (numbers.size() != 2)
            continue;
        MountPoint mount;
        mount.path = unescapeMountField(fields[4]);
        mount.fileSystemType = QString::fromUtf8(fields[separator + 1]);
        mount.source = unescapeMountField(fields[separator + 2]);
        mount.device = makedev(numbers[0].toUInt(), numbers[1].toUInt());
        mounts.append(mount);
    }
    return mounts;
}

std::optional<MountPoint> mountHolding(const QList<MountPoint>& mounts, const QString& path)
{
    std::optional<MountPoint> best;
    for (const MountPoint& mount : mounts) {
        const bool holds = mount.path == QLatin1String("/") || path == mount.path
            || (path.startsWith(mount.path) && path.at(mount.path.size()) == QLatin1Char('/'));
        // Later entries win on a tie: a mount stacked on the same folder hides the earlier one.
        if (holds && (!best || mount.path.size() >= best->path.size()))
            best = mount;
    }
    return best;
}
