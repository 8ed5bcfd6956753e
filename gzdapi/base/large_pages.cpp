// Tries one page and goes by the processor time that it took.
#include "base/large_pages.h"

#include <sys/mman.h>

#include <cstdint>
#include <ctime>

namespace gzd {

namespace {

constexpr std::uintptr_t large_page = 2 << 20;

double processor_seconds() {
  constexpr double nanosecond = 1e-9;
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * nanosecond;
}

// Whether a large page was not dearer than as much memory in small ones.
bool comes_quickly(void* page) {
  constexpr double most_seconds = 0.8e-3;
  const double begin = processor_seconds();
  madvise(page, large_page, MADV_HUGEPAGE);
#ifdef MADV_POPULATE_WRITE
  madvise(page, large_page, MADV_POPULATE_WRITE);
#endif
  return processor_seconds() - begin <= most_seconds;
}

}  // namespace

void ask_for_large_pages(void* memory, std::size_t bytes) {
  const auto begin = reinterpret_cast<std::uintptr_t>(memory);
  const std::uintptr_t first = (begin + large_page - 1) / large_page * large_page;
  const std::uintptr_t end = (begin + bytes) / large_page * large_page;
  if (first >= end || !comes_quickly(reinterpret_cast<void*>(first))) return;
  madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
}

}  // namespace gzd
