#include "usage/WalkRoot.h"

#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

std::optional<QString> resolveWalkRoot(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isDir())
        return std::nullopt;
    const QString canonical = info.canonicalFilePath();
    if (canonical.isEmpty())
        return std::nullopt;
    return canonical;
}

std::unordered_set<std::string> defaultLeaveOut()
{
    return {"/proc", "/sys", "/dev", "/run"};
}

QList<VolumeChoice> mountedVolumes()
{
    QList<VolumeChoice> volumes;
    for (const QStorageInfo& storage : QStorageInfo::mountedVolumes()) {
        if (!storage.isValid() || !storage.isReady() || storage.bytesTotal() <= 0)
            continue;
        const QString name = storage.isRoot() ? QStringLiteral("/") : storage.displayName();
        const VolumeChoice choice{name, storage.rootPath()};
        if (storage.isRoot())
            volumes.prepend(choice);
        else
            volumes.append(choice);
    }
    return volumes;
}

QString fromFileName(const std::string& name)
{
    return QFile::decodeName(QByteArray::fromRawData(name.data(), qsizetype(name.size())));
}

std::string toFileName(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}
