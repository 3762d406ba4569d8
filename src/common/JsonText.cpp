#include "common/JsonText.h"

#include <charconv>

void appendJsonString(QByteArray& out, QStringView text)
{
    const QByteArray utf8 = text.toUtf8();
    out.reserve(out.size() + utf8.size() + 2);
    out += '"';
    // Runs that need no escape (nearly every path and name) are copied whole.
    qsizetype plainFrom = 0;
    for (qsizetype i = 0; i < utf8.size(); ++i) {
        const char c = utf8[i];
        if (c != '"' && c != '\\' && static_cast<unsigned char>(c) >= 0x20)
            continue;
        out.append(utf8.constData() + plainFrom, i - plainFrom);
        plainFrom = i + 1;
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default: {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned char>(c));
            out += escaped;
        }
        }
    }
    out.append(utf8.constData() + plainFrom, utf8.size() - plainFrom);
    out += '"';
}

QByteArray jsonString(QStringView text)
{
    QByteArray out;
    appendJsonString(out, text);
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
    appendJsonString(m_text, key);
    m_text += ':';
}

JsonObjectWriter& JsonObjectWriter::add(QStringView key, const QString& text)
{
    addKey(key);
    appendJsonString(m_text, text);
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
