#include "duplicates/NameStore.h"

#include <algorithm>
#include <cstring>

std::string_view NameStore::add(std::string_view name)
{
    const std::size_t needed = name.size() + 1;
    if (blockSize - m_used < needed) {
        // A name longer than a block gets a block of its own size.
        m_blocks.push_back(std::make_unique_for_overwrite<char[]>(std::max(blockSize, needed)));
        m_used = 0;
    }
    char* stored = m_blocks.back().get() + m_used;
    std::memcpy(stored, name.data(), name.size());
    stored[name.size()] = '\0';
    m_used = needed > blockSize ? blockSize : m_used + needed;
    return {stored, name.size()};
}
