#pragma once

#include <QString>

// Every text the duplicate finder shows, in one place so the wording stays checkable.
namespace DuplicateTexts {

inline QString stageInventory()
{
    return QStringLiteral("Reading every file's size and identity");
}
inline QString stageBucket()
{
    return QStringLiteral("Grouping files that are the same length");
}
inline QString stagePrehash()
{
    return QStringLiteral("Sampling both ends of each candidate");
}
inline QString stageVerify()
{
    return QStringLiteral("Comparing byte for byte");
}

inline QString counterCandidates()
{
    return QStringLiteral("SAME-SIZE CANDIDATES");
}
inline QString counterCache()
{
    return QStringLiteral("SKIPPED VIA CACHE");
}
inline QString counterCloud()
{
    return QStringLiteral("IN THE CLOUD, NOT READ");
}

inline QString hardLinkNote()
{
    return QStringLiteral("Another name for the same file — removing this name frees nothing");
}
inline QString sharedStorageNote()
{
    return QStringLiteral("Shares its storage with the copy being kept — frees 0 bytes");
}

inline QString tickInstruction()
{
    return QStringLiteral("Tick every copy except the one being kept in each set. Files in Documents, Pictures, "
                          "Music and Videos are left for you to choose.");
}

inline QString blockedNotDownloaded()
{
    return QStringLiteral("Stored in the cloud and not downloaded — Velloru never downloads a file to remove it");
}
inline QString blockedLocked()
{
    return QStringLiteral("Locked. Unlock it with chattr -i (or -a) first");
}
inline QString blockedSystemProtected()
{
    return QStringLiteral("Protected by System Integrity Protection");
}
inline QString blockedInsideBundle()
{
    return QStringLiteral("Inside an app or library bundle — those are removed whole, never file by file");
}

} // namespace DuplicateTexts
