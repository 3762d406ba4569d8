#pragma once

#include "duplicates/DuplicateFile.h"
#include "duplicates/DuplicateGroup.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// The user folders the keeper choice looks at. Class 2 folders hold what the user keeps on purpose
// (Documents, Pictures, Music, Videos); class 0 folders hold what passes through (Downloads, Desktop, the
// Trash); everything else is class 1.
struct UserFolders {
    QStringList kept;
    QStringList passing;

    // The XDG user folders of the current user's home (from user-dirs.dirs, or the usual names), with
    // every link on their paths resolved, as the inventory's paths are.
    static UserFolders ofCurrentUser();
};

// Pure decisions over presented files: which copy stays, which are ticked, what each frees, what blocks a
// removal and the order sets are shown in.
namespace DuplicateRules {

// Bytes freed by removing this copy: nothing for a hard link or a clone that shares its storage.
std::int64_t reclaimableBytes(const DuplicateFile& file);
// The sentence the view shows when a copy frees nothing, or nothing.
std::optional<QString> reclaimNote(const DuplicateFile& file);

int locationClass(const QString& path, const UserFolders& folders);
bool isProtected(const DuplicateFile& file);

// The member that stays: protected first, then the more deliberate location, more links, the older
// creation, the shallower path, the shorter name, and otherwise the earlier member.
qsizetype chooseKeeper(const QList<DuplicateFile>& members, const UserFolders& folders);

// Why this copy can never be removed, or nothing.
std::optional<QString> blockReason(const DuplicateFile& file);

// Every copy but the keeper, except copies in class 2 folders and blocked copies.
QList<QUuid> defaultSelection(const DuplicateGroup& group, const UserFolders& folders);

// Most space to gain first; equal gains put the larger set first, then the keeper's path decides.
void sortGroups(QList<DuplicateGroup>& groups);

} // namespace DuplicateRules
