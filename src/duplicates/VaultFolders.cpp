#include "duplicates/VaultFolders.h"

#include "duplicates/VaultTexts.h"
#include "platform/FileAccess.h"
#include "platform/FileStatus.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>

namespace {

const QString volumeVault = QStringLiteral("/.Velloru/Duplicates Vault");

std::optional<std::uint64_t> deviceOf(const QString& path)
{
    const std::optional<FileStatus> status = statusAt(AT_FDCWD, QFile::encodeName(path).constData());
    return status ? std::optional(status->device) : std::nullopt;
}

} // namespace

VaultFolders::VaultFolders(QString homeVault)
    : m_homeVault(std::move(homeVault))
{
    const QString dataFolder = QFileInfo(m_homeVault).absolutePath();
    QDir().mkpath(dataFolder);
    m_homeDevice = deviceOf(dataFolder).value_or(0);
    m_mounts = readMountTable();
}

VaultFolder VaultFolders::folderFor(const QString& path)
{
    const QString parent = QFileInfo(path).absolutePath();
    const std::optional<std::uint64_t> device = deviceOf(parent);
    if (!device || *device == m_homeDevice)
        return {m_homeVault, {}}; // a copy that cannot be looked at fails later, when it is checked
    if (const auto known = m_byDevice.constFind(*device); known != m_byDevice.cend())
        return *known;

    VaultFolder answer{m_homeVault, {}};
    const QString resolved = QFileInfo(parent).canonicalFilePath();
    if (const std::optional<MountPoint> mount = mountHolding(m_mounts, resolved)) {
        const QString top = mount->path == QLatin1String("/") ? QString() : mount->path;
        const QString folder = top + volumeVault;
        if (QFileInfo(folder).isDir() || canWriteInFolder(mount->path))
            answer = {folder, {}};
        else
            answer = {{}, VaultTexts::volumeNotWritable(mount->path)};
    }
    m_byDevice.insert(*device, answer);
    return answer;
}

QString VaultFolders::folderHolding(const QString& vaultPath, const QString& homeVault)
{
    if (vaultPath.startsWith(homeVault + QLatin1Char('/')))
        return homeVault;
    const qsizetype at = vaultPath.indexOf(volumeVault + QLatin1Char('/'));
    return at < 0 ? QString() : vaultPath.left(at + volumeVault.size());
}
