#pragma once

#include <QString>

#include <compare>

// How far an item is from safe to remove. The declaration order is the ordering: `unproven` ranks above
// `sensitive` because nothing at all is known about such an item.
enum class RiskLevel {
    safe,      // the owner rebuilds it; removal cannot hurt
    caution,   // likely harmless, but the user should look first
    sensitive, // holds data the user may still want
    unproven,  // no owner could be established
};

inline std::strong_ordering operator<=>(RiskLevel a, RiskLevel b)
{
    return static_cast<int>(a) <=> static_cast<int>(b);
}

// The badge shown on a result row; empty for safe items, which carry none.
QString riskBadge(RiskLevel risk);
// The raw value used in headless output ("safe", "caution", …).
QString riskName(RiskLevel risk);
