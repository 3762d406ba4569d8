#include "removal/ItemSize.h"

#include "common/ByteCount.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

qint64 measureItemSize(const QString& path)
{
    const QFileInfo info(path);
    if (info.isSymLink() || !info.exists())
        return 0;
    if (!info.isDir())
        return info.size();

    qint64 sum = 0;
    QDirIterator it(
        path, QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo file = it.nextFileInfo();
        if (!file.isSymLink())
            sum = checkedAdd(sum, file.size());
    }
    return sum;
}

QString expandTilde(const QString& path)
{
    if (path == QLatin1String("~"))
        return QDir::homePath();
    if (path.startsWith(QLatin1String("~/")))
        return QDir::homePath() + path.mid(1);
    return path;
}
