#pragma once

#include "core/timesheet.h"

#include <QByteArray>
#include <QString>

namespace storage
{

// The extension of a timesheet document.
inline const QString kTimesheetSuffix = QStringLiteral("vlk");

// Base64 lines in the file are this long, each followed by CR LF when more follows.
inline constexpr int kBase64LineLength = 76;

// The longest text, in bytes of UTF-8, whose base64 with its line ends still fits one length byte:
// 186 bytes give 248 characters and three CR LF pairs, 254 bytes in all. Editors limit input to it.
inline constexpr int kMaxFieldUtf8 = 186;

// Texts stored per row: cells 0 to 6, then the run, note, user and budget tags.
inline constexpr int kFieldsPerRow = 11;

// What a read gives: the rows that could be read, and whether the whole file was there.
struct ReadResult
{
    core::Timesheet sheet;
    bool complete = false;
    QString error; // empty when complete
};

// The bytes of a .vlk file. A text too long for its field is cut at a character boundary and counted in
// `cutFields`, so the caller can tell the user once.
QByteArray encodeTimesheet(const core::Timesheet& sheet, int* cutFields = nullptr);
// The same into `out`, whose memory is reused: the save of every minute keeps one buffer.
void encodeTimesheet(const core::Timesheet& sheet, QByteArray& out, int* cutFields = nullptr);

// Reads a .vlk file in either byte order. A damaged file gives the rows read before the damage.
ReadResult decodeTimesheet(const QByteArray& bytes);

// True when the text fits a field of the file without being cut.
bool fitsTimesheetField(QStringView text);

} // namespace storage
