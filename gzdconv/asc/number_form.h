// Columns of singles in every form: with so many decimals, seven characters wide or behind a tab
// alone.
//
// A number is its whole part, of which all below 10000 stand ready in a table, and its decimals,
// three at a time from another. What does not fit goes to print_value, which gives the same text.
#ifndef GZDCONV_NUMBER_FORM_H
#define GZDCONV_NUMBER_FORM_H

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "cli/options.h"
#include "gzd_data.h"

namespace gzdconv {

namespace number_form {

// "   12" or "  -12" and, behind it, ".0"; the last one of eight bytes is the number of characters
// in front of the point that are not blank.
struct WholeCell {
  char text[7];
  char length;
};
constexpr std::size_t cell_width = 5;
constexpr int whole_count = 10000;
struct WholeCells {
  WholeCell of[2 * whole_count];  // positive and negative ones in turns
};
extern const WholeCells whole_cells;

// The same numbers behind their tab, "\t 12", at least one or three characters wide; the last byte
// tells the length with the tab.
constexpr std::size_t tabbed_width = 3;
extern const WholeCells narrow_cells, wide_cells;
template <std::size_t width>
const WholeCells& tabbed_cells() {
  static_assert(width == 1 || width == tabbed_width);
  return width == 1 ? narrow_cells : wide_cells;
}

// ".345"
struct DecimalCell {
  char text[4];
};
constexpr int decimals_at_once = 3;
struct DecimalCells {
  DecimalCell of[1000];
};
extern const DecimalCells decimal_cells;

constexpr std::uint64_t power_of_ten(int exponent) {
  return exponent == 0 ? 1 : 10 * power_of_ten(exponent - 1);
}

// Writes the point and up to six decimals, the last ones first: each group of three brings a point,
// which the one before overwrites.
template <int decimals>
char* write_known_decimals(char* place, std::uint32_t rest) {
  constexpr int groups = (decimals - 1) / decimals_at_once + 1;
  rest *= static_cast<std::uint32_t>(power_of_ten(groups * decimals_at_once - decimals));
  if (groups > 1)
    std::memcpy(place + decimals_at_once, &decimal_cells.of[rest % 1000], sizeof(DecimalCell));
  std::memcpy(place, &decimal_cells.of[groups > 1 ? rest / 1000 : rest], sizeof(DecimalCell));
  return place + decimals + 1;
}

}  // namespace number_form

// How singles of one precision print.
struct NumberForm {
  int asked_decimals = 0;              // of print_value
  int decimals = 0;                    // as shown, up to 8
  std::size_t start = 1;               // where the number begins, behind its tab and blanks
  std::size_t whole_width = 0;         // least characters in front of the point, up to 5
  std::size_t tail_length = 0;         // the point and the decimals
  float limit = 0.0F;                  // what is smaller is written from tables
  float short_limit = 0.0F;            // the same of numbers with up to three decimals, else 0
  std::uint64_t power = 1;             // of ten, as many decimals
  std::uint64_t reciprocal = 0;        // 2^63 / power, rounded up
  std::uint64_t short_reciprocal = 0;  // 2^40 / power, rounded up: for less than 2^40 / power
  std::uint64_t stretch = 1;           // makes whole groups of three decimals
  double scale = 1.0;                  // the same as `power`
};

namespace number_form {

// By the decimals asked for and the extra ones, behind a tab alone or seven characters wide.
constexpr std::size_t asked_choices = 4;
constexpr std::size_t extra_choices = 6;
using Forms = std::array<std::array<NumberForm, extra_choices>, asked_choices>;
extern const Forms compact_forms, aligned_forms;

// Writers of numbers that are formed, by decimals, of which there is one at least.
using FormedWriter = char* (*)(char* place, std::span<const float> values, std::size_t whole_width);
extern const std::array<FormedWriter, 7> formed_writers;

}  // namespace number_form

// The form of columns with `decimals`, 0 to 3. Constant while options stay.
inline const NumberForm& form_of(int decimals) {
  const auto extra = static_cast<std::size_t>(options.extra_decimals);
  const auto& forms =
      options.tabs_only != 0 ? number_form::compact_forms : number_form::aligned_forms;
  return forms[static_cast<std::size_t>(decimals)][extra < number_form::extra_choices ? extra : 0];
}

// The form of "\t%8.3f".
constexpr int camera_width = 8;
extern const NumberForm camera_form;

// True for numbers that write_number takes; false for what stands for a missing one.
inline bool is_formed(float value, const NumberForm& form) {
  return std::fabs(value) < form.limit;
}

// Behind a sum with this no bit of a fraction is left, and the lowest bits are the nearest integer,
// halves to even.
constexpr double rounding_shift = 6755399441055744.0;  // 1.5 * 2^52

// One of them as eight bytes; that of a whole number below 10000, its sign too.
inline std::uint64_t whole_cell_at(std::uint64_t place) {
  static_assert(std::endian::native == std::endian::little);
  std::uint64_t cell;
  std::memcpy(&cell, &number_form::whole_cells.of[place], sizeof cell);
  return cell;
}
inline std::uint64_t whole_cell(std::uint64_t whole, bool negative) {
  return whole_cell_at(2 * whole + (negative ? 1 : 0));
}

// Writes a whole number below 10000 at `place`, at least `width` characters wide, and returns its
// end. Eight bytes are stored.
inline char* write_whole(char* place, std::uint64_t whole, bool negative, std::size_t width) {
  std::uint64_t cell = whole_cell(whole, negative);
  const std::size_t length = std::max<std::size_t>(cell >> 56, width);
  cell >>= 8 * (number_form::cell_width - length);
  std::memcpy(place, &cell, sizeof cell);
  return place + length;
}

// Writes all decimals but the first three, and returns the number of these.
std::uint64_t write_last_decimals(char* place, std::uint64_t rest, int decimals);

// Writes the point and the decimals of `rest` / form.power.
inline char* write_decimals(char* place, std::uint64_t rest, const NumberForm& form) {
  using namespace number_form;
  rest *= form.stretch;
  if (form.decimals > decimals_at_once) rest = write_last_decimals(place, rest, form.decimals);
  std::memcpy(place, &decimal_cells.of[rest], sizeof(DecimalCell));
  return place + form.tail_length;
}

// Writes a number of two parts, the second in units of the last decimal, with its tab at `place`,
// and returns its end.
inline char* write_parts(char* place, bool negative, std::uint64_t whole, std::uint64_t rest,
                         const NumberForm& form) {
  std::memcpy(place, "\t   ", 4);
  place = write_whole(place + form.start, whole, negative, form.whole_width);
  return write_decimals(place, rest, form);
}

// The same of a single that is formed.
inline char* write_number(char* place, float value, const NumberForm& form) {
  __extension__ using Wide = unsigned __int128;
  // A float times a power of ten up to 10^12 is exact in double precision.
  const double product = static_cast<double>(std::fabs(value)) * form.scale;
  const std::uint64_t scaled = std::bit_cast<std::uint64_t>(product + rounding_shift) -
                               std::bit_cast<std::uint64_t>(rounding_shift);
  // A division, exact below 2^63 / power.
  const auto whole = static_cast<std::uint64_t>(Wide{scaled} * form.reciprocal >> 63);
  return write_parts(place, std::signbit(value), whole, scaled - whole * form.power, form);
}

// The same of one with up to three decimals.
inline char* write_short_number(char* place, float value, const NumberForm& form) {
  using namespace number_form;
  const double product = static_cast<double>(std::fabs(value)) * form.scale;
  const auto scaled =
      static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(product + rounding_shift));
  const std::uint64_t whole = scaled * form.short_reciprocal >> 40;
  const std::uint64_t rest = scaled - whole * form.power;
  std::memcpy(place, "\t   ", 4);
  place = write_whole(place + form.start, whole, std::signbit(value), form.whole_width);
  std::memcpy(place, &decimal_cells.of[rest * form.stretch], sizeof(DecimalCell));
  return place + form.tail_length;
}

// The same of tenths, as a double that is nearest to them; at least one decimal is shown.
inline char* write_tenths_of(char* place, std::int32_t tenths, const NumberForm& form) {
  const auto size = static_cast<std::uint32_t>(tenths < 0 ? -tenths : tenths);
  return write_parts(place, tenths < 0, size / 10, size % 10 * (form.power / 10), form);
}

// Writes so many missing numbers, each with its tab, and returns their end.
char* write_long_missing(char* place, int count);
inline char* write_missing(char* place, int count = 1) {
  constexpr std::uint64_t ones = 0x0101010101010101, tops = ones << 7;
  std::uint64_t text;
  std::memcpy(&text, missing_string, sizeof text);
  // The lowest set bit is the top one of the first byte that is 0.
  const std::uint64_t zeros = (text - ones) & ~text & tops;
  if (zeros == 0) return write_long_missing(place, count);
  const int length = std::countr_zero(zeros) >> 3;
  for (; count > 0; --count) {
    *place++ = '\t';
    std::memcpy(place, &text, sizeof text);
    place += length;
  }
  return place;
}

// What print_value gives for any number.
char* write_unformed(char* place, double value, const NumberForm& form);

// Writes at `place`, in the line buffer at or after its cursor, what
// print_value(form.asked_decimals, value) appends, and returns the end.
char* write_other_column(char* place, float value, const NumberForm& form);
inline char* write_column(char* place, float value, const NumberForm& form) {
  return std::fabs(value) < form.short_limit ? write_short_number(place, value, form)
                                             : write_other_column(place, value, form);
}
inline char* write_column(char* place, std::uint32_t value, const NumberForm& form) {
  return value < 9999 ? write_parts(place, false, value, 0, form)
                      : write_unformed(place, value, form);
}

// The same of a double that usually is the nearest one to a number of tenths.
inline char* write_tenths_column(char* place, double value, const NumberForm& form) {
  if (value == double{MISSING_DATA}) return write_missing(place);
  const double tenths = value * 10.0 + 0.5;
  if (!(tenths >= 0.0 && tenths < 99990.0)) return write_unformed(place, value, form);
  const auto whole = static_cast<std::int32_t>(tenths);
  return whole / 10.0 == value ? write_tenths_of(place, whole, form)
                               : write_unformed(place, value, form);
}

// A value that the record may lack: NOT_RECORDED counts as missing. No other bits have these
// values.
inline bool is_missing(float value) {
  const auto bits = std::bit_cast<std::uint32_t>(value);
  return bits == std::bit_cast<std::uint32_t>(MISSING_DATA) ||
         bits == std::bit_cast<std::uint32_t>(NOT_RECORDED);
}

// The same of such a value.
inline char* write_recorded(char* place, float value, const NumberForm& form) {
  if (is_missing(value)) return write_missing(place);
  return write_column(place, value, form);
}

// The same of several, which are often formed all together or missing all together.
char* write_each_recorded(char* place, std::span<const float> values, const NumberForm& form);
template <std::size_t count>
char* write_all_recorded(char* place, const float (&values)[count], const NumberForm& form) {
  const auto decimals = static_cast<std::size_t>(form.decimals);
  int unformed = decimals > 0 && decimals < number_form::formed_writers.size() ? 0 : 1;
  for (const float value : values) unformed |= is_formed(value, form) ? 0 : 1;
  if (unformed == 0)
    return number_form::formed_writers[decimals](place, std::span<const float>(values, count),
                                                 form.whole_width);
  return write_each_recorded(place, std::span<const float>(values, count), form);
}

// Writes `value` as "%u" or "%d" does, a tab in front, and returns its end.
char* write_large_count(char* place, std::int64_t value);
inline char* write_count(char* place, std::int64_t value) {
  if (value < 0 || value >= number_form::whole_count) return write_large_count(place, value);
  *place = '\t';
  return write_whole(place + 1, static_cast<std::uint64_t>(value), false, 1);
}

}  // namespace gzdconv

#endif
