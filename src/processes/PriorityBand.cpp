#include "processes/PriorityBand.h"

namespace PriorityBands {

const std::array<PriorityBand, 3>& all()
{
    static const std::array<PriorityBand, 3> bands{PriorityBand::high, PriorityBand::normal, PriorityBand::low};
    return bands;
}

QString rawValue(PriorityBand band)
{
    switch (band) {
    case PriorityBand::high: return QStringLiteral("high");
    case PriorityBand::normal: return QStringLiteral("normal");
    case PriorityBand::low: return QStringLiteral("low");
    }
    return {};
}

QString title(PriorityBand band)
{
    switch (band) {
    case PriorityBand::high: return QStringLiteral("High");
    case PriorityBand::normal: return QStringLiteral("Normal");
    case PriorityBand::low: return QStringLiteral("Low");
    }
    return {};
}

std::optional<PriorityBand> parse(QStringView text)
{
    for (const PriorityBand band : all())
        if (text == rawValue(band))
            return band;
    return std::nullopt;
}

int niceValue(PriorityBand band)
{
    return int(band) * 10 - 10;
}

PriorityBand bandOf(int nice)
{
    return nice < 0 ? PriorityBand::high : nice == 0 ? PriorityBand::normal : PriorityBand::low;
}

} // namespace PriorityBands
