// Any bytes read as a preset jobs file (both forms) and as a text import: no crash, nothing invented.

#include "storage/preset_file.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    bool complete = false;
    const storage::PresetJobList jobs = storage::decodePresetJobs(bytes, &complete);
    if (jobs.size() > qsizetype(size) / 5)
        std::abort();
    if (storage::decodeOldPresetJobs(bytes).size() > qsizetype(size) / 4)
        std::abort();
    bool again = false;
    if (storage::decodePresetJobs(storage::encodePresetJobs(jobs), &again).size() != jobs.size() || !again)
        std::abort();
    const storage::PresetImport import = storage::parsePresetImport(bytes);
    if (import.jobs.size() > qsizetype(size) || import.columnCount < storage::kPresetColumns)
        std::abort();
    return 0;
}
