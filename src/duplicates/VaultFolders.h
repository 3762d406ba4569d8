#pragma once

#include "platform/MountTable.h"

#include <QHash>
#include <QList>
#include <QString>

#include <cstdint>

// Where a copy can be held: a vault folder, or the sentence saying why it cannot be held.
struct VaultFolder {
    QString folder;
    QString failure;
};

// Which vault folder holds a copy. A copy never leaves its volume, so moving it is always a rename: copies
// on the data folder's volume go to the home vault, copies on any other volume to that volume's own vault
// at its mount point (".Velloru/Duplicates Vault"). Reads the mount table once; keep one per operation.
class VaultFolders {
public:
    explicit VaultFolders(QString homeVault);

    VaultFolder folderFor(const QString& path);

    // The vault folder that `vaultPath` lies in: the home vault, or a volume's own vault.
    static QString folderHolding(const QString& vaultPath, const QString& homeVault);
    // Where a copy from `originalPath` is kept inside `folder`: its whole path rebuilt under it.
    static QString pathInside(const QString& folder, const QString& originalPath) { return folder + originalPath; }

private:
    QString m_homeVault;
    std::uint64_t m_homeDevice = 0;
    QList<MountPoint> m_mounts;
    QHash<std::uint64_t, VaultFolder> m_byDevice;
};
