// Columns of the usual form, with one decimal and seven characters wide, of whole numbers, worked
// out four at a time. The positions that the tracker counts in units of its own are such numbers;
// they vary too much for the columns of tenths to stay in the processor's cache.
#ifndef GZDCONV_WHOLE_NUMBERS_H
#define GZDCONV_WHOLE_NUMBERS_H

#include <bit>
#include <cstdint>
#include <cstring>

#include "asc/number_form.h"

namespace gzdconv {

class WholeNumbers {
 public:
  WholeNumbers(const float (&first)[2], const float (&second)[2]) {
    // A sum with this, 1.5 * 2^23, has no bit of a fraction, and its lowest bits are the nearest
    // integer.
    constexpr float shift = 12582912.0F;
    const Floats4 values = {first[0], first[1], second[0], second[1]};
    const Floats4 sums = values + shift;
    const UInts4 whole = UInts4(sums) - std::bit_cast<std::uint32_t>(shift);
    const UInts4 rest = UInts4(sums - shift) ^ UInts4(values);  // some for -0.0 as well
    constexpr std::int32_t end = number_form::whole_count - 1;
    unready_ = Ints4(rest) | (Ints4(whole) <= -end) | (Ints4(whole) >= end);
    // Without a branch for the sign, which is as good as random.
    const UInts4 signs = UInts4(Ints4(whole) >> 31);
    places_ = ((whole ^ signs) - signs) * 2 - signs;
  }

  // True when all four are whole and short enough.
  [[nodiscard]] bool are_ready() const {
    const Longs2 halves = Longs2(unready_);
    return (halves[0] | halves[1]) == 0;
  }

  // Writes the column of one, and returns its end.
  char* write(char* place, int which) const {
    const std::uint64_t cell = whole_cell_at(places_[which]);
    const std::uint64_t column = cell << 8 | '\t';
    std::memcpy(place, &column, sizeof column);
    return place + sizeof column;
  }

 private:
  using Floats4 = float __attribute__((vector_size(16)));
  using Ints4 = std::int32_t __attribute__((vector_size(16)));
  using UInts4 = std::uint32_t __attribute__((vector_size(16)));
  using Longs2 = std::int64_t __attribute__((vector_size(16)));

  UInts4 places_;  // in the table of whole numbers
  Ints4 unready_;  // 0 for those that are ready
};

}  // namespace gzdconv

#endif
