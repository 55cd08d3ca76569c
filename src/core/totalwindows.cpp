#include "core/totalwindows.h"

#include "core/timetext.h"

namespace core
{

qint64 sumWhere(const Timesheet& sheet, int column, const QString& key)
{
    qint64 total = 0;
    for (const JobRow& row : sheet.rows)
        if (sameText(row.cell(column), key))
            total += row.minutes();
    return total;
}

void Ttljobtme::Event_Open(const Timesheet& ListBox1)
{
    if (!ListBox1.hasSelection())
        return;
    redjobno = ListBox1.selected().cell(CellJob);
    cliproj = ListBox1.selected().cell(CellProject);
    cpyfield = hhmmSpaced(sumWhere(ListBox1, CellJob, redjobno));
}

void Ttldaytme::Event_Open(const Timesheet& ListBox1)
{
    if (!ListBox1.hasSelection())
        return;
    redate = ListBox1.selected().cell(CellDate);
    dayttl = hhmmSpaced(sumWhere(ListBox1, CellDate, redate));
}

} // namespace core
