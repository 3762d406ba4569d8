#pragma once

#include "duplicates/VaultResults.h"

#include <QHash>
#include <QList>
#include <QUuid>

#include <stop_token>

// Checks each held copy against the copy that was kept, byte for byte, counting each entry in `progress`.
// Entries not reached before `stop` get no result. Runs on a worker thread.
QHash<QUuid, VaultVerification> verifyEntries(
    const QList<VaultEntry>& entries, VaultProgress& progress, std::stop_token stop = {});

// One entry's check, with two buffers the caller keeps between entries.
VaultVerification verifyEntry(const VaultEntry& entry, std::vector<std::byte>& held, std::vector<std::byte>& kept);
