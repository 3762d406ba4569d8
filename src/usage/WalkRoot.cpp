#include "usage/WalkRoot.h"

#include "common/LocalPath.h"
#include "usage/UsageTexts.h"

#include <QFile>
#include <QStorageInfo>

#include <filesystem>

ResolvedRoot resolveWalkRoot(const QString& path)
{
    const std::optional<QByteArray> bytes = LocalPath::encode(path);
    std::error_code error;
    const std::filesystem::path given(bytes.value_or(QByteArray()).toStdString());
    const std::string canonical = bytes ? std::filesystem::canonical(given, error).string() : std::string();
    if (!bytes || error || !std::filesystem::is_directory(canonical, error))
        return {std::nullopt, UsageTexts::noSuchFolder(path)};
    if (!isExactFileName(canonical))
        return {std::nullopt, UsageTexts::badFolderName(fromFileName(canonical))};
    return {fromFileName(canonical), {}};
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
    const QByteArrayView bytes(name.data(), qsizetype(name.size()));
    return LocalPath::decode(bytes).value_or(LocalPath::printable(bytes));
}

bool isExactFileName(const std::string& name)
{
    return LocalPath::isRepresentable(QByteArrayView(name.data(), qsizetype(name.size())));
}

std::string toFileName(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}
