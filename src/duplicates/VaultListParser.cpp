#include "duplicates/VaultListParser.h"

#include "common/LocalPath.h"

#include <QString>

#include <charconv>
#include <cstring>

namespace {

// The fields of an entry, one bit each, so an entry that lacks one is noticed.
enum Field : unsigned {
    idField = 1u << 0,
    originalPathField = 1u << 1,
    vaultPathField = 1u << 2,
    keeperPathField = 1u << 3,
    sizeField = 1u << 4,
    reclaimableField = 1u << 5,
    contentHashHexField = 1u << 6,
    groupIDField = 1u << 7,
    batchIDField = 1u << 8,
    movedAtField = 1u << 9,
    fileIDField = 1u << 10,
    mtimeNsecField = 1u << 11,
    volumeUUIDField = 1u << 12,
    allFields = (1u << 13) - 1,
};

// About what one entry takes in the file, to size the list before reading it.
constexpr qsizetype typicalEntryBytes = 400;

// Whether a key is `name`: lengths first, which tells most keys apart before any byte is compared.
template <std::size_t N> bool is(QByteArrayView key, const char (&name)[N])
{
    return key.size() == qsizetype(N - 1) && std::memcmp(key.data(), name, N - 1) == 0;
}

class Reader {
public:
    explicit Reader(QByteArrayView text)
        : m_at(text.data())
        , m_end(text.data() + text.size())
    {
    }

    std::optional<QList<VaultEntry>> list()
    {
        QList<VaultEntry> entries;
        entries.reserve((m_end - m_at) / typicalEntryBytes);
        if (!take('['))
            return std::nullopt;
        if (!take(']')) {
            do {
                std::optional<VaultEntry> entry = object();
                if (!entry)
                    return std::nullopt;
                entries.append(std::move(*entry));
            } while (take(','));
            if (!take(']'))
                return std::nullopt;
        }
        skipSpace();
        if (m_at != m_end)
            return std::nullopt;
        return entries;
    }

private:
    void skipSpace()
    {
        while (m_at < m_end && (*m_at == ' ' || *m_at == '\n' || *m_at == '\r' || *m_at == '\t'))
            ++m_at;
    }

    bool take(char c)
    {
        skipSpace();
        if (m_at < m_end && *m_at == c) {
            ++m_at;
            return true;
        }
        return false;
    }

    std::optional<VaultEntry> object()
    {
        if (!take('{'))
            return std::nullopt;
        VaultEntry entry;
        unsigned seen = 0;
        if (!take('}')) {
            do {
                const std::optional<QByteArrayView> key = rawString();
                if (!key || !take(':') || !field(*key, entry, seen))
                    return std::nullopt;
            } while (take(','));
            if (!take('}'))
                return std::nullopt;
        }
        if (seen != allFields || entry.size < 0 || entry.originalPath.isEmpty() || entry.vaultPath.isEmpty())
            return std::nullopt;
        return entry;
    }

    bool field(QByteArrayView key, VaultEntry& entry, unsigned& seen)
    {
        const auto text = [&](QString& into, Field bit) {
            seen |= bit;
            std::optional<QString> value = string();
            if (value)
                into = std::move(*value);
            return value.has_value();
        };
        const auto uuid = [&](QUuid& into, Field bit) {
            seen |= bit;
            const std::optional<QByteArrayView> value = rawString();
            if (!value)
                return false;
            into = QUuid::fromString(QLatin1StringView(value->data(), value->size()));
            return !into.isNull();
        };
        const auto whole = [&](auto& into, Field bit) {
            seen |= bit;
            const std::optional<qint64> value = integer();
            if (value)
                into = static_cast<std::remove_reference_t<decltype(into)>>(*value);
            return value.has_value();
        };
        if (is(key, "id"))
            return uuid(entry.id, idField);
        if (is(key, "originalPath"))
            return text(entry.originalPath, originalPathField);
        if (is(key, "vaultPath"))
            return text(entry.vaultPath, vaultPathField);
        if (is(key, "keeperPath"))
            return text(entry.keeperPath, keeperPathField);
        if (is(key, "size"))
            return whole(entry.size, sizeField);
        if (is(key, "reclaimable"))
            return whole(entry.reclaimable, reclaimableField);
        if (is(key, "contentHashHex"))
            return text(entry.contentHashHex, contentHashHexField);
        if (is(key, "groupID"))
            return uuid(entry.groupID, groupIDField);
        if (is(key, "batchID"))
            return uuid(entry.batchID, batchIDField);
        if (is(key, "movedAt")) {
            seen |= movedAtField;
            const std::optional<double> value = number();
            entry.movedAt = value.value_or(0);
            return value.has_value();
        }
        if (is(key, "fileID"))
            return whole(entry.fileID, fileIDField);
        if (is(key, "mtimeNsec"))
            return whole(entry.mtimeNsec, mtimeNsecField);
        if (is(key, "volumeUUID"))
            return text(entry.volumeUUID, volumeUUIDField);
        return skipPlainValue();
    }

    bool skipPlainValue()
    {
        skipSpace();
        if (m_at < m_end && *m_at == '"')
            return rawString().has_value();
        for (const char* word : {"null", "true", "false"}) {
            const std::size_t length = std::strlen(word);
            if (std::size_t(m_end - m_at) >= length && std::memcmp(m_at, word, length) == 0) {
                m_at += length;
                return true;
            }
        }
        return number().has_value();
    }

    // A string's bytes with its escapes undone (\uXXXX written as UTF-8): a view of the text itself when
    // it has no escape (the common case), otherwise of a scratch buffer that the next string reuses.
    std::optional<QByteArrayView> rawString()
    {
        skipSpace();
        if (m_at >= m_end || *m_at != '"')
            return std::nullopt;
        const char* start = ++m_at;
        // Find the closing quote and any escape with the C library's vectorised searches; a string without
        // an escape is its own bytes.
        const auto* quote = static_cast<const char*>(std::memchr(start, '"', std::size_t(m_end - start)));
        if (!quote)
            return std::nullopt;
        if (!std::memchr(start, '\\', std::size_t(quote - start))) {
            m_at = quote + 1;
            return QByteArrayView(start, quote - start);
        }
        m_at = static_cast<const char*>(std::memchr(start, '\\', std::size_t(quote - start)));
        QByteArray& out = m_scratch;
        out = QByteArray(start, m_at - start);
        while (m_at < m_end && *m_at != '"') {
            const char c = *m_at++;
            if (c != '\\') {
                out += c;
                continue;
            }
            if (m_at >= m_end)
                return std::nullopt;
            switch (const char escape = *m_at++) {
            case '"':
            case '\\':
            case '/': out += escape; break;
            case 'b': out += '\b'; break;
            case 'f': out += '\f'; break;
            case 'n': out += '\n'; break;
            case 'r': out += '\r'; break;
            case 't': out += '\t'; break;
            case 'u': {
                std::optional<char32_t> unit = hex4();
                if (!unit)
                    return std::nullopt;
                char32_t code = *unit;
                if (code >= 0xD800 && code < 0xDC00) {
                    if (m_end - m_at < 2 || m_at[0] != '\\' || m_at[1] != 'u')
                        return std::nullopt;
                    m_at += 2;
                    const std::optional<char32_t> low = hex4();
                    if (!low || *low < 0xDC00 || *low >= 0xE000)
                        return std::nullopt;
                    code = 0x10000 + ((code - 0xD800) << 10) + (*low - 0xDC00);
                } else if (code >= 0xDC00 && code < 0xE000) {
                    return std::nullopt;
                }
                out += QString::fromUcs4(&code, 1).toUtf8();
                break;
            }
            default: return std::nullopt;
            }
        }
        if (m_at >= m_end)
            return std::nullopt;
        ++m_at;
        return QByteArrayView(out);
    }

    std::optional<QString> string()
    {
        const std::optional<QByteArrayView> bytes = rawString();
        if (!bytes)
            return std::nullopt;
        // Text that is not UTF-8 would come back as some other name; such a list is not ours.
        return LocalPath::decode(*bytes);
    }

    std::optional<char32_t> hex4()
    {
        if (m_end - m_at < 4)
            return std::nullopt;
        char32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            const char c = *m_at++;
            value <<= 4;
            if (c >= '0' && c <= '9')
                value |= char32_t(c - '0');
            else if (c >= 'a' && c <= 'f')
                value |= char32_t(c - 'a' + 10);
            else if (c >= 'A' && c <= 'F')
                value |= char32_t(c - 'A' + 10);
            else
                return std::nullopt;
        }
        return value;
    }

    // A JSON number's text.
    std::optional<std::string_view> numberText()
    {
        skipSpace();
        const char* start = m_at;
        const auto inNumber
            = [](char c) { return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E'; };
        while (m_at < m_end && inNumber(*m_at))
            ++m_at;
        if (m_at == start)
            return std::nullopt;
        return std::string_view(start, std::size_t(m_at - start));
    }

    std::optional<qint64> integer()
    {
        const std::optional<std::string_view> text = numberText();
        if (!text)
            return std::nullopt;
        qint64 value = 0;
        const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), value);
        if (error != std::errc() || end != text->data() + text->size())
            return std::nullopt;
        return value;
    }

    std::optional<double> number()
    {
        const std::optional<std::string_view> text = numberText();
        if (!text)
            return std::nullopt;
        double value = 0;
        const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), value);
        if (error != std::errc() || end != text->data() + text->size())
            return std::nullopt;
        return value;
    }

    const char* m_at;
    const char* m_end;
    QByteArray m_scratch;
};

} // namespace

std::optional<QList<VaultEntry>> parseVaultList(QByteArrayView text)
{
    return Reader(text).list();
}
