#pragma once

#include "usage/DirNode.h"
#include "usage/LargestFiles.h"
#include "usage/Progress.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>

// One piece of a folder as the charts and the command line show it: a subfolder, a package shown whole,
// or the files lying directly in the folder, which belong to no subfolder; or one file of a file list.
struct UsageItem {
    enum class Kind { folder, package, files, file };

    Kind kind = Kind::folder;
    QString name;
    QString path; // for files: the folder they lie in
    qint64 bytes = 0;
    qint64 fileCount = 0;
    std::shared_ptr<const DirNode> node; // none for files
    // False when the name, or the name of a folder above it, isn't valid UTF-8: `name` and `path` then show
    // the bad bytes as escapes, and the path names no file the system could be handed.
    bool exactPath = true;

    // Only a folder with subfolders has more to show when opened.
    bool canOpen() const { return kind == Kind::folder && node && !node->subdirectories.empty(); }
    // A folder or package may go to the Trash, but only when its path is exact: an approximate one could name
    // another item.
    bool canMoveToTrash() const { return kind != Kind::files && exactPath; }
};

// A file of a list (the largest files of a walk, or the files of one folder) as an item.
UsageItem fileItem(const SizedFile& file);

// Why an item is not offered for the Trash, as a sentence; nothing when it may go. Only what lies inside
// the user's home folder is offered: anything else belongs to the system or to another user, and the user
// could not put it back from the Trash, or programs would break meanwhile.
std::optional<QString> whyNotToTrash(const UsageItem& item, const QString& home);

// The subfolders of `folder` and its own files as one more item, largest first.
QList<UsageItem> itemsOf(const DirNode& folder);

// The measured top-level folders of a walk and the files directly in its root, largest first.
QList<UsageItem> itemsOf(const Progress& progress, const QString& rootPath);

// The part of `total` that `bytes` is, from 0 to 1.
double shareOf(qint64 bytes, qint64 total);
