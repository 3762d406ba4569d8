#include "duplicates/VaultRename.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>

int VaultRename::move(const QString& from, const QString& to)
{
    const QFileInfo source(from);
    const QFileInfo target(to);
    const FolderHandle* fromFolder = open(m_from, source.absolutePath());
    if (!fromFolder)
        return errno;
    const FolderHandle* toFolder = open(m_to, target.absolutePath());
    if (!toFolder)
        return errno;
    return renameWithoutReplacing(
        *fromFolder, QFile::encodeName(source.fileName()), *toFolder, QFile::encodeName(target.fileName()));
}

const FolderHandle* VaultRename::open(HeldFolder& held, const QString& path)
{
    if (held.handle && held.path == path)
        return &*held.handle;
    held.handle = FolderHandle::open(QFile::encodeName(path));
    held.path = path;
    return held.handle ? &*held.handle : nullptr;
}
