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
                const std::optional<QByteArray> key = rawString();
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

    bool field(const QByteArray& key, VaultEntry& entry, unsigned& seen)
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
            const std::optional<QByteArray> value = rawString();
            if (!value)
                return false;
            into = QUuid::fromString(QLatin1StringView(*value));
            return !into.isNull();
        };
        const auto whole = [&](auto& into, Field bit) {
            seen |= bit;
            const std::optional<qint64> value = integer();
            if (value)
                into = static_cast<std::remove_reference_t<decltype(into)>>(*value);
            return value.has_value();
        };
        if (key == "id")
            return uuid(entry.id, idField);
        if (key == "originalPath")
            return text(entry.originalPath, originalPathField);
        if (key == "vaultPath")
            return text(entry.vaultPath, vaultPathField);
        if (key == "keeperPath")
            return text(entry.keeperPath, keeperPathField);
        if (key == "size")
            return whole(entry.size, sizeField);
        if (key == "reclaimable")
            return whole(entry.reclaimable, reclaimableField);
        if (key == "contentHashHex")
            return text(entry.contentHashHex, contentHashHexField);
        if (key == "groupID")
            return uuid(entry.groupID, groupIDField);
        if (key == "batchID")
            return uuid(entry.batchID, batchIDField);
        if (key == "movedAt") {
            seen |= movedAtField;
            const std::optional<double> value = number();
            entry.movedAt = value.value_or(0);
            return value.has_value();
        }
        if (key == "fileID")
            return whole(entry.fileID, fileIDField);
        if (key == "mtimeNsec")
            return whole(entry.mtimeNsec, mtimeNsecField);
        if (key == "volumeUUID")
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

    // A string's bytes with its escapes undone (\uXXXX written as UTF-8).
    std::optional<QByteArray> rawString()
    {
        skipSpace();
        if (m_at >= m_end || *m_at != '"')
            return std::nullopt;
        const char* start = ++m_at;
        // The common case: no escape, so the bytes are the string.
        while (m_at < m_end && *m_at != '"' && *m_at != '\\' && static_cast<unsigned char>(*m_at) >= 0x20)
            ++m_at;
        if (m_at < m_end && *m_at == '"')
            return QByteArray(start, m_at++ - start);
        QByteArray out(start, m_at - start);
        while (m_at < m_end && *m_at != '"') {
            const char c = *m_at++;
            if (static_cast<unsigned char>(c) < 0x20)
                return std::nullopt;
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
        return out;
    }

    std::optional<QString> string()
    {
        const std::optional<QByteArray> bytes = rawString();
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
};

} // namespace

std::optional<QList<VaultEntry>> parseVaultList(QByteArrayView text)
{
    return Reader(text).list();
}
