#include "usage/UsageItem.h"

#include "usage/UsageTexts.h"
#include "usage/WalkRoot.h"

#include <algorithm>

namespace {

UsageItem folderItem(const std::shared_ptr<const DirNode>& node)
{
    return UsageItem{node->isPackage ? UsageItem::Kind::package : UsageItem::Kind::folder, fromFileName(node->name),
        fromFileName(node->path), node->total, node->totalFileCount, node, isExactFileName(node->path)};
}

// The files item carries the folder's own blocks too, so the items add up to the folder's total. It is
// left out when the folder holds no files: a cell of "0 files" would only puzzle.
void appendFiles(QList<UsageItem>& items, const QString& folderPath, bool exactPath, qint64 bytes, qint64 count)
{
    if (count > 0)
        items.append(
            UsageItem{UsageItem::Kind::files, UsageTexts::filesInFolder, folderPath, bytes, count, {}, exactPath});
}

void sortLargestFirst(QList<UsageItem>& items)
{
    std::ranges::stable_sort(items, [](const UsageItem& a, const UsageItem& b) { return a.bytes > b.bytes; });
}

} // namespace

QList<UsageItem> itemsOf(const DirNode& folder)
{
    QList<UsageItem> items;
    for (const auto& child : folder.subdirectories)
        items.append(folderItem(child));
    appendFiles(items, fromFileName(folder.path), isExactFileName(folder.path),
        folder.directFileBytes + folder.ownAllocatedSize, folder.directFileCount);
    sortLargestFirst(items);
    return items;
}

QList<UsageItem> itemsOf(const Progress& progress, const QString& rootPath)
{
    QList<UsageItem> items;
    for (const auto& branch : progress.measured)
        items.append(folderItem(branch));
    // The root's path is exact: resolveWalkRoot refuses any other.
    appendFiles(items, rootPath, true, progress.rootFileBytes, progress.rootFileCount);
    sortLargestFirst(items);
    return items;
}

double shareOf(qint64 bytes, qint64 total)
{
    return total > 0 ? double(bytes) / double(total) : 0.0;
}

UsageItem fileItem(const SizedFile& file)
{
    const std::string name = file.path.substr(file.path.rfind('/') + 1);
    return UsageItem{UsageItem::Kind::file, fromFileName(name), fromFileName(file.path), file.bytes, 1, nullptr,
        isExactFileName(file.path)};
}

std::optional<QString> whyNotToTrash(const UsageItem& item, const QString& home)
{
    if (item.kind == UsageItem::Kind::files)
        return QStringLiteral("These are the files lying directly in the folder — open it to pick among them.");
    if (!item.exactPath)
        return UsageTexts::inexactName;
    const QString inside = home.endsWith(QLatin1Char('/')) ? home : home + QLatin1Char('/');
    if (!item.path.startsWith(inside))
        return QStringLiteral("%1 lies outside your home folder — it belongs to the system or to another user, and "
                              "moving it to the Trash could break programs, so Velloru doesn’t offer it.")
            .arg(item.path);
    return std::nullopt;
}
