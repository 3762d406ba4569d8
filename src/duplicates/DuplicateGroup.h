#pragma once

#include "duplicates/ContentHash.h"
#include "duplicates/DuplicateFile.h"

#include <QList>
#include <QUuid>

#include <cstdint>

// One set of files with identical content, with the copy that stays and the copies ticked for removal.
struct DuplicateGroup {
    QUuid id;
    QList<DuplicateFile> members;
    QUuid keeperID;
    QList<QUuid> selected; // in member order; a hash set would cost about 1 KB for each set
    std::int64_t size = 0;
    ContentHash contentHash;

    const DuplicateFile* keeper() const;
    // The space freed by removing every copy but the keeper.
    std::int64_t reclaimable() const;
};
