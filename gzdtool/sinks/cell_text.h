// Values of tables as text.
#ifndef GZDTOOL_CELL_TEXT_H
#define GZDTOOL_CELL_TEXT_H

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace gzdtool {

// Longest text that the functions here write: a float64 in fixed notation.
constexpr std::size_t longest_number = 330;

// Writes an integer at `to`, and returns the place behind it.
template <class Integer>
[[nodiscard]] inline char* write_integer(char* to, Integer value) {
  return std::to_chars(to, to + longest_number, value).ptr;
}

// Writes a number below 1e10 at `to`, and returns the place behind it.
[[nodiscard]] inline char* write_digits(char* to, std::uint32_t value) {
  constexpr std::size_t most = 10;
  char digits[2 * most] = {};  // as many as are copied, wherever they begin
  char* first = digits + most;
  do {
    *--first = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (value != 0);
  std::memcpy(to, first, most);
  return to + (digits + most - first);
}

// A float32 as the fewest digits that read back as the same value.
[[nodiscard]] inline char* write_float(char* to, float value) {
  // Tenths of few digits are what trackers record. A decimal number of at most six digits is the
  // shortest text of the float next to it, and below 1e5 no exponent is shorter.
  constexpr float most_tenths = 999999.0F;
  const float tenths = value * 10.0F;
  if (!(std::fabs(tenths) <= most_tenths)) return std::to_chars(to, to + longest_number, value).ptr;
  const auto whole = static_cast<std::int32_t>(tenths + (value < 0 ? -0.5F : 0.5F));
  const bool is_tenths = whole != 0 && static_cast<float>(whole) / 10.0F == value;
  if (!is_tenths) return std::to_chars(to, to + longest_number, value).ptr;
  if (whole < 0) *to++ = '-';
  const auto digits = static_cast<std::uint32_t>(whole < 0 ? -whole : whole);
  to = write_digits(to, digits / 10);
  if (digits % 10 != 0) {
    *to++ = '.';
    *to++ = static_cast<char>('0' + digits % 10);
  }
  return to;
}

// A float64 in fixed notation, the fewest digits that read back as the same value.
[[nodiscard]] inline char* write_double(char* to, double value) {
  constexpr double highest_whole = 4e9;
  const bool is_whole = value >= 0 && value <= highest_whole && std::trunc(value) == value;
  if (is_whole && !std::signbit(value)) return write_digits(to, static_cast<std::uint32_t>(value));
  return std::to_chars(to, to + longest_number, value, std::chars_format::fixed).ptr;
}

}  // namespace gzdtool

#endif
