#pragma once

#include "common/ByteCount.h"

#include <QString>

// The texts of the Maintenance page, its helper prompts and the Thunderbird card, and what the Thunderbird
// optimizer answers. The task titles and descriptions are in the task table (Maintenance.cpp).
namespace MaintenanceTexts {

inline QString title()
{
    return QStringLiteral("One-click maintenance");
}
inline QString subtitle()
{
    return QStringLiteral("Live monitors and real one-click maintenance.");
}

// Under the subtitle: what the figures and the buttons of the page are.
inline QString pageExplanation()
{
    return QStringLiteral("The figures on the cards are measured live. Each button runs one system task as an "
                          "administrator, through Velloru’s helper, and says what it achieved.");
}

// While the helper is not installed.
inline QString setUpTitle()
{
    return QStringLiteral("Turn on one-click maintenance");
}
inline QString setUpText()
{
    return QStringLiteral("The buttons below need administrator rights. Install Velloru’s helper once (you’ll approve "
                          "it as an administrator) and they become one click forever.");
}
// While the helper is installed but its socket unit is switched off.
inline QString approveTitle()
{
    return QStringLiteral("One more step — approve the helper");
}
inline QString approveText()
{
    return QStringLiteral("Switch on “velloru-helper.socket” among the system’s services: press Approve and confirm "
                          "as an administrator. The drive-mounting item is listed separately — that one being on "
                          "doesn’t cover this. No more prompts after that.");
}
inline QString updatingText()
{
    return QStringLiteral("This version of Velloru came with a newer helper; it is replacing the old one. The buttons "
                          "come back when it is done.");
}

// Beside the free-space figure of Reclaim Purgeable Space.
inline QString purgeableExplanation()
{
    return QStringLiteral("Purgeable is what the system estimates it could free under pressure — often filesystem "
                          "accounting rather than deletable files. Reclaiming it may return nothing, and the result "
                          "will say so.");
}

// The Thunderbird card.
inline QString mailTitle()
{
    return QStringLiteral("Optimize Thunderbird");
}
inline QString mailCardText()
{
    return QStringLiteral("Compacts and reindexes Thunderbird’s search database (global-messages-db) — the fix for "
                          "slow search and a sluggish Thunderbird. Quits Thunderbird first; conversations are "
                          "untouched.");
}
inline QString mailButton()
{
    return QStringLiteral("Optimize");
}
inline QString needsFullDiskAccess()
{
    return QStringLiteral("Needs Full Disk Access");
}
inline QString mailFullDiskAccessText()
{
    return QStringLiteral("Thunderbird’s search database sits in a sandbox-protected area. Grant Velloru Full Disk "
                          "Access to compact and reindex it here, then relaunch.");
}
inline QString openFullDiskAccess()
{
    return QStringLiteral("Open Full Disk Access");
}
// What "Open Full Disk Access" shows: a Flatpak sandbox has no settings page of its own to open.
inline QString fullDiskAccessHowTo()
{
    return QStringLiteral("Velloru runs in a Flatpak sandbox, which hides your home folder from it. Turn on “All user "
                          "files” for Velloru in Flatseal, or run “flatpak override --user --filesystem=home "
                          "us.ambertrell.Velloru” in a terminal, then relaunch Velloru.");
}

// What the Thunderbird optimizer answers.
inline QString noMailDatabase()
{
    return QStringLiteral("No Thunderbird database found — Thunderbird may not be set up on this computer.");
}
inline QString mailOptimizeFailed()
{
    return QStringLiteral("Couldn’t optimize the Thunderbird database — make sure Thunderbird is fully quit, then try "
                          "again.");
}
// `label` is "database" or "N databases".
inline QString mailAlreadyCompact(const QString& label)
{
    return QStringLiteral("Thunderbird %1 reindexed — already compact.").arg(label);
}
inline QString mailCompacted(const QString& label, qint64 freed)
{
    return QStringLiteral("Thunderbird %1 compacted — freed %2.").arg(label, formatBytes(freed));
}

} // namespace MaintenanceTexts
