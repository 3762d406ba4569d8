#pragma once

#include "platform/FolderHandle.h"

#include <QString>

#include <optional>

// Renames files between folders of one volume without ever replacing what is at the destination. The
// two folders are held by descriptor while a name moves, and the last pair is kept open because the files
// of one operation mostly share their folders.
class VaultRename {
public:
    // Returns 0 or the errno value (EEXIST when the destination is taken, EXDEV across volumes).
    int move(const QString& from, const QString& to);

private:
    struct HeldFolder {
        QString path;
        std::optional<FolderHandle> handle;
    };
    const FolderHandle* open(HeldFolder& held, const QString& path);

    HeldFolder m_from;
    HeldFolder m_to;
};
