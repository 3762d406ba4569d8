#pragma once

#include <QString>

#include <array>
#include <optional>

// The three priorities a process can be moved between, in this order.
enum class PriorityBand { high, normal, low };

namespace PriorityBands {

const std::array<PriorityBand, 3>& all();
QString rawValue(PriorityBand band);
QString title(PriorityBand band);
std::optional<PriorityBand> parse(QStringView rawValue);

// The nice value a band sets: its position × 10 − 10 (high −10, normal 0, low +10).
int niceValue(PriorityBand band);
// The band a nice value falls in: below 0 high, 0 normal, above 0 low.
PriorityBand bandOf(int nice);

} // namespace PriorityBands
