#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

// Who owns a cache or saved-state folder, judged from its name.
enum class OwnerCode {
    installedNotRunning = 0, // an installed app, not part of the system, that is not running
    system = 1,              // belongs to the operating system
    inUse = 2,               // the app, or Velloru itself, is running
    shared = 3,              // the name does not read as an identifier: a folder several programs share
    orphan = 4,              // an identifier that no installed app claims
};

// What the classification compares a name with. Every identifier here is lower-cased.
struct OwnerContext {
    QSet<QString> installed;    // desktop-file ids, Flatpak app ids and program names of installed apps
    QSet<QString> running;      // the same for what is running now, plus the names of running programs
    QString ownIdentifier;      // Velloru's own identifier
    QStringList systemPrefixes; // identifiers that begin with one of these belong to the operating system
};

// A name reads as an identifier when it is a reverse-domain name ("org.mozilla.firefox") or, a Linux
// addition, when it equals an installed app's desktop-file id or program name ("vlc", "google-chrome"):
// such plain names are how most Linux programs name their cache folders.
OwnerCode classifyOwner(const QString& name, const OwnerContext& context);
