#include "processes/MemoryPressure.h"

namespace MemoryPressures {

MemoryPressure assess(const MemoryReading& memory, const std::optional<MemoryStall>& stall)
{
    PressureLevel fromAvailable = PressureLevel::normal;
    if (memory.total > 0) {
        const double availableShare = double(memory.available) / double(memory.total);
        fromAvailable = availableShare < 0.05 ? PressureLevel::critical
            : availableShare < 0.15           ? PressureLevel::elevated
                                              : PressureLevel::normal;
    }
    if (!stall)
        return {fromAvailable, false};
    const PressureLevel fromStalls = stall->someAvg10 >= 40 || stall->fullAvg10 >= 10 ? PressureLevel::critical
        : stall->someAvg10 >= 10 || stall->fullAvg10 >= 1                             ? PressureLevel::elevated
                                                                                      : PressureLevel::normal;
    return {std::max(fromAvailable, fromStalls), true};
}

QString title(PressureLevel level)
{
    switch (level) {
    case PressureLevel::normal: return QStringLiteral("Normal");
    case PressureLevel::elevated: return QStringLiteral("Elevated");
    case PressureLevel::critical: return QStringLiteral("Critical");
    }
    return {};
}

QString explanation(PressureLevel level)
{
    switch (level) {
    case PressureLevel::normal: return QStringLiteral("Programs get the memory they ask for without waiting.");
    case PressureLevel::elevated:
        return QStringLiteral("Memory is getting tight — programs sometimes wait while the system frees some. "
                              "Quitting apps you don’t need helps.");
    case PressureLevel::critical:
        return QStringLiteral("Memory is short — programs keep waiting for it and the computer feels slow. Quit the "
                              "apps using the most memory.");
    }
    return {};
}

} // namespace MemoryPressures

void MemoryHistory::add(double at, const MemoryReading& memory, PressureLevel level)
{
    m_points.append({at, usedMemory(memory), memory.cached, usedSwap(memory), level});
    const auto stale
        = std::find_if(m_points.cbegin(), m_points.cend(), [at](const Point& point) { return point.at >= at - span; });
    m_points.erase(m_points.cbegin(), stale);
}
