#pragma once

#include "duplicates/VaultEntry.h"
#include "platform/FileLock.h"

#include <QList>
#include <QString>

#include <optional>

// The vault's list on disk ("duplicates-vault.json" in the data folder) and the lock that lets several
// Velloru processes change it in turn. Every change is made under the lock on a fresh read of the file, so
// one process never writes over entries another has added.
//
// A move writes the list with its planned entries before the first file moves, and a restore moves the
// files before the list loses their entries; a marker file says an operation is under way. When Velloru
// stops in the middle, the list may hold entries whose file never left (or already went back): on the next
// load those are found (the held copy is missing and the file with the same inode is at its origin or
// beside it under a numbered name) and dropped.
class VaultStore {
public:
    explicit VaultStore(QString dataFolder);

    const QString& dataFolder() const { return m_dataFolder; }
    QString listPath() const;
    // The home vault: the folder that holds copies from the data folder's own volume.
    QString homeVault() const;

    // The list as the file holds it: empty when there is none, and empty too when it cannot be decoded (the
    // file is then kept aside under a dated name and never overwritten).
    QList<VaultEntry> read() const;
    // Writes the whole list atomically; the sentence says what failed.
    std::optional<QString> write(const QList<VaultEntry>& entries) const;

    // Waits for the lock that every change of the list or the vault folders is made under.
    std::optional<FileLock> lock() const;

    // Brackets the file moves of an operation.
    void markUnfinished() const;
    void markFinished() const;

    // The list as a new start sees it: when an operation was cut short (its marker is left and no one holds
    // the lock), the entries whose file is not in the vault but back at its origin are dropped and the list
    // saved.
    QList<VaultEntry> load() const;

private:
    QString m_dataFolder;
};

// Whether the file that `entry` holds has gone back to where it came from: the held copy is missing and
// the same file (same inode) is at the original path, or beside it under a numbered name.
bool fileIsBackAtOrigin(const VaultEntry& entry);
