// The tables of number columns and the slower ways.
#include "asc/number_form.h"

#include <array>
#include <iterator>
#include <type_traits>

#include "asc/four_numbers.h"
#include "asc/number.h"
#include "asc/output.h"
#include "cli/options.h"

namespace gzdconv {

namespace {

using namespace number_form;

constexpr std::size_t column_width = 7;
constexpr int camera_decimals = 3;
constexpr float largest_whole = 9999.0F;

// Plain arrays: all of this is worked out by the compiler, which allows only so many steps.
constexpr WholeCell make_whole_cell(unsigned whole, bool negative) {
  WholeCell cell = {{' ', ' ', ' ', ' ', '0', '.', '0'}, 1};
  std::size_t place = whole == 0 ? cell_width - 1 : cell_width;
  for (unsigned rest = whole; rest != 0; rest /= 10)
    cell.text[--place] = static_cast<char>('0' + rest % 10);
  if (negative) cell.text[--place] = '-';
  cell.length = static_cast<char>(cell_width - place);
  return cell;
}

constexpr WholeCells make_whole_cells() {
  WholeCells cells{};
  for (unsigned n = 0; n < whole_count; ++n) {
    cells.of[2 * n] = make_whole_cell(n, false);
    cells.of[2 * n + 1] = make_whole_cell(n, true);
  }
  return cells;
}

constexpr WholeCells make_tabbed_cells(std::size_t width) {
  WholeCells cells = make_whole_cells();
  for (WholeCell& cell : cells.of) {
    const std::size_t length = std::max(static_cast<std::size_t>(cell.length), width);
    const WholeCell whole = cell;
    cell = {{'\t'}, static_cast<char>(1 + length)};
    for (std::size_t i = 0; i < length; ++i) cell.text[1 + i] = whole.text[cell_width - length + i];
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

// At least `width` characters wide in all.
constexpr NumberForm make_form(int asked, int shown, std::size_t width) {
  NumberForm form;
  form.asked_decimals = asked;
  form.decimals = shown;
  form.tail_length = static_cast<std::size_t>(shown > 0 ? 1 + shown : 0);
  const std::size_t whole_width = width > form.tail_length ? width - form.tail_length : 1;
  form.whole_width = std::min(whole_width, cell_width);
  form.start = 1 + whole_width - form.whole_width;
  form.power = power_of_ten(shown);
  constexpr std::uint64_t two_to_63 = std::uint64_t{1} << 63;
  form.reciprocal = two_to_63 / form.power + 1;
  form.short_reciprocal = (std::uint64_t{1} << 40) / form.power + 1;
  const std::uint64_t limit = two_to_63 / form.power / form.power / 2;
  form.limit = std::min(largest_whole, static_cast<float>(limit));
  form.scale = static_cast<double>(form.power);
  form.stretch = power_of_ten((decimals_at_once - shown % decimals_at_once) % decimals_at_once);
  form.short_limit = shown <= decimals_at_once ? form.limit : 0.0F;
  return form;
}

constexpr Forms make_forms(std::size_t width) {
  Forms forms{};
  for (std::size_t asked = 0; asked < asked_choices; ++asked)
    for (std::size_t extra = 0; extra < extra_choices; ++extra)
      forms[asked][extra] =
          make_form(static_cast<int>(asked), static_cast<int>(asked + extra), width);
  return forms;
}

// Of a number that is formed, in units of its last decimal, halves to even.
template <int decimals>
auto scaled_number(float value) {
  using Scaled = std::conditional_t<decimals <= decimals_at_once, std::uint32_t, std::uint64_t>;
  constexpr double scale = make_form(decimals, decimals, 0).scale;
  const double sum = static_cast<double>(std::fabs(value)) * scale + rounding_shift;
  return static_cast<Scaled>(std::bit_cast<std::uint64_t>(sum) -
                             std::bit_cast<std::uint64_t>(rounding_shift));
}

// Four values or more; the last four again for those that are left.
template <class Four>
char* write_by_fours(char* place, std::span<const float> values) {
  const std::size_t left = values.size() % Four::count;
  for (std::size_t at = 0; at + left < values.size(); at += Four::count) {
    const Four four(&values[at]);
    for (int which = 0; which < Four::count; ++which) place = four.write(place, which);
  }
  if (left == 0) return place;
  const Four last(&values[values.size() - Four::count]);
  for (auto which = Four::count - static_cast<int>(left); which < Four::count; ++which)
    place = last.write(place, which);
  return place;
}

// Numbers that are formed. What the form tells is known to the compiler, but for the width.
template <int decimals>
char* write_formed(char* place, std::span<const float> values, std::size_t whole_width) {
  constexpr NumberForm form = make_form(decimals, decimals, 0);
  if (values.size() >= 4) {
    if (whole_width == 1) return write_by_fours<FourNumbers<decimals, 1>>(place, values);
    if (decimals == 3 && whole_width == tabbed_width)
      return write_by_fours<ThreeDecimals>(place, values);
  }
  for (const float value : values) {
    const auto scaled = scaled_number<decimals>(value);
    const auto power = static_cast<decltype(scaled)>(form.power);
    std::memcpy(place, "\t   ", 4);
    place = write_whole(place + form.start, scaled / power, std::signbit(value), whole_width);
    place = write_known_decimals<decimals>(place, static_cast<std::uint32_t>(scaled % power));
  }
  return place;
}

}  // namespace

constinit const WholeCells number_form::whole_cells = make_whole_cells();
constinit const WholeCells number_form::narrow_cells = make_tabbed_cells(1);
constinit const WholeCells number_form::wide_cells = make_tabbed_cells(tabbed_width);
constinit const DecimalCells number_form::decimal_cells = make_decimal_cells();
constinit const Forms number_form::compact_forms = make_forms(0);
constinit const Forms number_form::aligned_forms = make_forms(column_width);
constinit const std::array<FormedWriter, 7> number_form::formed_writers = {
    nullptr,         write_formed<1>, write_formed<2>, write_formed<3>,
    write_formed<4>, write_formed<5>, write_formed<6>};
constinit const NumberForm camera_form = make_form(camera_decimals, camera_decimals, camera_width);

// The last ones first: each group of three brings a point, which the one before overwrites.
std::uint64_t write_last_decimals(char* place, std::uint64_t rest, int decimals) {
  for (int at = (decimals - 1) / decimals_at_once * decimals_at_once; at > 0;
       at -= decimals_at_once) {
    std::memcpy(place + at, &decimal_cells.of[rest % 1000], sizeof(DecimalCell));
    rest /= 1000;
  }
  return rest;
}

char* write_long_missing(char* place, int count) {
  const std::size_t length = std::strlen(missing_string);
  for (; count > 0; --count) {
    *place++ = '\t';
    std::memcpy(place, missing_string, length);
    place += length;
  }
  return place;
}

char* write_unformed(char* place, double value, const NumberForm& form) {
  if (value == double{MISSING_DATA}) return write_missing(place);
  lpbuffer.set_cursor(place);
  print_value(form.asked_decimals, value);
  return lpbuffer.cursor();
}

char* write_other_column(char* place, float value, const NumberForm& form) {
  return is_formed(value, form) ? write_number(place, value, form)
                                : write_unformed(place, value, form);
}

char* write_each_recorded(char* place, std::span<const float> values, const NumberForm& form) {
  const std::ptrdiff_t missing_length = write_missing(place) - place;
  for (const float value : values) {
    if (is_missing(value)) {
      *place = '\t';
      std::memcpy(place + 1, missing_string, sizeof missing_string);
      place += missing_length;
    } else {
      place = write_column(place, value, form);
    }
  }
  return place;
}

char* write_large_count(char* place, std::int64_t value) {
  *place++ = '\t';
  *place = '-';
  lpbuffer.set_cursor(place + (value < 0 ? 1 : 0));
  lpbuffer.append_unsigned(static_cast<std::uint64_t>(value < 0 ? -value : value));
  return lpbuffer.cursor();
}

}  // namespace gzdconv
