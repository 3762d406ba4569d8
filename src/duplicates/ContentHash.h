#pragma once

#include <QString>

#include <cstdint>

// 128 bits of a SHA-256 digest: `low` from digest bytes 0-7 and `high` from bytes 8-15, each read
// little-endian. Written as 32 lower-case hex digits in digest byte order.
struct ContentHash {
    std::uint64_t low = 0;
    std::uint64_t high = 0;

    static ContentHash fromDigest(const unsigned char* digest);
    QString hex() const;

    friend bool operator==(const ContentHash&, const ContentHash&) = default;
    friend auto operator<=>(const ContentHash&, const ContentHash&) = default;
};
