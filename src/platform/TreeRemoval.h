#pragma once

#include "platform/FolderHandle.h"

#include <QtGlobal>

// Deletes everything inside `folder`, for emptying a Trash. Each entry is removed relative to the
// descriptor of the folder that holds it, folders are opened without following links, and the walk never
// leaves the folder's file system, so a link or a rename swapped in while it runs cannot send it anywhere
// else. Links are removed as links.
struct TreeRemoval {
    qint64 removedBytes = 0; // the data length of the files removed
    int leftBehind = 0;      // entries that could not be removed
    int firstError = 0;      // the errno value of the first of them
};
TreeRemoval removeContents(const FolderHandle& folder);
