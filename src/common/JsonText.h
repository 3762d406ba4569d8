#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// Writes a JSON object with its keys in the order they are added. Our files keep their fields in a fixed
// order, which QJsonObject (always sorted) cannot do.
class JsonObjectWriter {
public:
    JsonObjectWriter& add(QStringView key, const QString& text);
    JsonObjectWriter& add(QStringView key, qint64 number);
    JsonObjectWriter& add(QStringView key, double number);
    JsonObjectWriter& add(QStringView key, bool flag);
    // Adds already-encoded JSON (a nested object or array).
    JsonObjectWriter& addRaw(QStringView key, const QByteArray& json);

    QByteArray finish() const { return m_text + '}'; }

private:
    void addKey(QStringView key);

    QByteArray m_text = "{";
};

// A JSON array of already-encoded values, one per line, so the files stay readable.
QByteArray jsonArray(const QList<QByteArray>& elements);

// A JSON string literal, quotes included.
QByteArray jsonString(QStringView text);
// The same, appended to `out`.
void appendJsonString(QByteArray& out, QStringView text);

// The shortest text that reads back as exactly this double.
QByteArray jsonNumber(double number);
