#pragma once

#include <QList>
#include <QString>

#include <optional>

// The freedesktop.org Trash: each Trash folder holds the items under files/ and, for each, a put-back
// record "<name>.trashinfo" under info/ with the item's former path and the deletion date. File managers,
// gio and trash-cli read and restore what Velloru puts there, and the other way round.

struct TrashFolder {
    QString path;         // the folder that holds files/ and info/
    QString topDirectory; // the volume's top folder; empty for the home Trash
    bool isHome() const { return topDirectory.isEmpty(); }
    QString filesPath() const { return path + QStringLiteral("/files"); }
    QString infoPath() const { return path + QStringLiteral("/info"); }
};

// $XDG_DATA_HOME/Trash.
QString homeTrashPath();

// Whose Trash an item goes to: this process's user by default; the privileged helper names the user it
// works for, whose Trash folders it creates owned by that user.
struct TrashOwner {
    unsigned uid = 0;
    QString homeTrash;
    static TrashOwner currentUser();
};

// The Trash folder for an item on the device `itemDevice` whose parent folder is `canonicalParent`: the
// home Trash when the item is on the home Trash's volume, otherwise the volume's own "$top/.Trash/$uid"
// (only when ".Trash" is a real folder with the sticky bit) or "$top/.Trash-$uid". Missing folders are
// created; a folder that is a symbolic link or belongs to someone else is never used. On failure, the
// errno value that says why.
struct TrashFolderLookup {
    std::optional<TrashFolder> folder;
    int error = 0;
};
TrashFolderLookup trashFolderFor(
    const QString& canonicalParent, quint64 itemDevice, const TrashOwner& owner = TrashOwner::currentUser());

// The Trash folders that exist now: the home Trash and the Trash of every mounted volume.
QList<TrashFolder> existingTrashFolders();

// Whether `canonicalPath` lies inside a Trash folder (nothing is trashed from inside a Trash).
bool isInsideTrash(const QString& canonicalPath);

// Moves one item into `folder`: the put-back record is created first (exclusively, so two movers never
// share a name), then the item is renamed in. A name already taken becomes "name 1.ext", "name 2.ext" …;
// a name too long for its record is shortened. A rename across volumes is refused, never copied.
struct TrashMove {
    QString trashedPath; // where the item lies now, on success
    int error = 0;       // errno value on failure
};
TrashMove moveIntoTrash(const QString& absolutePath, const TrashFolder& folder);

// Moves a trashed item back to `destination` without ever replacing something there, then removes its
// put-back record. Returns 0 or the errno value.
int restoreFromTrash(const QString& trashedPath, const QString& destination);

// The put-back record of an item inside files/ of a Trash folder.
QString trashInfoPathFor(const QString& trashedPath);
