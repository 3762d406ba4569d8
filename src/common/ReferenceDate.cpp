#include "common/ReferenceDate.h"

namespace {

// 2001-01-01T00:00:00Z in milliseconds since the Unix epoch.
constexpr qint64 referenceEpochMs = 978'307'200'000LL;

} // namespace

namespace ReferenceDate {

double secondsSinceReference(const QDateTime& date)
{
    return double(date.toMSecsSinceEpoch() - referenceEpochMs) / 1000.0;
}

QDateTime fromSecondsSinceReference(double seconds)
{
    const auto ms = qint64(seconds * 1000.0 + (seconds < 0 ? -0.5 : 0.5));
    return QDateTime::fromMSecsSinceEpoch(referenceEpochMs + ms, Qt::UTC);
}

} // namespace ReferenceDate
