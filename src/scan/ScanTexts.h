#pragma once

#include <QString>

// The texts a finished scan shows when it found nothing.
namespace ScanTexts {

inline QString emptyTitle()
{
    return QStringLiteral("Your computer is already tidy");
}
inline QString emptyMessage()
{
    return QStringLiteral("Smart Scan didn’t find anything worth removing right now.");
}

} // namespace ScanTexts
