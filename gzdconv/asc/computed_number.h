// Columns of doubles that were computed, unlike the singles that records hold (number_form).
//
// A double times a power of ten is not exact, but off by so little that its nearest integer is sure
// unless it lies near a half. Near halves, and for what is large, print_value is asked.
#ifndef GZDCONV_COMPUTED_NUMBER_H
#define GZDCONV_COMPUTED_NUMBER_H

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "asc/number_form.h"
#include "asc/sample_number.h"

namespace gzdconv {

namespace computed_number {

// Products stay below 10^12, so that they are off by less than 0.0002.
constexpr double surely_nearest = 0.499;

inline bool is_sure(double product, double nearest) {
  return std::fabs(product - nearest) < surely_nearest;
}
inline double nearest_to(double product) {
  return (product + rounding_shift) - rounding_shift;
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

// Writes at `place`, in the line buffer at or after its cursor, what
// print_value(form.asked_decimals, value) appends, and returns the end.
char* write_computed(char* place, double value, const NumberForm& form);

// Appends what print_value(decimals, value) appends, of 0 to 3 decimals.
inline void print_computed(int decimals, double value) {
  lpbuffer.set_cursor(write_computed(lpbuffer.cursor(), value, form_of(decimals)));
}

// The same of print_value(1, value). `usual` is has_usual_form().
inline char* write_computed_tenths(char* place, double value, bool usual) {
  const double product = std::fabs(value) * 10.0;
  const double nearest = computed_number::nearest_to(product);
  const bool is_ready = usual && nearest < double{sample_number::ready_count};
  if (!is_ready || !computed_number::is_sure(product, nearest))
    return write_computed(place, value, form_of(1));
  return computed_number::write_ready_cell(place, static_cast<std::uint32_t>(nearest),
                                           std::signbit(value));
}

// The same of print_value(10, value), quickly below 2.
char* write_ten_decimals(char* place, double value);

}  // namespace gzdconv

#endif
