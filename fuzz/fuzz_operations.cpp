// Any bytes read as an operations file: no crash, never more than the count allows.

#include "storage/operations_file.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    bool complete = false;
    const storage::OperationList list = storage::decodeOperations(bytes, &complete);
    if (list.size() > storage::kMaxOperations)
        std::abort();
    bool again = false;
    if (storage::decodeOperations(storage::encodeOperations(list), &again).size() != list.size() || !again)
        std::abort();
    return 0;
}
