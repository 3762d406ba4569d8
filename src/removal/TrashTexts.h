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
