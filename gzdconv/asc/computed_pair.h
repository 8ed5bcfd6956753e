// Columns of computed doubles (computed_number), worked out two at a time.
//
// What is not ready is to be written alone, by `write_any`.
#ifndef GZDCONV_COMPUTED_PAIR_H
#define GZDCONV_COMPUTED_PAIR_H

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "asc/computed_number.h"
#include "asc/number.h"
#include "asc/number_form.h"
#include "asc/output.h"
#include "asc/sample_number.h"
#include "cli/options.h"

namespace gzdconv {

namespace computed_number {

using Doubles2 = double __attribute__((vector_size(16)));
using Longs2 = std::int64_t __attribute__((vector_size(16)));
using ULongs2 = std::uint64_t __attribute__((vector_size(16)));

inline Doubles2 sizes_of(Doubles2 values) {
  constexpr std::uint64_t sign_bit = std::uint64_t{1} << 63;
  return Doubles2(ULongs2(values) & ~sign_bit);
}

// The nearest integers of two products.
struct NearestPair {
  Doubles2 sums;     // the lowest bits hold the integers
  Doubles2 nearest;  // the same as doubles
  Longs2 sure;       // -1 where they are sure, else 0

  explicit NearestPair(Doubles2 products)
      : sums(products + rounding_shift),
        nearest(sums - rounding_shift),
        sure(sizes_of(products - nearest) < surely_nearest) {}
};

// "0.0", "0.1" up to "1.9".
constexpr auto short_tenths = [] {
  std::array<std::array<char, 4>, 20> texts{};
  for (std::size_t n = 0; n < texts.size(); ++n)
    texts[n] = {static_cast<char>('0' + n / 10), '.', static_cast<char>('0' + n % 10)};
  return texts;
}();

// The lowest bits of a sum with rounding_shift.
inline std::uint32_t integer_in(double sum) {
  return static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(sum));
}

// The column of tenths below 3276.8: the sign takes the place of the last blank.
inline char* write_ready_cell(char* place, std::uint32_t tenths, bool negative) {
  static_assert(std::endian::native == std::endian::little);
  constexpr std::uint64_t blanks = 0x8020202020202020, sign_for_blank = ' ' ^ '-';
  std::uint64_t cell;
  std::memcpy(&cell, sample_number::ready_cells.of[tenths].text, sizeof cell);
  const int last_blank = std::countr_zero((cell >> 8) ^ blanks) & 56;
  cell ^= (negative ? sign_for_blank : 0) << last_blank;
  std::memcpy(place, &cell, sizeof cell);
  return place + sizeof cell;
}

}  // namespace computed_number

// As print_value(1, value).
class TenthsPair {
 public:
  // Whether columns are such ones. Constant while options stay.
  static bool suits() { return has_usual_form(); }

  explicit TenthsPair(computed_number::Doubles2 values)
      : values_(values), tenths_(computed_number::sizes_of(values) * 10.0) {}

  // -1 for a number that is short enough and sure, else 0.
  [[nodiscard]] computed_number::Longs2 ready() const {
    return tenths_.sure & (tenths_.nearest < double{sample_number::ready_count});
  }

  // Writes the column of one, and returns its end.
  char* write(char* place, int which) const {
    return computed_number::write_ready_cell(
        place, computed_number::integer_in(tenths_.sums[which]), std::signbit(values_[which]));
  }

  static char* write_any(char* place, double value) {
    return write_computed(place, value, form_of(1));
  }

 private:
  computed_number::Doubles2 values_;
  computed_number::NearestPair tenths_;
};

// As print_value(10, value), for numbers below 2.
class TenDecimalsPair {
 public:
  static bool suits() { return options.extra_decimals == 0; }

  explicit TenDecimalsPair(computed_number::Doubles2 values)
      : values_(values), scaled_(computed_number::sizes_of(values) * 1e10) {
    const Split first(scaled_.nearest, 1e9), second(first.rests, 1e6), third(second.rests, 1e3);
    groups_[0] = first.sums;
    groups_[1] = second.sums;
    groups_[2] = third.sums;
    groups_[3] = third.rests + rounding_shift;
  }

  [[nodiscard]] computed_number::Longs2 ready() const {
    return scaled_.sure & (scaled_.nearest < 2e10);
  }

  // The last groups first: each of three brings a point, which the one before overwrites.
  char* write(char* place, int which) const {
    constexpr std::size_t head_length = 3;
    std::memcpy(place, "\t-", 2);
    place += std::signbit(values_[which]) ? 2 : 1;
    for (std::size_t group = std::size(groups_); --group > 0;) {
      const std::uint32_t three = computed_number::integer_in(groups_[group][which]);
      std::memcpy(place + 3 * group - 1, &number_form::decimal_cells.of[three],
                  sizeof(number_form::DecimalCell));
    }
    const std::uint32_t tenths = computed_number::integer_in(groups_[0][which]);
    std::memcpy(place, computed_number::short_tenths[tenths].data(), head_length);
    return place + head_length + 3 * (std::size(groups_) - 1);
  }

  static char* write_any(char* place, double value) {
    lpbuffer.set_cursor(place);
    print_value(10, value);
    return lpbuffer.cursor();
  }

 private:
  // Whole numbers divided by a power of ten, down to a whole number, and what is left.
  struct Split {
    computed_number::Doubles2 sums;  // the quotients, as in NearestPair
    computed_number::Doubles2 rests;

    // Less a half, the nearest integer is the one below. The power's half of a part keeps it there.
    Split(computed_number::Doubles2 values, double power)
        : sums(values * (1.0 / power) - (0.5 - 0.5 / power) + rounding_shift),
          rests(values - (sums - rounding_shift) * power) {}
  };

  computed_number::Doubles2 values_;
  computed_number::NearestPair scaled_;
  computed_number::Doubles2 groups_[4];  // tenths, and three decimals each
};

}  // namespace gzdconv

#endif
