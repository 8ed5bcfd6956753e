// The column that sample lines are made of: a float with one decimal, seven characters wide.
//
// The column of a value below 3276.8 stands ready in a table. What does not fit is written like a
// column of any form (number_form), which gives the same text.
#ifndef GZDCONV_SAMPLE_NUMBER_H
#define GZDCONV_SAMPLE_NUMBER_H

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "asc/output.h"
#include "cli/options.h"

namespace gzdconv {

namespace sample_number {

struct Cell {
  char text[8];
};

// The columns of 0.0, 0.1 ...
constexpr std::size_t ready_count = 32768;
struct ReadyCells {
  Cell of[ready_count];
};
extern const ReadyCells ready_cells;

// After a sum with this no bit of a fraction is left, and the lowest bits are the nearest integer,
// halves to even.
constexpr double shift = 6755399441055744.0;  // 1.5 * 2^52

// The nearest integer of a value from 0 up to 2^31.
inline std::uint32_t rounded(double value) {
  return static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(value + shift));
}

}  // namespace sample_number

// Whether columns have their usual form. Constant while options stay.
inline bool has_usual_form() {
  return (options.tabs_only | options.extra_decimals) == 0;
}

// What print_value gives for any number; NOT_RECORDED prints as missing.
char* write_any_tenths(char* place, float value);

// True for values whose columns stand ready: bit patterns of positive floats are in the order of
// their values, and all others lie above.
inline bool has_ready_tenths(float value) {
  return std::bit_cast<std::uint32_t>(value) < std::bit_cast<std::uint32_t>(3276.7F);
}

// Writes the column of such a value, and returns its end.
inline char* write_ready_tenths(char* place, float value) {
  // A float times 10 is exact in double precision.
  const std::uint32_t tenths = sample_number::rounded(static_cast<double>(value) * 10.0);
  std::memcpy(place, sample_number::ready_cells.of[tenths].text, sizeof(sample_number::Cell));
  return place + sizeof(sample_number::Cell);
}

// Whether columns have no more than a tab in front. Constant while options stay.
inline bool has_compact_form() {
  return options.tabs_only != 0 && options.extra_decimals == 0;
}

namespace sample_number {

inline std::uint64_t ready_cell(std::uint32_t tenths) {
  static_assert(std::endian::native == std::endian::little);
  std::uint64_t cell;
  std::memcpy(&cell, ready_cells.of[tenths].text, sizeof cell);
  return cell;
}

// The bits of the blanks behind the tab of a cell: there is one at least.
inline int blank_bits(std::uint64_t cell) {
  constexpr std::uint64_t blanks = 0x8020202020202020;  // the last one not to be found
  return std::countr_zero((cell >> 8) ^ blanks) & ~7;
}

// Writes a cell, and returns its end: as it is or, compact, its tab and what is behind the first so
// many bits of blanks.
template <bool compact>
char* write_cell(char* place, std::uint64_t cell, int skipped) {
  if (compact) cell = (cell >> skipped & ~std::uint64_t{0xFF}) | '\t';
  std::memcpy(place, &cell, sizeof cell);
  return place + sizeof cell - (compact ? skipped / 8 : 0);
}

}  // namespace sample_number

// The columns of two such values, worked out side by side.
class ReadyPair {
 public:
  explicit ReadyPair(const float (&values)[2]) {
    // Loaded as one piece of eight bytes, into a vector of four with two lanes unused, or the
    // compiler works on each value alone.
    double pair;
    std::memcpy(&pair, values, sizeof pair);
    const auto four = __builtin_convertvector(Floats4(Doubles2{pair, 0.0}), Doubles4);
    sums_ = __builtin_shufflevector(four, four, 0, 1) * 10.0 + sample_number::shift;
  }

  // Writes the column of one, and returns its end.
  template <bool compact>
  char* write(char* place, int which) const {
    const auto tenths = static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(sums_[which]));
    const std::uint64_t cell = sample_number::ready_cell(tenths);
    const int skipped = compact ? sample_number::blank_bits(cell) : 0;
    return sample_number::write_cell<compact>(place, cell, skipped);
  }

 private:
  using Floats4 = float __attribute__((vector_size(16)));
  using Doubles2 = double __attribute__((vector_size(16)));
  using Doubles4 = double __attribute__((vector_size(32)));

  Doubles2 sums_;
};

// Writes at `place`, in the line buffer at or after its cursor, what print_value(1, value)
// appends; NOT_RECORDED prints as missing. `usual` is has_usual_form(). Returns the end.
inline char* write_tenths(char* place, float value, bool usual) {
  return usual && has_ready_tenths(value) ? write_ready_tenths(place, value)
                                          : write_any_tenths(place, value);
}

// has_ready_tenths and write_ready_tenths for values of either sign. The place in front of the
// first digit is blank in a ready column; the sign goes there without a branch, as it is as good as
// random from one to the next.
inline bool has_ready_signed_tenths(float value) {
  return has_ready_tenths(std::fabs(value));
}
template <bool compact>
char* write_ready_signed_tenths(char* place, float value) {
  using namespace sample_number;
  constexpr std::uint64_t sign_for_blank = ' ' ^ '-';
  const std::uint64_t cell = ready_cell(rounded(static_cast<double>(std::fabs(value)) * 10.0));
  const int blanks = blank_bits(cell);
  const std::uint32_t negative = std::bit_cast<std::uint32_t>(value) >> 31;
  return write_cell<compact>(place, cell ^ (sign_for_blank * negative << blanks),
                             blanks - 8 * static_cast<int>(negative));
}

// What write_tenths does, for values that are often negative.
inline char* write_signed_tenths(char* place, float value, bool usual) {
  return usual && has_ready_signed_tenths(value) ? write_ready_signed_tenths<false>(place, value)
                                                 : write_any_tenths(place, value);
}

// Appends what print_value(1, value) appends.
inline void print_tenths(float value) {
  lpbuffer.set_cursor(write_tenths(lpbuffer.cursor(), value, has_usual_form()));
}

}  // namespace gzdconv

#endif
