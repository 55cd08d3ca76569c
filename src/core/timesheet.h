#pragma once

#include "core/jobrow.h"

#include <optional>
#include <vector>

namespace core
{

// The rows of a list in their order, with the selected index (-1: none) and the moment from which the
// running row is counted. The open document is one of these; the single-client view is another.
class Timesheet
{
public:
    std::vector<JobRow> rows;
    int ListIndex = -1;
    QString starthrs, startmin;
    // Seconds east of UTC of the clock the start was read from; none for a start read back from a file.
    std::optional<int> startoffset;

    int ListCount() const { return static_cast<int>(rows.size()); }
    bool hasSelection() const { return ListIndex >= 0 && ListIndex < ListCount(); }
    JobRow& row(int index) { return rows[static_cast<size_t>(index)]; }
    const JobRow& row(int index) const { return rows[static_cast<size_t>(index)]; }
    JobRow& selected() { return row(ListIndex); }
    const JobRow& selected() const { return row(ListIndex); }

    const QString& Cell(int index, int column) const { return row(index).cell(column); }
    const QString& CellTag(int index, int column) const { return row(index).tag(column); }

    void InsertRow(int index, JobRow row) { rows.insert(rows.begin() + index, std::move(row)); }
    void AddRow(JobRow row) { rows.push_back(std::move(row)); }
    void RemoveRow(int index) { rows.erase(rows.begin() + index); }
    void DeleteAllRows()
    {
        rows.clear();
        ListIndex = -1;
    }

    bool operator==(const Timesheet&) const = default;
};

} // namespace core
