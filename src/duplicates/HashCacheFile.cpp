#include "duplicates/HashCacheFile.h"

#include <charconv>
#include <string_view>

namespace {

// A reader over just enough JSON for the payload: objects, arrays, strings, integers, and unknown values
// skipped whole so that a later version may add keys.
class JsonCursor {
public:
    explicit JsonCursor(std::string_view text)
        : m_text(text)
    {
    }

    bool consume(char c)
    {
        skipSpace();
        if (m_pos < m_text.size() && m_text[m_pos] == c) {
            ++m_pos;
            return true;
        }
        return false;
    }

    bool atEnd()
    {
        skipSpace();
        return m_pos == m_text.size();
    }

    std::optional<std::string> string()
    {
        if (!consume('"'))
            return std::nullopt;
        std::string value;
        while (m_pos < m_text.size()) {
            const char c = m_text[m_pos++];
            if (c == '"')
                return value;
            if (c == '\\') {
                if (m_pos >= m_text.size())
                    return std::nullopt;
                const char escaped = m_text[m_pos++];
                if (escaped == 'u') // never written by us; kept verbatim so the text still skips cleanly
                    value.append("\\u");
                else
                    value.push_back(escaped == 'n' ? '\n' : escaped == 't' ? '\t' : escaped);
            } else {
                value.push_back(c);
            }
        }
        return std::nullopt;
    }

    template <typename Integer> bool read(Integer& value)
    {
        skipSpace();
        const char* begin = m_text.data() + m_pos;
        const auto [end, error] = std::from_chars(begin, m_text.data() + m_text.size(), value);
        if (error != std::errc() || end == begin)
            return false;
        m_pos += std::size_t(end - begin);
        return true;
    }

    bool skipValue(int depth = 0)
    {
        skipSpace();
        if (m_pos >= m_text.size() || depth > 64)
            return false;
        const char c = m_text[m_pos];
        if (c == '"')
            return string().has_value();
        if (c == '{' || c == '[') {
            const char close = c == '{' ? '}' : ']';
            ++m_pos;
            if (consume(close))
                return true;
            do {
                if (c == '{' && !(string() && consume(':')))
                    return false;
                if (!skipValue(depth + 1))
                    return false;
            } while (consume(','));
            return consume(close);
        }
        const std::size_t start = m_pos;
        while (m_pos < m_text.size()
            && std::string_view("+-.0123456789eEtruefalsn").find(m_text[m_pos]) != std::string_view::npos)
            ++m_pos;
        return m_pos > start;
    }

private:
    void skipSpace()
    {
        while (m_pos < m_text.size()
            && (m_text[m_pos] == ' ' || m_text[m_pos] == '\n' || m_text[m_pos] == '\r' || m_text[m_pos] == '\t'))
            ++m_pos;
    }

    std::string_view m_text;
    std::size_t m_pos = 0;
};

bool readEntry(JsonCursor& cursor, HashCache::Entry& entry)
{
    if (!cursor.consume('{'))
        return false;
    unsigned found = 0; // one bit per field, so a field given twice cannot stand in for a missing one
    do {
        const std::optional<std::string> key = cursor.string();
        if (!key || !cursor.consume(':'))
            return false;
        bool ok = false;
        if (*key == "fileID")
            ok = cursor.read(entry.fileID), found |= 1;
        else if (*key == "mtimeNsec")
            ok = cursor.read(entry.mtimeNsec), found |= 2;
        else if (*key == "size")
            ok = cursor.read(entry.size), found |= 4;
        else if (*key == "low")
            ok = cursor.read(entry.low), found |= 8;
        else if (*key == "high")
            ok = cursor.read(entry.high), found |= 16;
        else
            ok = cursor.skipValue();
        if (!ok)
            return false;
    } while (cursor.consume(','));
    return found == 31 && cursor.consume('}');
}

void appendNumber(QByteArray& out, auto number)
{
    char digits[24];
    const auto result = std::to_chars(digits, digits + sizeof digits, number);
    out.append(digits, result.ptr - digits);
}

} // namespace

namespace HashCacheFile {

Writer::Writer(std::string_view volumeUUID, std::size_t entryCount)
{
    // The longest entry (every number at its widest) is 149 bytes with its separator: reserving that much
    // means the text never grows, which would hold the old and the new buffer at once.
    m_text.reserve(qsizetype(64 + volumeUUID.size() + entryCount * 149));
    m_text.append("{\"volumeUUID\":\"").append(volumeUUID.data(), qsizetype(volumeUUID.size()));
    m_text.append("\",\"entries\":[");
}

void Writer::add(const HashCache::Entry& entry)
{
    m_text.append(m_first ? "\n{\"fileID\":" : ",\n{\"fileID\":");
    m_first = false;
    appendNumber(m_text, entry.fileID);
    m_text.append(",\"mtimeNsec\":");
    appendNumber(m_text, entry.mtimeNsec);
    m_text.append(",\"size\":");
    appendNumber(m_text, entry.size);
    m_text.append(",\"low\":");
    appendNumber(m_text, entry.low);
    m_text.append(",\"high\":");
    appendNumber(m_text, entry.high);
    m_text.append('}');
}

QByteArray Writer::finish()
{
    m_text.append("\n]}\n");
    return std::move(m_text);
}

std::optional<std::string> decode(std::string_view text, const std::function<void(const HashCache::Entry&)>& onEntry)
{
    JsonCursor cursor(text);
    std::optional<std::string> volumeUUID;
    bool sawEntries = false;
    if (!cursor.consume('{'))
        return std::nullopt;
    if (!cursor.consume('}')) {
        do {
            const std::optional<std::string> key = cursor.string();
            if (!key || !cursor.consume(':'))
                return std::nullopt;
            if (*key == "volumeUUID") {
                volumeUUID = cursor.string();
                if (!volumeUUID)
                    return std::nullopt;
            } else if (*key == "entries") {
                if (!cursor.consume('['))
                    return std::nullopt;
                if (!cursor.consume(']')) {
                    do {
                        HashCache::Entry entry;
                        if (!readEntry(cursor, entry))
                            return std::nullopt;
                        onEntry(entry);
                    } while (cursor.consume(','));
                    if (!cursor.consume(']'))
                        return std::nullopt;
                }
                sawEntries = true;
            } else if (!cursor.skipValue()) {
                return std::nullopt;
            }
        } while (cursor.consume(','));
        if (!cursor.consume('}'))
            return std::nullopt;
    }
    if (!volumeUUID || !sawEntries || !cursor.atEnd())
        return std::nullopt;
    return volumeUUID;
}

} // namespace HashCacheFile
