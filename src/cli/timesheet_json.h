#pragma once

#include "core/timesheet.h"

#include <QByteArray>
#include <QString>

#include <cstdio>

namespace cli
{

// Writes a timesheet as JSON: {"starthrs", "startmin", "rows": [{"date", "job", ..., "budget"}]}, every
// value the stored text unchanged, one row per line. Written by hand and streamed, because it runs over
// lists of 100,000 rows. False when the output could not be written.
bool writeTimesheetJson(const core::Timesheet& sheet, std::FILE* file);

// Reads the same form back. A missing key is an empty text; a value that is not a text is an error.
bool timesheetFromJson(const QByteArray& json, core::Timesheet& sheet, QString& error);

} // namespace cli
