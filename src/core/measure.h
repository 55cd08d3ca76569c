#pragma once

#include "core/jobrow.h"

#include <QDateTime>

#include <optional>

namespace core
{

// The hour and minute of a measurement, to be kept as the next start or as the stop time.
struct ClockMinute
{
    QString hrs, min;
    // Seconds east of UTC of the clock that showed this minute. A time read back from a file has none.
    std::optional<int> offset;
};

// Adds to the row the clock minutes crossed from `start` to `now`, with the row's date telling how many
// days lie between. Seconds are never read. The row's run tag becomes "". The clock is read at the
// offset from UTC it had at the start, so a change of summer time in between adds or takes no hour.
ClockMinute measure(JobRow& row, const ClockMinute& start, const QDateTime& now);

// The clock minute of `now` in the "00" form the start and stop times are stored in.
ClockMinute clockMinute(const QDateTime& now);

} // namespace core
