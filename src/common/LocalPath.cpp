#include "common/LocalPath.h"

#include <algorithm>

namespace {

bool isAscii(QByteArrayView bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The length of the well-formed UTF-8 sequence at the start of `bytes`, or 0 when there is none there
// (a stray continuation byte, an overlong form, a surrogate, a code point past U+10FFFF, a cut sequence).
qsizetype sequenceLength(QByteArrayView bytes)
{
    const auto at = [&bytes](qsizetype i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = at(0);
    if (lead < 0x80)
        return 1;
    qsizetype length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF; // the range of the second byte, narrowed to exclude the forbidden forms
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0)
            low = 0xA0;
        if (lead == 0xED)
            high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0)
            low = 0x90;
        if (lead == 0xF4)
            high = 0x8F;
    } else {
        return 0;
    }
    if (bytes.size() < length || at(1) < low || at(1) > high)
        return 0;
    for (qsizetype i = 2; i < length; ++i)
        if (at(i) < 0x80 || at(i) > 0xBF)
            return 0;
    return length;
}

} // namespace

namespace LocalPath {

bool isRepresentable(QByteArrayView bytes)
{
    if (isAscii(bytes))
        return !bytes.contains('\0');
    for (qsizetype i = 0; i < bytes.size();) {
        const qsizetype length = sequenceLength(bytes.sliced(i));
        if (length == 0)
            return false;
        i += length;
    }
    return !bytes.contains('\0');
}

std::optional<QString> decode(QByteArrayView bytes)
{
    if (!isRepresentable(bytes))
        return std::nullopt;
    return QString::fromUtf8(bytes);
}

std::optional<QByteArray> encode(const QString& path)
{
    QByteArray bytes = path.toUtf8();
    if (!isRepresentable(bytes) || QString::fromUtf8(bytes) != path)
        return std::nullopt;
    return bytes;
}

QString printable(QByteArrayView bytes)
{
    QString text;
    for (qsizetype i = 0; i < bytes.size();) {
        const qsizetype length = sequenceLength(bytes.sliced(i));
        if (length == 0) {
            const auto byte = static_cast<unsigned char>(bytes[i]);
            text += QStringLiteral("\\x") + QString::number(byte, 16).toUpper().rightJustified(2, QLatin1Char('0'));
            ++i;
        } else {
            text += QString::fromUtf8(bytes.sliced(i, length));
            i += length;
        }
    }
    return text;
}

} // namespace LocalPath
