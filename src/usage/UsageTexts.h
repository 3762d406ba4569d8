#pragma once

#include <QString>

// The texts of the disk-usage feature, in one place so that they stay consistent between the window
// and the command line.
namespace UsageTexts {

inline const QString allocatedNote = QStringLiteral("Sizes are allocated bytes on disk.");
inline const QString filesInFolder = QStringLiteral("Files in this folder");
inline const QString inexactName = QStringLiteral(
    "This name isn’t valid UTF-8, so Velloru can’t be sure which item it names — rename it to move it to the Trash.");
inline QString noSuchFolder(const QString& path)
{
    return QStringLiteral("There is no folder at “%1” — check the path and try again.").arg(path);
}
inline QString unreadableFolders(qsizetype count, const QString& first)
{
    if (count == 1)
        return QStringLiteral("1 folder couldn’t be read, so its contents aren’t in the total — check the "
                              "permissions of “%1”.")
            .arg(first);
    return QStringLiteral("%1 folders couldn’t be read, so their contents aren’t in the total — check the "
                          "permissions of “%2” and the others.")
        .arg(count)
        .arg(first);
}
inline QString badFolderName(const QString& printablePath)
{
    return QStringLiteral("Velloru can’t measure “%1” — its name isn’t valid UTF-8; rename it and try again.")
        .arg(printablePath);
}
inline QString cannotExamine(const QString& path)
{
    return QStringLiteral("Velloru can’t examine “%1” — check that the folder exists and that you may read it.")
        .arg(path);
}

} // namespace UsageTexts
