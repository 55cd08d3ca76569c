#pragma once

#include <cstddef>

namespace storage
{

// A year of rows is tens of megabytes of fresh memory, and the kernel maps it in one page at a time as
// it is first written; asked for huge pages (where transparent huge pages are on "madvise", as on most
// desktops) it maps the same in a few hundred steps, many times faster. Call it on a buffer not yet
// written. Only a hint: where it is refused, or the buffer is small, nothing changes.
void preferHugePages(const void* start, std::size_t bytes);

} // namespace storage
