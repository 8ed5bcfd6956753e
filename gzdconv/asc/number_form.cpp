// The tables of number columns and the slower ways.
#include "asc/number_form.h"

#include <array>
#include <iterator>

#include "asc/number.h"
#include "asc/output.h"
#include "cli/options.h"

namespace gzdconv {

namespace {

using namespace number_form;

constexpr int column_width = 7;
constexpr int camera_decimals = 3;
constexpr float largest_whole = 9999.0F;

// Plain arrays: all of this is worked out by the compiler, which allows only so many steps.
constexpr WholeCells make_whole_cells() {
  WholeCells cells{};
  for (unsigned n = 0; n < std::size(cells.of); ++n) {
    WholeCell& cell = cells.of[n] = {{' ', ' ', ' ', ' ', '0'}, 1};
    int place = cell_width;
    for (unsigned rest = n; rest != 0; rest /= 10)
      cell.text[--place] = static_cast<char>('0' + rest % 10);
    if (n != 0) cell.digits = static_cast<char>(cell_width - place);
  }
  return cells;
}

constexpr DecimalCells make_decimal_cells() {
  DecimalCells cells{};
  for (unsigned n = 0; n < std::size(cells.of); ++n)
    cells.of[n] = {{'.', static_cast<char>('0' + n / 100), static_cast<char>('0' + n / 10 % 10),
                    static_cast<char>('0' + n % 10)}};
  return cells;
}

constexpr std::uint64_t power_of_ten(int exponent) {
  return exponent == 0 ? 1 : 10 * power_of_ten(exponent - 1);
}

// At least `width` characters wide in all.
constexpr NumberForm make_form(int asked, int shown, int width) {
  NumberForm form;
  form.asked_decimals = asked;
  form.decimals = shown;
  form.tail_length = shown > 0 ? 1 + shown : 0;
  const int whole_width = std::max(1, width - form.tail_length);
  form.whole_width = std::min(whole_width, cell_width);
  form.indent = whole_width - form.whole_width;
  form.power = power_of_ten(shown);
  constexpr std::uint64_t two_to_63 = std::uint64_t{1} << 63;
  form.reciprocal = two_to_63 / form.power + 1;
  form.limit = std::min(largest_whole, static_cast<float>(two_to_63 / form.power / form.power / 2));
  form.scale = static_cast<double>(form.power);
  form.stretch = power_of_ten((decimals_at_once - shown % decimals_at_once) % decimals_at_once);
  return form;
}

constexpr Forms make_forms(int width) {
  Forms forms{};
  for (std::size_t asked = 0; asked < asked_choices; ++asked)
    for (std::size_t extra = 0; extra < extra_choices; ++extra)
      forms[asked][extra] =
          make_form(static_cast<int>(asked), static_cast<int>(asked + extra), width);
  return forms;
}

}  // namespace

constinit const WholeCells number_form::whole_cells = make_whole_cells();
constinit const DecimalCells number_form::decimal_cells = make_decimal_cells();
constinit const Forms number_form::compact_forms = make_forms(0);
constinit const Forms number_form::aligned_forms = make_forms(column_width);
constinit const NumberForm camera_form = make_form(camera_decimals, camera_decimals, camera_width);

char* write_long_missing(char* place) {
  *place++ = '\t';
  const std::size_t length = std::strlen(missing_string);
  std::memcpy(place, missing_string, length);
  return place + length;
}

char* write_unformed(char* place, double value, const NumberForm& form) {
  if (value == double{MISSING_DATA}) return write_missing(place);
  lpbuffer.set_cursor(place);
  print_value(form.asked_decimals, value);
  return lpbuffer.cursor();
}

char* write_large_count(char* place, std::int64_t value) {
  *place++ = '\t';
  *place = '-';
  lpbuffer.set_cursor(place + (value < 0 ? 1 : 0));
  lpbuffer.append_unsigned(static_cast<std::uint64_t>(value < 0 ? -value : value));
  return lpbuffer.cursor();
}

}  // namespace gzdconv
