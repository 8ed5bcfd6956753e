// Columns of doubles that were computed, unlike the singles that records hold (number_form).
//
// A double times a power of ten is not exact, but off by so little that its nearest integer is sure
// unless it lies near a half. Near halves, and for what is large, print_value is asked.
#ifndef GZDCONV_COMPUTED_NUMBER_H
#define GZDCONV_COMPUTED_NUMBER_H

#include <cmath>
#include <cstdint>

#include "asc/number_form.h"
#include "asc/output.h"

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

}  // namespace computed_number

// Writes at `place`, in the line buffer at or after its cursor, what
// print_value(form.asked_decimals, value) appends, and returns the end.
char* write_computed(char* place, double value, const NumberForm& form);

// Appends what print_value(decimals, value) appends, of 0 to 3 decimals.
inline void print_computed(int decimals, double value) {
  lpbuffer.set_cursor(write_computed(lpbuffer.cursor(), value, form_of(decimals)));
}

}  // namespace gzdconv

#endif
