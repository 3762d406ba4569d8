#include "platform/MemoryStatus.h"

#include <QFile>

namespace {

QByteArray readProcFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(64 * 1024) : QByteArray();
}

// The number after "key" on a line of `words` ("some avg10=0.00 avg60=…"), such as "avg10=".
std::optional<double> valueAfter(const QByteArray& words, const QByteArray& key)
{
    const qsizetype at = words.indexOf(key);
    if (at < 0)
        return std::nullopt;
    const qsizetype start = at + key.size();
    const qsizetype end = words.indexOf(' ', start);
    bool ok = false;
    const double value = words.mid(start, end < 0 ? -1 : end - start).toDouble(&ok);
    return ok ? std::optional(value) : std::nullopt;
}

} // namespace

std::optional<MemoryReading> readMemoryInfo(const QString& procRoot)
{
    MemoryReading reading;
    bool hasTotal = false;
    bool hasAvailable = false;
    qint64 free = 0;
    qint64 reclaimable = 0;
    for (const QByteArray& line : readProcFile(procRoot + QStringLiteral("/meminfo")).split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon < 0)
            continue;
        const QByteArrayView key(line.constData(), colon);
        const qint64 bytes = line.mid(colon + 1).trimmed().split(' ').value(0).toLongLong() * 1024;
        if (key == "MemTotal") {
            reading.total = bytes;
            hasTotal = true;
        } else if (key == "MemAvailable") {
            reading.available = bytes;
            hasAvailable = true;
        } else if (key == "MemFree")
            free = bytes;
        else if (key == "Cached")
            reading.cached = bytes;
        else if (key == "Buffers" || key == "SReclaimable")
            reclaimable += bytes;
        else if (key == "SwapTotal")
            reading.swapTotal = bytes;
        else if (key == "SwapFree")
            reading.swapFree = bytes;
    }
    if (!hasTotal)
        return std::nullopt;
    // Kernels before 3.14 have no MemAvailable; free memory and the caches it could drop come close.
    if (!hasAvailable)
        reading.available = std::min(reading.total, free + reading.cached + reclaimable);
    return reading;
}

std::optional<MemoryStall> readMemoryStall(const QString& procRoot)
{
    const QByteArray text = readProcFile(procRoot + QStringLiteral("/pressure/memory"));
    std::optional<double> some;
    std::optional<double> full;
    for (const QByteArray& line : text.split('\n')) {
        if (line.startsWith("some "))
            some = valueAfter(line, "avg10=");
        else if (line.startsWith("full "))
            full = valueAfter(line, "avg10=");
    }
    if (!some)
        return std::nullopt;
    return MemoryStall{*some, full.value_or(0)};
}
