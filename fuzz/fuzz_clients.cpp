// Any bytes read as the client file: no crash, no name that was not in the file.

#include "storage/clients_file.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const QStringList names = storage::decodeClientList(bytes);
    if (names.size() > qsizetype(size))
        std::abort();
    if (storage::decodeClientList(storage::encodeClientList(names)).size() != names.size())
        std::abort();
    return 0;
}
