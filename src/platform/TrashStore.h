#pragma once

#include "platform/FolderHandle.h"

#include <QList>
#include <QString>

#include <functional>
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

// A Trash folder opened for moving items into it. Its files/ and info/ are held by descriptor and were
// checked to be real folders of the owner, so nothing swapped into their paths later can redirect a move.
struct OpenTrash {
    TrashFolder folder;
    unsigned owner = 0;
    FolderHandle files;
    FolderHandle info;
};

// The Trash for an item on the device `itemDevice` whose parent folder is `canonicalParent`: the owner's
// home Trash when it is on that device, otherwise the volume's own "$top/.Trash/$uid" (only when ".Trash"
// is a real folder with the sticky bit) or "$top/.Trash-$uid". Missing folders are created for the owner; a
// folder that is a link or belongs to someone else is never used. On failure, the errno value that says why.
struct TrashOpening {
    std::optional<OpenTrash> trash;
    int error = 0;
};
TrashOpening openTrashFor(
    const QString& canonicalParent, quint64 itemDevice, const TrashOwner& owner = TrashOwner::currentUser());

// The Trash folders that exist now: the home Trash and the Trash of every mounted volume.
QList<TrashFolder> existingTrashFolders();

// Whether `canonicalPath` lies inside a Trash folder (nothing is trashed from inside a Trash).
bool isInsideTrash(const QString& canonicalPath);

// Moves the entry `name` of the folder `parent` into the Trash; `originalPath` is its full path, for the
// put-back record. The record is written whole under its final name first (so two movers never share a
// name, and no reader ever sees half a record), then the item is renamed in. A name already taken becomes
// "name 1.ext", "name 2.ext" …; a name too long for its record is shortened. A rename across volumes is
// refused, never copied. `onNamed` learns the item's new path before anything is written for it (and again
// should another mover take that name first), so that the move can be journaled before it happens.
struct TrashMove {
    QString trashedPath; // where the item lies now, on success
    int error = 0;       // errno value on failure
};
using OnNamed = std::function<void(const QString& trashedPath)>;
TrashMove moveIntoTrash(const FolderHandle& parent, const QByteArray& name, const QString& originalPath,
    const OpenTrash& trash, const OnNamed& onNamed = {});

// Removes the put-back record of a move that never finished: `trashedPath` holds nothing and the record
// names `originalPath`. False when there was nothing of the kind to remove.
bool removeUnfinishedRecord(const QString& trashedPath, const QString& originalPath);

// Moves a trashed item back to `destination` without ever replacing something there, then removes its
// put-back record. Returns 0 or the errno value.
int restoreFromTrash(const QString& trashedPath, const QString& destination);

// The put-back record of an item inside files/ of a Trash folder.
QString trashInfoPathFor(const QString& trashedPath);
