#include "common/JsonText.h"

#include <charconv>

QByteArray jsonString(QStringView text)
{
    const QByteArray utf8 = text.toUtf8();
    QByteArray out;
    out.reserve(utf8.size() + 2);
    out += '"';
    for (const char c : utf8) {
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                char escaped[8];
                std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned char>(c));
                out += escaped;
            } else {
                out += c;
            }
        }
    }
    out += '"';
    return out;
}

QByteArray jsonNumber(double number)
{
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
    return QByteArray(buffer, result.ptr - buffer);
}

void JsonObjectWriter::addKey(QStringView key)
{
    if (m_text.size() > 1)
        m_text += ',';
    m_text += jsonString(key);
    m_text += ':';
}

JsonObjectWriter& JsonObjectWriter::add(QStringView key, const QString& text)
{
    addKey(key);
    m_text += jsonString(text);
    return *this;
}

JsonObjectWriter& JsonObjectWriter::add(QStringView key, qint64 number)
{
    addKey(key);
    m_text += QByteArray::number(number);
    return *this;
}

JsonObjectWriter& JsonObjectWriter::add(QStringView key, double number)
{
    addKey(key);
    m_text += jsonNumber(number);
    return *this;
}

JsonObjectWriter& JsonObjectWriter::add(QStringView key, bool flag)
{
    addKey(key);
    m_text += flag ? "true" : "false";
    return *this;
}

JsonObjectWriter& JsonObjectWriter::addRaw(QStringView key, const QByteArray& json)
{
    addKey(key);
    m_text += json;
    return *this;
}

QByteArray jsonArray(const QList<QByteArray>& elements)
{
    if (elements.isEmpty())
        return "[]\n";
    QByteArray out = "[\n";
    for (qsizetype i = 0; i < elements.size(); ++i) {
        out += "  ";
        out += elements[i];
        out += i + 1 < elements.size() ? ",\n" : "\n";
    }
    out += "]\n";
    return out;
}
