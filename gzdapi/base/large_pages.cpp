// Goes by the processor time that a page took.
#include "base/large_pages.h"

#include <sys/mman.h>

#include <ctime>

namespace gzd {

namespace {

double processor_seconds() {
  constexpr double nanosecond = 1e-9;
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * nanosecond;
}

// Whether the page was not dearer than as much memory in small ones.
bool comes_quickly(void* page, std::size_t bytes) {
  constexpr double most_seconds = 0.8e-3;
  const double begin = processor_seconds();
  madvise(page, bytes, MADV_HUGEPAGE);
#ifdef MADV_POPULATE_WRITE
  madvise(page, bytes, MADV_POPULATE_WRITE);
#endif
  return processor_seconds() - begin <= most_seconds;
}

}  // namespace

LargePages::LargePages(const void* begin, const void* end)
    : next_((reinterpret_cast<std::uintptr_t>(begin) + size - 1) / size * size),
      end_(reinterpret_cast<std::uintptr_t>(end)) {}

void LargePages::touchNext() {
  const bool goesOn = next_ + size <= end_ && comes_quickly(reinterpret_cast<void*>(next_), size);
  next_ = goesOn ? next_ + size : UINTPTR_MAX;
}

}  // namespace gzd
