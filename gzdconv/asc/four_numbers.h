// Columns of short numbers with decimals, worked out four at a time.
#ifndef GZDCONV_FOUR_NUMBERS_H
#define GZDCONV_FOUR_NUMBERS_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "asc/number_form.h"

namespace gzdconv {

// Of singles: with 1 to 6 decimals, and `whole_width` characters or more in front of the point.
template <int decimals, std::size_t whole_width>
class FourNumbers {
 public:
  static constexpr int count = 4;

  explicit FourNumbers(const float* four) : FourNumbers(four, four + 2) {}
  // Of two pairs.
  FourNumbers(const float* pair, const float* other) {
    const Floats4 values = {pair[0], pair[1], other[0], other[1]};
    constexpr std::uint32_t sign_bit = 0x80000000;
    const Ints4 signs = Ints4(UInts4(values) >> 31);
    const Floats4 sizes = Floats4(UInts4(values) & ~sign_bit);
    ready_ = Ints4(sizes < limit);
    // Fraction and product are exact. A fraction may round up to a whole one.
    const Ints4 whole = __builtin_convertvector(sizes, Ints4);
    const Floats4 fractions = sizes - __builtin_convertvector(whole, Floats4);
    const Doubles4 sums = __builtin_convertvector(fractions, Doubles4) * power + rounding_shift;
    const Doubles2 first = __builtin_shufflevector(sums, sums, 0, 1);
    const Doubles2 last = __builtin_shufflevector(sums, sums, 2, 3);
    const Ints4 rests = __builtin_shufflevector(Ints4(first), Ints4(last), 0, 2, 4, 6);
    const Ints4 full = rests == static_cast<std::int32_t>(power);
    rests_ = rests & ~full;
    places_ = (whole - full) * 2 + signs;
  }

  // True when all four are short enough.
  [[nodiscard]] bool are_ready() const {
    const Longs2 halves = Longs2(ready_);
    return (halves[0] & halves[1]) == -1;
  }

  // Writes the column of one, and returns its end.
  char* write(char* place, int which) const {
    const auto& cells = number_form::tabbed_cells<whole_width>();
    std::uint64_t cell;
    std::memcpy(&cell, &cells.of[static_cast<std::uint32_t>(places_[which])], sizeof cell);
    std::memcpy(place, &cell, sizeof cell);
    return number_form::write_known_decimals<decimals>(place + (cell >> 56),
                                                       static_cast<std::uint32_t>(rests_[which]));
  }

 private:
  using Floats4 = float __attribute__((vector_size(16)));
  using Ints4 = std::int32_t __attribute__((vector_size(16)));
  using UInts4 = std::uint32_t __attribute__((vector_size(16)));
  using Longs2 = std::int64_t __attribute__((vector_size(16)));
  using Doubles2 = double __attribute__((vector_size(16)));
  using Doubles4 = double __attribute__((vector_size(32)));

  static constexpr float limit = number_form::whole_count - 1;
  static constexpr auto power = static_cast<double>(number_form::power_of_ten(decimals));

  Ints4 places_;  // in the table of whole numbers
  Ints4 rests_;   // the decimals
  Ints4 ready_;   // -1 for those that are ready
};

// In the usual form.
using ThreeDecimals = FourNumbers<3, number_form::tabbed_width>;

}  // namespace gzdconv

#endif
