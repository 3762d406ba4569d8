#include "duplicates/ContentHash.h"

namespace {

std::uint64_t littleEndianWord(const unsigned char* bytes)
{
    std::uint64_t word = 0;
    for (int i = 7; i >= 0; --i)
        word = (word << 8) | bytes[i];
    return word;
}

} // namespace

ContentHash ContentHash::fromDigest(const unsigned char* digest)
{
    return {littleEndianWord(digest), littleEndianWord(digest + 8)};
}

QString ContentHash::hex() const
{
    static constexpr char digits[] = "0123456789abcdef";
    QString text;
    text.reserve(32);
    for (const std::uint64_t word : {low, high}) {
        for (int i = 0; i < 8; ++i) {
            const unsigned byte = (word >> (8 * i)) & 0xff;
            text.append(QLatin1Char(digits[byte >> 4])).append(QLatin1Char(digits[byte & 0xf]));
        }
    }
    return text;
}
