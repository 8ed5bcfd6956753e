// Large pages for memory that is about to be written.
#ifndef GZDAPI_LARGE_PAGES_H
#define GZDAPI_LARGE_PAGES_H

#include <cstddef>
#include <cstdint>

namespace gzd {

// Large pages make touching memory for the first time several times cheaper, where the system has
// them at hand. One that has to fetch them (a virtual machine that gives unused memory back, memory
// in pieces) takes several times longer. So they are touched one by one, shortly before they are
// written, and no more are asked for after one that was slow. Of what the memory holds nothing
// changes.
class LargePages {
 public:
  LargePages() = default;
  // For the memory from `begin` to `end`.
  LargePages(const void* begin, const void* end);

  // To be called from time to time while the memory is written from its beginning on, up to `place`
  // so far.
  void writtenUpTo(const void* place) {
    if (reinterpret_cast<std::uintptr_t>(place) + ahead >= next_) touchNext();
  }

 private:
  static constexpr std::uintptr_t size = 2 << 20;
  static constexpr std::uintptr_t ahead = size / 2;

  void touchNext();

  std::uintptr_t next_ = UINTPTR_MAX, end_ = 0;
};

}  // namespace gzd

#endif
