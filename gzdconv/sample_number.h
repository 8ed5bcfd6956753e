// The column that sample lines are made of: a float with one decimal, seven characters wide.
//
// Of "\t12345.6", the first four characters depend on the thousands of the tenths alone, the last
// four on the rest: two look-ups. What does not fit goes to print_value, which gives the same text.
#ifndef GZDCONV_SAMPLE_NUMBER_H
#define GZDCONV_SAMPLE_NUMBER_H

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "options.h"
#include "output.h"

namespace sample_number {

using Quad = std::array<char, 4>;
using Quads = std::array<Quad, 1000>;

// "\t123", leading zeros blank, a minus sign in front of the first digit of a negative number.
constexpr Quads make_heads(bool negative) {
  Quads heads{};
  for (std::size_t n = 0; n < heads.size(); ++n) {
    Quad& head = heads[n] = {'\t', ' ', ' ', ' '};
    std::size_t place = head.size();
    for (std::size_t rest = n; rest != 0; rest /= 10)
      head[--place] = static_cast<char>('0' + rest % 10);
    if (negative && n != 0 && place > 1) head[place - 1] = '-';
  }
  return heads;
}

// "45.6"; with nothing in front, the first digit is blank when it is 0.
constexpr Quads make_tails(bool leading) {
  Quads tails{};
  for (std::size_t n = 0; n < tails.size(); ++n) {
    const auto digit = [n](std::size_t power) { return static_cast<char>('0' + n / power % 10); };
    tails[n] = {leading && n < 100 ? ' ' : digit(100), digit(10), '.', digit(1)};
  }
  return tails;
}

// "\t  -45.6" of a negative number above -100.
using Cell = std::array<char, 8>;

constexpr std::array<Cell, 1000> make_small_negatives() {
  std::array<Cell, 1000> cells{};
  for (std::size_t n = 0; n < cells.size(); ++n) {
    const auto digit = [n](std::size_t power) { return static_cast<char>('0' + n / power % 10); };
    const bool two_digits = n >= 100;
    cells[n] = {'\t',      ' ', ' ',     two_digits ? '-' : ' ', two_digits ? digit(100) : '-',
                digit(10), '.', digit(1)};
  }
  return cells;
}

inline constexpr std::array<Cell, 1000> small_negatives = make_small_negatives();
inline constexpr std::array<Quads, 2> heads = {make_heads(false), make_heads(true)};
inline constexpr std::array<Quads, 2> tails = {make_tails(false), make_tails(true)};

// The nearest integer of a value from 0 up to 2^31, halves to even: behind this sum no bit of a
// fraction is left.
inline std::uint32_t rounded(double value) {
  constexpr double shift = 6755399441055744.0;  // 1.5 * 2^52
  return static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(value + shift));
}

}  // namespace sample_number

// Whether columns have their usual form. Constant while options stay.
inline bool has_usual_form() {
  return (options.tabs_only | options.extra_decimals) == 0;
}

// What print_value gives for any number; NOT_RECORDED prints as missing.
char* write_any_tenths(char* place, float value);

// Writes at `place`, in the line buffer at or behind its cursor, what print_value(1, value)
// appends; NOT_RECORDED prints as missing. `usual` is has_usual_form(). Returns the end.
inline char* write_tenths(char* place, float value, bool usual) {
  // Bit patterns of positive floats are in the order of their values; all others lie above.
  constexpr std::uint32_t limit = std::bit_cast<std::uint32_t>(99999.0f);
  if (!usual || std::bit_cast<std::uint32_t>(value) >= limit) {
    return write_any_tenths(place, value);
  }
  // A float times 10 is exact in double precision.
  const std::uint32_t tenths = sample_number::rounded(static_cast<double>(value) * 10.0);
  const std::uint32_t thousands = tenths / 1000;
  std::memcpy(place, &sample_number::heads[0][thousands], 4);
  std::memcpy(place + 4, &sample_number::tails[thousands == 0][tenths % 1000], 4);
  return place + 8;
}

// Appends what print_value(1, value) appends.
inline void print_tenths(float value) {
  lpbuffer.set_cursor(write_tenths(lpbuffer.cursor(), value, has_usual_form()));
}

#endif
