#include "platform/PackageDatabase.h"

#include <QDir>
#include <QFile>

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
