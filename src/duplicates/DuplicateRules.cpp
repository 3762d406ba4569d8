#include "duplicates/DuplicateRules.h"

#include "duplicates/DuplicateTexts.h"
#include "duplicates/FileRecord.h"
#include "duplicates/InventoryRules.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <vector>

namespace {

bool isUnder(const QString& path, const QString& folder)
{
    return !folder.isEmpty() && path.size() > folder.size() && path.startsWith(folder)
        && path[folder.size()] == QLatin1Char('/');
}

// The inventory lists files under their resolved paths, so the folders they are compared with are resolved
// too: a Documents folder that is a link to ~/docs holds the files listed under ~/docs. A folder that does
// not exist holds nothing and is kept as named.
QString resolvedFolder(const QString& path)
{
    const QString resolved = QFileInfo(path).canonicalFilePath();
    return resolved.isEmpty() ? QDir::cleanPath(path) : resolved;
}

QString lastComponent(const QString& path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

// Wins when `candidate` should replace `best` as the keeper; false on a tie, so the earlier member stays.
bool beatsKeeper(const DuplicateFile& candidate, const DuplicateFile& best, const UserFolders& folders)
{
    const bool candidateProtected = DuplicateRules::isProtected(candidate);
    if (candidateProtected != DuplicateRules::isProtected(best))
        return candidateProtected;
    const int candidateClass = DuplicateRules::locationClass(candidate.path, folders);
    const int bestClass = DuplicateRules::locationClass(best.path, folders);
    if (candidateClass != bestClass)
        return candidateClass > bestClass;
    if (candidate.linkCount != best.linkCount)
        return candidate.linkCount > best.linkCount;
    if (candidate.createdSec != best.createdSec)
        return candidate.createdSec < best.createdSec;
    const auto candidateDepth = candidate.path.count(QLatin1Char('/'));
    const auto bestDepth = best.path.count(QLatin1Char('/'));
    if (candidateDepth != bestDepth)
        return candidateDepth < bestDepth;
    return lastComponent(candidate.path).size() < lastComponent(best.path).size();
}

} // namespace

UserFolders UserFolders::ofCurrentUser()
{
    const QString home = resolvedFolder(QDir::homePath());
    const auto folder = [&](QStandardPaths::StandardLocation location) {
        const QString path = resolvedFolder(QStandardPaths::writableLocation(location));
        return path == home ? QString() : path; // a user folder set to the home itself says nothing
    };
    UserFolders folders;
    folders.kept = {folder(QStandardPaths::DocumentsLocation), folder(QStandardPaths::PicturesLocation),
        folder(QStandardPaths::MusicLocation), folder(QStandardPaths::MoviesLocation)};
    folders.passing = {folder(QStandardPaths::DownloadLocation), folder(QStandardPaths::DesktopLocation),
        resolvedFolder(home + QStringLiteral("/.Trash")),
        resolvedFolder(
            QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/Trash"))};
    return folders;
}

namespace DuplicateRules {

std::int64_t reclaimableBytes(const DuplicateFile& file)
{
    return reclaimNote(file) ? 0 : file.size;
}

std::optional<QString> reclaimNote(const DuplicateFile& file)
{
    if (file.linkCount >= 2)
        return DuplicateTexts::hardLinkNote();
    if (file.cloneRefCount >= 2)
        return DuplicateTexts::sharedStorageNote();
    return std::nullopt;
}

int locationClass(const QString& path, const UserFolders& folders)
{
    for (const QString& folder : folders.kept)
        if (isUnder(path, folder))
            return 2;
    for (const QString& folder : folders.passing)
        if (isUnder(path, folder))
            return 0;
    return 1;
}

bool isProtected(const DuplicateFile& file)
{
    return file.flags & (FileFlags::userImmutable | FileFlags::systemImmutable | FileFlags::restricted);
}

qsizetype chooseKeeper(const QList<DuplicateFile>& members, const UserFolders& folders)
{
    qsizetype best = 0;
    for (qsizetype i = 1; i < members.size(); ++i)
        if (beatsKeeper(members[i], members[best], folders))
            best = i;
    return best;
}

std::optional<QString> blockReason(const DuplicateFile& file)
{
    if (file.flags & FileFlags::dataless)
        return DuplicateTexts::blockedNotDownloaded();
    if (file.flags & (FileFlags::userImmutable | FileFlags::systemImmutable))
        return DuplicateTexts::blockedLocked();
    if (file.flags & FileFlags::restricted)
        return DuplicateTexts::blockedSystemProtected();
    if (InventoryRules::hasPackageComponent(file.path.toStdString()))
        return DuplicateTexts::blockedInsideBundle();
    return std::nullopt;
}

QList<QUuid> defaultSelection(const DuplicateGroup& group, const UserFolders& folders)
{
    QList<QUuid> selected;
    for (const DuplicateFile& member : group.members) {
        if (member.id == group.keeperID || locationClass(member.path, folders) == 2 || blockReason(member))
            continue;
        selected.append(member.id);
    }
    return selected;
}

void sortGroups(QList<DuplicateGroup>& groups)
{
    // Each set's figures are worked out once, not at every comparison. The keeper's path makes the order
    // total, so it is the same on every run.
    struct SortKey {
        std::int64_t gain = 0;
        qsizetype members = 0;
        const QString* keeperPath = nullptr;
        qsizetype index = 0;
    };
    std::vector<SortKey> keys;
    keys.reserve(std::size_t(groups.size()));
    for (qsizetype i = 0; i < groups.size(); ++i)
        keys.push_back({groups[i].reclaimable(), groups[i].members.size(), &groups[i].keeper()->path, i});
    std::sort(keys.begin(), keys.end(), [](const SortKey& a, const SortKey& b) {
        if (a.gain != b.gain)
            return a.gain > b.gain;
        if (a.members != b.members)
            return a.members > b.members;
        return *a.keeperPath < *b.keeperPath;
    });
    QList<DuplicateGroup> sorted;
    sorted.reserve(groups.size());
    for (const SortKey& key : keys)
        sorted.append(std::move(groups[key.index]));
    groups = std::move(sorted);
}

} // namespace DuplicateRules
