// Any bytes read as the settings file: no crash, and the settings read are written and read back whole.

#include "storage/prefs_file.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    int fields = 0;
    const core::AppPrefs prefs = storage::decodePrefs(bytes, core::AppPrefs(), &fields);
    if (fields < 0 || fields > storage::kPrefsFieldCount)
        std::abort();
    int again = 0;
    storage::decodePrefs(storage::encodePrefs(prefs), core::AppPrefs(), &again);
    if (again != storage::kPrefsFieldCount)
        std::abort();
    return 0;
}
