#pragma once

#include <QByteArray>
#include <QString>
#include <QUuid>

#include <cstdint>

// One copy held in the duplicates vault: where it came from, where it is now, the copy of its set that
// was kept, and the file's identity when it moved, so that a copy can be recognised wherever it ends up.
struct VaultEntry {
    QUuid id;
    QString originalPath;
    QString vaultPath;
    QString keeperPath;
    std::int64_t size = 0;
    std::int64_t reclaimable = 0;
    QString contentHashHex; // the set's content hash, 32 lower-case hex digits
    QUuid groupID;
    QUuid batchID;
    double movedAt = 0; // seconds since 1 January 2001 00:00 UTC
    std::uint64_t fileID = 0;
    std::int64_t mtimeNsec = 0;
    QString volumeUUID;

    // The compact JSON object, keys in the file's fixed order (read back by parseVaultList).
    QByteArray toJson() const;

    friend bool operator==(const VaultEntry&, const VaultEntry&) = default;
};
