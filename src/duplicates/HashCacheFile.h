#pragma once

#include "duplicates/HashCache.h"

#include <QByteArray>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

// The hash cache's JSON form:
//   {"volumeUUID":"…","entries":[{"fileID":1,"mtimeNsec":2,"size":3,"low":4,"high":5},…]}
// Its numbers are full 64-bit integers, which a parser that reads numbers as doubles would round, so the
// cache has its own exact reader and writer.
namespace HashCacheFile {

// Writes the payload entry by entry, so a large cache is never held twice over while it is saved.
class Writer {
public:
    Writer(std::string_view volumeUUID, std::size_t entryCount);
    void add(const HashCache::Entry& entry);
    QByteArray finish();

private:
    QByteArray m_text;
    bool m_first = true;
};

// Reads a payload, handing each entry to `onEntry` as it is read. Returns the payload's volume UUID, or
// nothing when the text is not a payload of this shape (entries already handed over must then be dropped).
std::optional<std::string> decode(std::string_view text, const std::function<void(const HashCache::Entry&)>& onEntry);

} // namespace HashCacheFile
