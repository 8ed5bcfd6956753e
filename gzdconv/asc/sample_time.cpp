// The times that need all their digits anew.
#include "asc/sample_time.h"

#include <charconv>

namespace gzdconv {

TimeDigits time_digits;

char* TimeDigits::write_short(char* place, UINT32 time) {
  return std::to_chars(place, place + sizeof text_, time).ptr;
}

void TimeDigits::keep(UINT32 time) {
  base_ = time - time % 100;
  length_ =
      static_cast<std::size_t>(std::to_chars(text_, text_ + sizeof text_, base_ / 100).ptr - text_);
}

char* write_half(char* place, char* end, const FSAMPLE& sample) {
  constexpr std::ptrdiff_t width = 8;
  *end++ = '.';
  *end++ = (sample.flags & SMP_HALF_MS) != 0 ? '5' : '0';
  while (end - place < width) *end++ = ' ';
  return end;
}

}  // namespace gzdconv
