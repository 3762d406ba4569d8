#pragma once

#include <QString>

// The sentences that say why an item did not move to the Trash, in the order they are tested. The straight
// and curly apostrophes differ from sentence to sentence on purpose.
namespace TrashTexts {

inline QString vanished()
{
    return QStringLiteral("It isn't there any more — something removed it before Velloru got to it.");
}
inline QString systemProtected()
{
    return QStringLiteral("Linux protects this — its immutable attribute refuses it even as root. "
                          "It can't be removed from here.");
}
inline QString rootOwnedNoHelper()
{
    return QStringLiteral("Root owns this. Set up the Maintenance Helper in Settings and Velloru can move it "
                          "for you — no Terminal, no password each time.");
}
inline QString rootOwnedHelperRefused(const QString& helperReason)
{
    return QStringLiteral("Root owns this and Velloru's helper wouldn't remove it — it's outside what the "
                          "helper will ever touch. ")
        + helperReason;
}
inline QString needsFullDiskAccess()
{
    return QStringLiteral("Needs “Full Disk Access” to reach this protected data. Turn it on for Velloru, then Retry.");
}
inline QString alreadyInTrash()
{
    return QStringLiteral("It’s already in the Trash.");
}
inline QString stoppedBeforeTried()
{
    return QStringLiteral("Not moved — the removal was stopped before Velloru got to it.");
}

inline QString unnamable()
{
    return QStringLiteral("Its name can’t be passed on exactly, so Velloru can’t be sure which item it is — "
                          "rename it in your file manager, then try again.");
}

// Items Velloru refuses to move at all, whoever asks: moving them would take far more than the user meant.
inline QString wholeFileSystem()
{
    return QStringLiteral("Velloru won’t move the whole file system to the Trash.");
}
inline QString homeFolder()
{
    return QStringLiteral("Velloru won’t move your home folder to the Trash — pick the items inside it instead.");
}
inline QString holdsHomeFolder()
{
    return QStringLiteral("This folder holds your home folder — Velloru won’t move it to the Trash.");
}
inline QString holdsTrash()
{
    return QStringLiteral("This folder holds the Trash itself, so it can’t go into the Trash — pick the items "
                          "inside it instead.");
}
// Names typed on the command line that would move more than they say.
inline QString emptyName()
{
    return QStringLiteral("An empty name doesn’t name anything — nothing was moved.");
}
inline QString dotName()
{
    return QStringLiteral("Velloru won’t move “.” or “..” to the Trash — name the folder itself if you mean it.");
}
inline QString currentFolder()
{
    return QStringLiteral("That’s the folder you’re working in — Velloru won’t move it to the Trash from inside it.");
}
inline QString doesNotExist()
{
    return QStringLiteral("It doesn’t exist — check the name.");
}

// When the Activity log could not be saved after a removal: the items moved all the same.
inline QString notRecorded(qsizetype moved, const QString& problem)
{
    if (moved == 0)
        return QStringLiteral("Velloru couldn’t record this in its Activity log — ") + problem;
    return QStringLiteral("%1 moved to the Trash, but Velloru couldn’t record %2 in its Activity log — %3 Your file "
                          "manager can still put %2 back.")
        .arg(moved == 1 ? QStringLiteral("1 item was") : QStringLiteral("%1 items were").arg(moved),
            moved == 1 ? QStringLiteral("it") : QStringLiteral("them"), problem);
}

// The empty-Trash card's warnings.
inline QString emptyWarningWithVolumes()
{
    return QStringLiteral("This permanently deletes everything in your Trash — items you trashed from your file "
                          "manager and other apps, on this computer and on your other mounted volumes. It can’t "
                          "be undone.");
}
inline QString emptyWarning()
{
    return QStringLiteral("This permanently deletes everything in your Trash — including items you trashed from "
                          "your file manager and other apps. It can’t be undone.");
}

} // namespace TrashTexts
