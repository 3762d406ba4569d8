#include "duplicates/DuplicateGroup.h"

const DuplicateFile* DuplicateGroup::keeper() const
{
    for (const DuplicateFile& member : members)
        if (member.id == keeperID)
            return &member;
    return nullptr;
}

std::int64_t DuplicateGroup::reclaimable() const
{
    std::int64_t total = 0;
    for (const DuplicateFile& member : members)
        if (member.id != keeperID)
            total += member.reclaimable;
    return total;
}
