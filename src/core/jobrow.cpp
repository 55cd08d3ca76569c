#include "core/jobrow.h"

#include "core/timetext.h"

namespace core
{

namespace
{
const QString kNoTag;
}

const QString& JobRow::tag(int column) const
{
    switch (column) {
    case TagNote:
        return note;
    case TagBudget:
        return budget;
    case TagRun:
        return run;
    case TagUser:
        return user;
    default:
        return kNoTag;
    }
}

void JobRow::setTag(int column, const QString& text)
{
    switch (column) {
    case TagNote:
        note = text;
        break;
    case TagBudget:
        budget = text;
        break;
    case TagRun:
        run = text;
        break;
    case TagUser:
        user = text;
        break;
    default:
        break; // the other cells carry no tag
    }
}

qint64 JobRow::minutes() const
{
    return Val(cell(CellHours)) * 60 + Val(cell(CellMinutes));
}

void JobRow::setMinutes(qint64 total)
{
    setCell(CellHours, fmt00(total / 60));
    setCell(CellMinutes, fmt00(total % 60));
}

QString JobRow::timingKey() const
{
    const QChar separator(0x1f);
    return cell(CellDate) + separator + cell(CellJob) + separator + cell(CellProject) + separator + cell(CellOperation);
}

} // namespace core
