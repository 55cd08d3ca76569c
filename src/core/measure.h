#pragma once

#include "core/jobrow.h"

#include <QDateTime>

namespace core
{

// The hour and minute of a measurement, to be kept as the next start or as the stop time.
struct ClockMinute
{
    QString hrs, min;
};

// Adds to the row the clock minutes crossed from `starthrs`:`startmin` to `now`, with the row's date
// telling how many days lie between. Seconds are never read. The row's run tag becomes "".
ClockMinute measure(JobRow& row, const QString& starthrs, const QString& startmin, const QDateTime& now);

// The clock minute of `now` in the "00" form the start and stop times are stored in.
ClockMinute clockMinute(const QDateTime& now);

} // namespace core
