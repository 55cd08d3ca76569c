#include "storage/hugepages.h"

#include <cstdint>

#include <sys/mman.h>

namespace storage
{

void preferHugePages(const void* start, std::size_t bytes)
{
    constexpr std::uintptr_t kHugePage = 2 * 1024 * 1024;
    // Only the whole huge pages inside the buffer: the advice applies to every page it names.
    const auto begin = (reinterpret_cast<std::uintptr_t>(start) + kHugePage - 1) & ~(kHugePage - 1);
    const auto end = (reinterpret_cast<std::uintptr_t>(start) + bytes) & ~(kHugePage - 1);
    if (end > begin)
        ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

} // namespace storage
