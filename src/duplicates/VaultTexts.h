#pragma once

#include "common/ByteCount.h"

#include <QString>

// Every sentence the duplicates vault shows, in one place so the wording stays checkable.
namespace VaultTexts {

inline QString feature()
{
    return QStringLiteral("Duplicates");
}
inline QString explanation()
{
    return QStringLiteral("Nothing is deleted and no space is freed yet — the copies move into a folder you can "
                          "check, restore from, or empty to the Trash.");
}

inline QString moving()
{
    return QStringLiteral("Moving copies to the vault…");
}
inline QString verifying()
{
    return QStringLiteral("Checking the copies that were kept…");
}
inline QString restoring()
{
    return QStringLiteral("Putting files back…");
}
inline QString emptying()
{
    return QStringLiteral("Moving the vault to the Trash…");
}

inline QString anotherNameOfKeeper()
{
    return QStringLiteral("Another name for the copy being kept — removing it would not free anything");
}
inline QString gone()
{
    return QStringLiteral("it is no longer there");
}
inline QString notRegular()
{
    return QStringLiteral("it is no longer a regular file");
}
inline QString replaced()
{
    return QStringLiteral("a different file now has that name");
}
inline QString resized()
{
    return QStringLiteral("its size changed");
}
inline QString modified()
{
    return QStringLiteral("it was modified");
}
inline QString changedWhileReviewing(const QString& name, const QString& reason)
{
    return name + QStringLiteral(" changed while you were reviewing — ") + reason
        + QStringLiteral(". Nothing further was moved; scan again to pick up the current state.");
}
inline QString volumeNotWritable(const QString& mountPoint)
{
    return QStringLiteral("The volume at %1 has no vault folder and its top folder isn’t writable — the copy stays "
                          "where it is, because Velloru never copies a file to another volume to remove it.")
        .arg(mountPoint);
}

inline QString vaultedFileMissing()
{
    return QStringLiteral("This file is no longer in the vault");
}
inline QString keeperMissing(const QString& keeper)
{
    return QStringLiteral("The copy that was kept is no longer at ") + keeper
        + QStringLiteral(" — this may be the only one left");
}
inline QString keeperIntact(const QString& keeper)
{
    return QStringLiteral("The copy at ") + keeper + QStringLiteral(" is present and identical");
}
inline QString keeperChanged(const QString& keeper)
{
    return QStringLiteral("The copy at ") + keeper + QStringLiteral(" is no longer identical to this one");
}
inline QString endedEarly()
{
    return QStringLiteral("it ended sooner than its size said");
}
inline QString notDownloaded()
{
    return QStringLiteral("it is stored in the cloud and not downloaded");
}
inline QString couldNotCheck(const QString& reason)
{
    return QStringLiteral("Could not check: ") + reason;
}
inline QString allIntact()
{
    return QStringLiteral("checked — every kept copy is intact");
}
inline QString noIntactCopy()
{
    return QStringLiteral("no intact copy elsewhere — the file that was kept is missing or has changed. Put those "
                          "back before emptying.");
}

inline QString noLongerInVault()
{
    return QStringLiteral("It is no longer in the vault");
}
inline QString wentBackRenamed(const QString& originalPath, const QString& newName)
{
    return QStringLiteral("Something was already at ") + originalPath + QStringLiteral(", so the file went back as ")
        + newName + QStringLiteral(" instead. Nothing was overwritten.");
}
inline QString severalWentBackRenamed(qsizetype count)
{
    return QString::number(count)
        + QStringLiteral(" files had something already at their original path, so they went back under new names "
                         "beside them. Nothing was overwritten.");
}

inline QString confirmEmpty()
{
    return QStringLiteral("Move the vault to the Trash?");
}
inline QString emptyExplanation()
{
    return QStringLiteral("The vault folder goes to the Trash as one item, so you can put it back from your file "
                          "manager in one step. The space is returned once you empty the Trash.");
}

inline QString copies(qsizetype count)
{
    return count == 1 ? QStringLiteral("1 copy") : QStringLiteral("%1 copies").arg(count);
}
inline QString movedNotice(qsizetype count, qint64 bytes)
{
    return QStringLiteral("%1 moved into the vault — %2 will be freed once you empty it.")
        .arg(copies(count), formatBytes(bytes));
}
inline QString notMovedNotice(qsizetype count)
{
    return QStringLiteral("%1 couldn’t be moved — each one’s reason is listed with it.").arg(copies(count));
}
inline QString restoredNotice(int count)
{
    return count == 1 ? QStringLiteral("1 file is back where it came from.")
                      : QStringLiteral("%1 files are back where they came from.").arg(count);
}
inline QString notRestoredNotice(qsizetype count)
{
    return QStringLiteral("%1 couldn’t be put back — each one’s reason is listed with it.").arg(copies(count));
}
inline QString emptyFailed(const QString& reason)
{
    return QStringLiteral("Couldn’t move the vault to the Trash — %1").arg(reason);
}
inline QString listNotSaved(const QString& problem)
{
    return QStringLiteral("Couldn’t save the vault’s list — %1 The files are where the list says; try again once "
                          "the problem is fixed.")
        .arg(problem);
}

} // namespace VaultTexts
