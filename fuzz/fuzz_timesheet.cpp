// Any bytes read as a timesheet: no crash, no row that was not in the file, and what was read is written
// back and read again unchanged.

#include "storage/timesheet_file.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const storage::ReadResult read = storage::decodeTimesheet(bytes);
    if (read.sheet.ListCount() > qsizetype(size) / storage::kFieldsPerRow + 1)
        std::abort();
    if (read.complete != read.error.isEmpty())
        std::abort();
    int cut = 0;
    const QByteArray again = storage::encodeTimesheet(read.sheet, &cut);
    const storage::ReadResult reread = storage::decodeTimesheet(again);
    if (!reread.complete || reread.sheet.ListCount() != read.sheet.ListCount())
        std::abort();
    // A text decoded from a field fits the field again unless invalid UTF-8 grew into replacement
    // characters; only then may the second read differ.
    if (cut == 0 && !(reread.sheet == read.sheet))
        std::abort();
    return 0;
}
