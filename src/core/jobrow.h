#pragma once

#include "core/rowtext.h"

#include <QString>

#include <array>

namespace core
{

// Cell numbers of a job row: the vocabulary shared by the lists, the file, the totals and the web page.
enum Cell : int
{
    CellDate = 0,
    CellJob = 1,
    CellProject = 2,
    CellHours = 3,
    CellMinutes = 4,
    CellOperation = 5,
    CellClient = 6,
    CellSortKey = 8,
    CellLink = 9,
};

// Cell tags in use: each is named after the cell it hangs on.
enum Tag : int
{
    TagNote = 0,   // on cell 0: the job's note
    TagBudget = 3, // on cell 3: "over" once the job is past its budget
    TagRun = 4,    // on cell 4: "**" never started, "" stopped, "*" running
    TagUser = 5,   // on cell 5: the user name
};

inline constexpr int kColumnCount = 12;
inline const QString kRunNever = QStringLiteral("**");
inline const QString kRunStopped = QString();
inline const QString kRunRunning = QStringLiteral("*");
inline const QString kBudgetOver = QStringLiteral("over");

// One row of a timesheet: twelve text cells and the four tags that are used.
struct JobRow
{
    std::array<RowText, kColumnCount> cells;
    QString note; // most notes are one row's own: shared only as Qt shares any text
    RowText budget, run, user;

    const QString& cell(int column) const { return cells[static_cast<size_t>(column)].text(); }
    void setCell(int column, const QString& text) { cells[static_cast<size_t>(column)] = RowText(text); }

    const QString& tag(int column) const;
    void setTag(int column, const QString& text);

    // The row's total time in minutes: hours times 60 plus minutes, unreadable cells counting 0.
    qint64 minutes() const;
    void setMinutes(qint64 total);
    // The day, job, project and operation: rows with the same key are the same job's time that day.
    QString timingKey() const;

    bool operator==(const JobRow&) const = default;
};

} // namespace core
