#pragma once

#include "duplicates/HashCache.h"

#include <QByteArray>
#include <QIODevice>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The hash cache's file, JSON that a scan can read and write a block at a time without ever holding the
// whole cache:
//   {"volumeUUID":"…","entries":[
//   {"fileID":1,"mtimeNsec":2,"size":3,"low":4,"high":5},
//   …
//   ]}
// Entries are written in ascending key order so that a scan matches the file against its own files in one
// pass. The numbers are whole 64-bit integers, read exactly (a general JSON reader would round the hashes
// to doubles).
namespace HashCacheFile {

// Reads a file front to back. Anything else — not this JSON shape, "volumeUUID" not first, an entry
// without all five whole numbers, keys not strictly ascending — ends the reading with failed() true.
class Reader {
public:
    explicit Reader(QIODevice& in);

    // The volume the file was written for; nothing when the file does not start like one of ours.
    std::optional<std::string> volumeUUID();
    // The next entry; false at the end of the entries or on a failure.
    bool next(HashCache::Entry& entry);
    bool failed() const { return m_failed; }

private:
    // The next character without taking it, or -1 at the end of the file.
    int peek();
    void skipSpace();
    // Skips white space, then takes `c`; false when something else comes.
    bool take(char c);
    // A string without escapes (the writer never needs them).
    std::optional<std::string> string();
    std::optional<std::uint64_t> unsignedNumber();
    std::optional<std::int64_t> signedNumber();
    bool fail();

    QIODevice& m_in;
    QByteArray m_buffer;
    qsizetype m_offset = 0;
    std::optional<HashCache::Key> m_last;
    bool m_failed = false;
    bool m_ended = false;
    bool m_firstEntry = true;
};

// Writes a file a block at a time. Entries must be handed over in strictly ascending key order.
class Writer {
public:
    // A volume UUID that JSON would need to escape is refused: finish() then answers false.
    Writer(QIODevice& out, std::string_view volumeUUID);
    bool add(const HashCache::Entry& entry);
    // Writes what is still buffered and closes the JSON; false when any write failed.
    bool finish();

private:
    bool flushIfFull();

    QIODevice& m_out;
    QByteArray m_buffer;
    bool m_first = true;
    bool m_ok = true;
};

} // namespace HashCacheFile
