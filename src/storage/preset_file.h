#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace storage
{

// The preset jobs list in the preferences folder, and its older form that can be taken over.
inline const QString kPresetJobsFileName = QStringLiteral("VK8JobsList");
inline const QString kOldPresetJobsFileName = QStringLiteral("VK5JobsList");

// Columns of the preset jobs list; an import line with more fields widens it.
inline constexpr int kPresetColumns = 5;

// One job number with its project and hour budget, kept apart from any timesheet.
struct PresetJob
{
    QString job;       // cell 0: job number, upper case
    QString project;   // cell 1
    QString budget;    // cell 2: budget hours, "00"
    QString closed;    // cell 3: hours of closed timesheets, "00"
    QString closedTag; // tag of cell 3: left-over minutes of the active total
    QString active;    // cell 4: hours in the open timesheet, worked out at run time and never stored
    QStringList extra; // cells 5 and on, filled only by an import line wider than the list; never stored

    bool operator==(const PresetJob&) const = default;
};
using PresetJobList = QList<PresetJob>;

// The bytes of the current file: a 32-bit count and five UTF-8 Pascal strings per job. A text longer
// than 255 bytes is cut at a character boundary and counted in `cutFields`.
QByteArray encodePresetJobs(const PresetJobList& jobs, int* cutFields = nullptr);

// Reads the current file; a short file gives the jobs read so far and `complete` false.
PresetJobList decodePresetJobs(const QByteArray& bytes, bool* complete = nullptr);

// Reads the older file: four strings per job, the tag left empty.
PresetJobList decodeOldPresetJobs(const QByteArray& bytes, bool* complete = nullptr);

// A text import: the jobs, and the number of columns the list needs to show them.
struct PresetImport
{
    PresetJobList jobs;
    int columnCount = kPresetColumns;
};

// One job per line, fields separated by a tab, in cell order. Lines end in LF, CR LF or CR; empty lines
// are skipped, and the text is UTF-8 (a byte order mark is dropped).
PresetImport parsePresetImport(const QByteArray& text);

// The list as text in the import form (cells 0 to 3, LF line ends), for the export to the Desktop.
QByteArray formatPresetExport(const PresetJobList& jobs);

} // namespace storage
