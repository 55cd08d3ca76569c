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
// With `read`, the digest of the file the list was read from comes first, as "read".
bool writeTimesheetJson(const core::Timesheet& sheet, std::FILE* file, const QString& read = {});

// Reads the same form back. A missing key is an empty text; a value that is not a text is an error. The
// "read" digest, where given, goes to `read`.
bool timesheetFromJson(const QByteArray& json, core::Timesheet& sheet, QString& error, QString* read = nullptr);

} // namespace cli
