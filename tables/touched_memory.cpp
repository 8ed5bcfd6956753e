// To touch a page for the first time costs more than to fill it, if it is a small one. Large ones
// are several times cheaper, but where the system has none at hand (a virtual machine that gives
// unused memory back, or one whose memory is in pieces) several times dearer. Some are slow among
// many that are quick, so what large pages may lose against small ones has a limit.
#include "touched_memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <new>

namespace gzdtables {

namespace {

constexpr std::size_t large_page = 2 << 20;

#if defined(__linux__)

#ifndef MADV_POPULATE_WRITE
#define MADV_POPULATE_WRITE 23
#endif

double processor_seconds() {
  constexpr double nanosecond = 1e-9;
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * nanosecond;
}

double seconds_to_touch(std::byte* page) {
  const double begin = processor_seconds();
  madvise(page, large_page, MADV_HUGEPAGE);
  madvise(page, large_page, MADV_POPULATE_WRITE);
  return processor_seconds() - begin;
}

// What large pages lost of late. What quick ones gain makes up for slow ones before them, but is
// not saved for those to come: they tend to be followed by more.
class Loss {
 public:
  void add(double seconds) { seconds_ = std::max(0.0, seconds_ + seconds - of_small_pages); }
  [[nodiscard]] bool is_bearable() const { return seconds_ <= most; }

 private:
  static constexpr double of_small_pages = 0.8e-3;  // for as much memory
  static constexpr double most = 6e-3;              // a slow page or two
  double seconds_ = 0;
};

// Advice only: what the system does not know or have is touched when it is written.
void touch(std::byte* memory, std::size_t bytes) {
  std::size_t done = 0;
  for (Loss loss; bytes - done >= large_page && loss.is_bearable(); done += large_page)
    loss.add(seconds_to_touch(memory + done));
  if (bytes > done) madvise(memory + done, bytes - done, MADV_POPULATE_WRITE);
}

#else

void touch(std::byte*, std::size_t) {}

#endif

}  // namespace

std::shared_ptr<std::byte[]> new_touched_memory(std::size_t bytes) {
  const std::size_t pages = bytes / large_page + 1;
  auto* const memory = static_cast<std::byte*>(std::aligned_alloc(large_page, pages * large_page));
  if (memory == nullptr) throw std::bad_alloc();
  touch(memory, bytes);
  return {memory, [](std::byte* begin) { std::free(begin); }};
}

}  // namespace gzdtables
