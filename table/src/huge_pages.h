// Large blocks of records and cells fill hundreds of megabytes; huge pages
// spare most of the page faults of filling them.
#ifndef ZEPHYR_TABLE_HUGE_PAGES_H_
#define ZEPHYR_TABLE_HUGE_PAGES_H_

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>

namespace zephyr {

// Asks for huge pages for the whole 2 MB pages inside the block.
inline void AdviseHugePages(void* start, size_t bytes) {
  constexpr uintptr_t kHugePage = uintptr_t{2} << 20;
  auto first = (reinterpret_cast<uintptr_t>(start) + kHugePage - 1) & ~(kHugePage - 1);
  auto last = (reinterpret_cast<uintptr_t>(start) + bytes) & ~(kHugePage - 1);
  if (last > first) ::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
}

}  // namespace zephyr

#endif  // ZEPHYR_TABLE_HUGE_PAGES_H_
