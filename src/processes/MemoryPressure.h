#pragma once

#include "platform/MemoryStatus.h"

#include <QList>
#include <QString>

#include <algorithm>
#include <optional>

// How hard the system is pressed for memory, in words a person reads.
enum class PressureLevel { normal, elevated, critical };

struct MemoryPressure {
    PressureLevel level = PressureLevel::normal;
    // Whether the kernel's pressure figures were there; without them the level is judged from the memory still
    // available alone.
    bool fromStallFigures = false;
};

namespace MemoryPressures {

// The level is the higher of two judgements. Stalls (when the kernel reports them): elevated once tasks waited
// for memory 10% of the last ten seconds, or every task did 1%; critical at 40% and 10%. Available memory:
// elevated below 15% of the total, critical below 5%.
MemoryPressure assess(const MemoryReading& memory, const std::optional<MemoryStall>& stall);

QString title(PressureLevel level);
// One sentence on what the level means for the user.
QString explanation(PressureLevel level);

} // namespace MemoryPressures

// The memory figures of the last few minutes, oldest first, for the chart.
class MemoryHistory {
public:
    struct Point {
        double at = 0; // seconds since boot
        qint64 used = 0;
        qint64 cached = 0;
        qint64 swapUsed = 0;
        PressureLevel level = PressureLevel::normal;
    };
    static constexpr double span = 5 * 60; // seconds kept

    void add(double at, const MemoryReading& memory, PressureLevel level);
    const QList<Point>& points() const { return m_points; }

private:
    QList<Point> m_points;
};

// Memory in use by programs: the total less what is still available.
inline qint64 usedMemory(const MemoryReading& memory)
{
    return std::max<qint64>(0, memory.total - memory.available);
}
inline qint64 usedSwap(const MemoryReading& memory)
{
    return std::max<qint64>(0, memory.swapTotal - memory.swapFree);
}
