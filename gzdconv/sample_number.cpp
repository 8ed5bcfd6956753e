#include "sample_number.h"

#include "gzd_data.h"
#include "number.h"

namespace {

char* write_negative_tenths(char* place, float value) {
  const std::uint32_t tenths = sample_number::rounded(static_cast<double>(-value) * 10.0);
  if (tenths < 1000) {
    std::memcpy(place, &sample_number::small_negatives[tenths], 8);
  } else {
    std::memcpy(place, &sample_number::heads[1][tenths / 1000], 4);
    std::memcpy(place + 4, &sample_number::tails[0][tenths % 1000], 4);
  }
  return place + 8;
}

}  // namespace

char* write_any_tenths(char* place, float value) {
  const bool fits_tables = std::signbit(value) && value > -9999.0f;
  if (fits_tables && has_usual_form()) return write_negative_tenths(place, value);
  lpbuffer.set_cursor(place);
  print_value(1, value == NOT_RECORDED ? MISSING_DATA : value);
  return lpbuffer.cursor();
}
