#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

// File names on Linux are bytes; Velloru carries paths as text. A name whose bytes are not UTF-8 has no
// exact text form: decoding replaces the bad bytes, and the replacement encodes to the name of some other
// file. These conversions check the round trip, so such a name is reported instead of being guessed.
namespace LocalPath {

// The text of a name or path read from the system; nothing when its bytes are not valid UTF-8.
std::optional<QString> decode(QByteArrayView bytes);

// The bytes to hand to the system; nothing when the text holds what no file name can (a NUL, or a lone
// surrogate that would encode to a replacement character).
std::optional<QByteArray> encode(const QString& path);

// Whether `bytes` make the round trip; cheap for plain ASCII names.
bool isRepresentable(QByteArrayView bytes);

// The name for messages: valid UTF-8 as it is, every other byte written as \xNN.
QString printable(QByteArrayView bytes);

} // namespace LocalPath
