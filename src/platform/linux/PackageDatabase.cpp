#include "platform/PackageDatabase.h"

#include <QDir>
#include <QFile>
#include <QHash>

QSet<QString> packagedDesktopEntries(const QString& dpkgInfoFolder)
{
    QSet<QString> paths;
    const QDir folder(dpkgInfoFolder);
    const QStringList lists = folder.entryList({QStringLiteral("*.list")}, QDir::Files);
    for (const QString& name : lists) {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QByteArray content = file.readAll();
        // Only the few lines naming desktop entries matter; most lists have none.
        if (!content.contains(".desktop"))
            continue;
        for (const QByteArray& line : content.split('\n'))
            if (line.endsWith(".desktop"))
                paths.insert(QString::fromUtf8(line));
    }
    return paths;
}

namespace {

// The names of the list files ("name.list" or "name:arch.list") of the operating system's packages.
QStringList operatingSystemPackageLists(const QByteArray& status)
{
    QStringList lists;
    QHash<QByteArray, QByteArray> fields;
    const auto finish = [&] {
        const QByteArray package = fields.value("Package");
        const QByteArray source = fields.value("Source").split(' ').value(0);
        const bool installed = fields.value("Status").endsWith(" installed");
        const bool system = fields.value("Essential") == "yes" || fields.value("Priority") == "required"
            || source == "systemd" || package == "systemd";
        if (installed && system && !package.isEmpty()) {
            const QString name = QString::fromUtf8(package);
            lists.append(name + QStringLiteral(".list"));
            lists.append(
                name + QLatin1Char(':') + QString::fromUtf8(fields.value("Architecture")) + QStringLiteral(".list"));
        }
        fields.clear();
    };
    for (const QByteArray& line : status.split('\n')) {
        if (line.isEmpty()) {
            finish();
            continue;
        }
        if (line.startsWith(' ') || line.startsWith('\t'))
            continue;
        const qsizetype colon = line.indexOf(':');
        if (colon > 0)
            fields.insert(line.left(colon), line.mid(colon + 1).trimmed());
    }
    finish();
    return lists;
}

} // namespace

QSet<QString> operatingSystemFiles(const QString& dpkgFolder)
{
    QSet<QString> paths;
    QFile status(dpkgFolder + QStringLiteral("/status"));
    if (!status.open(QIODevice::ReadOnly))
        return paths;
    for (const QString& name : operatingSystemPackageLists(status.readAll())) {
        QFile list(dpkgFolder + QStringLiteral("/info/") + name);
        if (!list.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray& line : list.readAll().split('\n'))
            if (!line.isEmpty())
                paths.insert(QString::fromUtf8(line));
    }
    return paths;
}
