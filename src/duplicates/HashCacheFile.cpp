#include "duplicates/HashCacheFile.h"

#include <charconv>
#include <limits>

namespace {

constexpr qsizetype blockSize = 64 * 1024;
constexpr std::size_t longestString = 4096;

bool needsEscaping(std::string_view text)
{
    return std::any_of(
        text.cbegin(), text.cend(), [](char c) { return c == '"' || c == '\\' || std::uint8_t(c) < 0x20; });
}

} // namespace

namespace HashCacheFile {

Reader::Reader(QIODevice& in)
    : m_in(in)
{
}

int Reader::peek()
{
    if (m_offset == m_buffer.size()) {
        m_buffer = m_in.read(blockSize);
        m_offset = 0;
        if (m_buffer.isEmpty())
            return -1;
    }
    return std::uint8_t(m_buffer.at(m_offset));
}

void Reader::skipSpace()
{
    for (int c = peek(); c == ' ' || c == '\n' || c == '\r' || c == '\t'; c = peek())
        ++m_offset;
}

bool Reader::take(char c)
{
    skipSpace();
    if (peek() != std::uint8_t(c))
        return false;
    ++m_offset;
    return true;
}

std::optional<std::string> Reader::string()
{
    if (!take('"'))
        return std::nullopt;
    std::string text;
    for (int c = peek(); c != '"'; c = peek()) {
        if (c < 0x20 || c == '\\' || text.size() == longestString)
            return std::nullopt;
        text.push_back(char(c));
        ++m_offset;
    }
    ++m_offset;
    return text;
}

std::optional<std::uint64_t> Reader::unsignedNumber()
{
    skipSpace();
    std::uint64_t number = 0;
    int digits = 0;
    for (int c = peek(); c >= '0' && c <= '9'; c = peek(), ++digits) {
        if (__builtin_mul_overflow(number, 10u, &number) || __builtin_add_overflow(number, unsigned(c - '0'), &number))
            return std::nullopt;
        ++m_offset;
    }
    if (digits == 0)
        return std::nullopt;
    return number;
}

std::optional<std::int64_t> Reader::signedNumber()
{
    skipSpace();
    const bool negative = peek() == '-';
    if (negative)
        ++m_offset;
    const std::optional<std::uint64_t> magnitude = unsignedNumber();
    constexpr auto largest = std::uint64_t(std::numeric_limits<std::int64_t>::max());
    if (!magnitude || *magnitude > largest + (negative ? 1 : 0))
        return std::nullopt;
    return negative ? std::int64_t(0 - *magnitude) : std::int64_t(*magnitude);
}

bool Reader::fail()
{
    m_failed = true;
    return false;
}

std::optional<std::string> Reader::volumeUUID()
{
    std::optional<std::string> volume;
    if (take('{') && string() == "volumeUUID" && take(':'))
        volume = string();
    if (!volume || volume->empty() || !take(',') || string() != "entries" || !take(':') || !take('[')) {
        fail();
        return std::nullopt;
    }
    return volume;
}

bool Reader::next(HashCache::Entry& entry)
{
    if (m_failed || m_ended)
        return false;
    if (take(']')) {
        m_ended = true;
        if (!take('}'))
            return fail();
        skipSpace();
        return peek() == -1 ? false : fail();
    }
    if ((!m_firstEntry && !take(',')) || !take('{'))
        return fail();
    m_firstEntry = false;

    // The five fields in any order, each once.
    unsigned seen = 0;
    for (int field = 0; field < 5; ++field) {
        if (field > 0 && !take(','))
            return fail();
        const std::optional<std::string> name = string();
        if (!name || !take(':'))
            return fail();
        static const std::string_view names[] = {"fileID", "mtimeNsec", "size", "low", "high"};
        const auto at = std::find(std::begin(names), std::end(names), *name);
        const unsigned bit = 1u << (at - std::begin(names));
        if (at == std::end(names) || (seen & bit))
            return fail();
        seen |= bit;
        if (*name == "mtimeNsec") {
            const auto value = signedNumber();
            if (!value)
                return fail();
            entry.mtimeNsec = *value;
            continue;
        }
        const auto value = unsignedNumber();
        if (!value)
            return fail();
        (*name == "fileID"        ? entry.fileID
                : *name == "size" ? entry.size
                : *name == "low"  ? entry.low
                                  : entry.high)
            = *value;
    }
    if (!take('}'))
        return fail();
    const HashCache::Key key = entry.key();
    if (m_last && !(*m_last < key))
        return fail();
    m_last = key;
    return true;
}

Writer::Writer(QIODevice& out, std::string_view volumeUUID)
    : m_out(out)
    , m_ok(!volumeUUID.empty() && !needsEscaping(volumeUUID))
{
    m_buffer.reserve(blockSize + 256);
    m_buffer.append(R"({"volumeUUID":")");
    m_buffer.append(volumeUUID.data(), qsizetype(volumeUUID.size()));
    m_buffer.append(R"(","entries":[)");
}

bool Writer::add(const HashCache::Entry& entry)
{
    // Formatted straight into the buffer, as a scan can write a few hundred thousand entries.
    constexpr qsizetype longestEntry = 149;
    const qsizetype start = m_buffer.size();
    m_buffer.resize(start + longestEntry);
    char* end = m_buffer.data() + start;
    const auto put = [&](std::string_view piece) { end = std::copy(piece.begin(), piece.end(), end); };
    const auto number = [&](auto value) { end = std::to_chars(end, end + 20, value).ptr; };
    put(m_first ? "\n{\"fileID\":" : ",\n{\"fileID\":");
    m_first = false;
    number(entry.fileID);
    put(",\"mtimeNsec\":");
    number(entry.mtimeNsec);
    put(",\"size\":");
    number(entry.size);
    put(",\"low\":");
    number(entry.low);
    put(",\"high\":");
    number(entry.high);
    put("}");
    m_buffer.truncate(end - m_buffer.constData());
    return flushIfFull();
}

bool Writer::flushIfFull()
{
    if (m_buffer.size() < blockSize)
        return m_ok;
    m_ok = m_ok && m_out.write(m_buffer) == m_buffer.size();
    m_buffer.clear();
    return m_ok;
}

bool Writer::finish()
{
    m_buffer.append("\n]}\n");
    m_ok = m_ok && m_out.write(m_buffer) == m_buffer.size();
    m_buffer.clear();
    return m_ok;
}

} // namespace HashCacheFile
