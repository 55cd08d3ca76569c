#include "core/measure.h"

#include "core/timetext.h"

namespace core
{

ClockMinute clockMinute(const QDateTime& now)
{
    return {fmt00(now.time().hour()), fmt00(now.time().minute())};
}

ClockMinute measure(JobRow& row, const QString& starthrs, const QString& startmin, const QDateTime& now)
{
    // Calendar days between the row's date and today, so that a December row measured in January still
    // counts its nights. An unreadable date counts as today.
    const QDate today = now.date();
    const QDate rowDate = parseShortDate(row.cell(CellDate), today).value_or(today);
    qint64 dayspan = rowDate.daysTo(today);
    if (dayspan > 0)
        dayspan *= 1440;

    const ClockMinute stopAt = clockMinute(now);
    const qint64 total = row.minutes();
    const qint64 start = Val(starthrs) * 60 + Val(startmin);
    qint64 stop = Val(stopAt.hrs) * 60 + Val(stopAt.min);

    if (start < stop && dayspan >= 1)
        stop += dayspan;
    else if (stop < start && dayspan >= 3)
        stop += dayspan;
    else if (stop < start)
        stop += 1440;

    row.setMinutes(total + stop - start);
    row.run = kRunStopped;
    return stopAt;
}

} // namespace core
