#pragma once

#include <QDateTime>

// Dates are stored as seconds since 1 January 2001 00:00:00 UTC, the reference date of our file formats.
namespace ReferenceDate {

double secondsSinceReference(const QDateTime& date);
QDateTime fromSecondsSinceReference(double seconds);

} // namespace ReferenceDate
