#pragma once

#include <QString>
#include <QStringList>
#include <QUuid>

#include <cstdint>

// One member of a duplicate set as the user sees it.
struct DuplicateFile {
    QUuid id;
    QString path;
    std::int64_t size = 0;
    std::int64_t reclaimable = 0; // bytes freed by removing this copy
    std::uint64_t fileID = 0;
    std::int32_t device = 0;
    std::uint16_t linkCount = 1;
    std::uint32_t cloneRefCount = 1;
    std::uint32_t flags = 0;
    std::int64_t mtimeNsec = 0;
    std::int64_t createdSec = 0;
    QStringList otherNames; // further hard-link names of the same file
};
