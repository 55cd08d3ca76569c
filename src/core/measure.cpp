#include "core/measure.h"

#include "core/timetext.h"

namespace core
{

namespace
{

// The offset from UTC of a start read back from a file: the one in force at that clock time on the day
// it was taken, which is the row's day for a job left running. A time that is no clock time, or one
// skipped when summer time began, takes the offset in force now.
int offsetOnDay(const QDate& day, qint64 minuteOfDay, const QDateTime& now)
{
    if (minuteOfDay < 0 || minuteOfDay >= 1440)
        return now.offsetFromUtc();
    QDateTime then = now;
    then.setDate(day);
    then.setTime(QTime(0, 0).addSecs(int(minuteOfDay) * 60));
    return then.isValid() ? then.offsetFromUtc() : now.offsetFromUtc();
}

} // namespace

ClockMinute clockMinute(const QDateTime& now)
{
    return {fmt00(now.time().hour()), fmt00(now.time().minute()), now.offsetFromUtc()};
}

ClockMinute measure(JobRow& row, const ClockMinute& startAt, const QDateTime& now)
{
    const std::optional<QDate> rowDate = parseShortDate(row.cell(CellDate), now.date());
    const qint64 start = Val(startAt.hrs) * 60 + Val(startAt.min);
    // A clock that keeps the start's offset does not jump when summer time begins or ends, so the
    // minutes it crosses are the minutes that passed.
    const QDateTime clock =
        now.toOffsetFromUtc(startAt.offset ? *startAt.offset : offsetOnDay(rowDate.value_or(now.date()), start, now));

    // Calendar days between the row's date and today, so that a December row measured in January still
    // counts its nights. An unreadable date counts as today.
    const QDate today = clock.date();
    qint64 dayspan = rowDate.value_or(today).daysTo(today);
    if (dayspan > 0)
        dayspan *= 1440;

    const qint64 total = row.minutes();
    qint64 stop = clock.time().hour() * 60 + clock.time().minute();

    if (start < stop && dayspan >= 1)
        stop += dayspan;
    else if (stop < start && dayspan >= 3)
        stop += dayspan;
    else if (stop < start)
        stop += 1440;

    row.setMinutes(total + stop - start);
    row.run = kRunStopped;
    return clockMinute(now);
}

} // namespace core
