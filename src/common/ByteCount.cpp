#include "common/ByteCount.h"

#include <QLocale>

QString formatBytes(qint64 bytes)
{
    if (bytes < 1000)
        return QStringLiteral("%1 bytes").arg(bytes);
    return QLocale::system().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

qint64 checkedAdd(qint64 a, qint64 b)
{
    qint64 sum = 0;
    if (__builtin_add_overflow(a, b, &sum))
        qFatal("Velloru: byte count overflow a=%lld b=%lld", static_cast<long long>(a), static_cast<long long>(b));
    return sum;
}
