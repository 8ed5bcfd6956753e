// A number times a power of ten is exact in 128 bits, so rounding that product to an integer,
// halves to even, gives the digits that printf prints. What is too large for that takes the general
// path, std::to_chars, which is exact as well but several times slower.
#include "asc/number.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "asc/output.h"
#include "cli/options.h"
#include "gzd_data.h"

namespace gzdconv {

namespace {

constexpr int max_fast_decimals = 15;
constexpr double fast_limit = 9.0e18;     // below 2^63
constexpr float exponent_limit = 1.0e5f;  // from here on columns with decimals have exponents
constexpr int column_width = 7;
constexpr int max_extra_decimals = 5;
constexpr std::size_t general_room = 512;  // 309 digits, a point, decimals

constexpr std::array<std::uint64_t, 20> integer_powers = []() {
  std::array<std::uint64_t, 20> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
  return powers;
}();

constexpr std::array<char, 200> digit_pairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// Number of decimal digits, at least 1. 1233 / 4096 is just below the decimal logarithm of 2; the
// guess is raised where a power of ten is reached.
int count_digits(std::uint64_t value) {
  const int guess = (static_cast<int>(std::bit_width(value | 1)) * 1233) >> 12;
  return guess + (value >= integer_powers[static_cast<std::size_t>(guess)] ? 1 : 0) +
         (value == 0 ? 1 : 0);
}

// Writes the last `count` digits of `value` in front of `end`, and takes them off it.
template <typename Unsigned>
char* write_digits(char* end, Unsigned& value, int count) {
  for (; count >= 2; count -= 2) {
    end -= 2;
    std::memcpy(end, &digit_pairs[2 * static_cast<std::size_t>(value % 100)], 2);
    value /= 100;
  }
  if (count > 0) {
    *--end = static_cast<char>('0' + value % 10);
    value /= 10;
  }
  return end;
}

// Writes a number below 10^8, and stores eight bytes.
constexpr std::uint64_t eight_digits = 100'000'000;
char* write_short(char* place, std::uint32_t value) {
  static_assert(std::endian::native == std::endian::little);
  constexpr std::uint64_t zeros = 0x3030303030303030, last_digit = std::uint64_t{1} << 56;
  char text[8];
  const std::uint32_t high = value / 10000, low = value % 10000;
  const std::uint32_t pairs[] = {high / 100, high % 100, low / 100, low % 100};
  for (std::size_t i = 0; i < std::size(pairs); ++i)
    std::memcpy(text + 2 * i, &digit_pairs[std::size_t{2} * pairs[i]], 2);
  std::uint64_t digits;
  std::memcpy(&digits, text, sizeof digits);
  const int leading = std::countr_zero((digits ^ zeros) | last_digit) & 56;
  digits >>= leading;
  std::memcpy(place, &digits, sizeof digits);
  return place + (64 - leading) / 8;
}

// Writes `count` blanks, usually by one store of eight bytes; what is too many is overwritten.
char* fill_blanks(char* place, int count) {
  constexpr int stored = 8;
  if (count <= 0) return place;
  if (count > stored)
    std::memset(place, ' ', static_cast<std::size_t>(count));
  else
    std::memcpy(place, "        ", stored);
  return place + count;
}

// Writes the digits of `scaled` in front of `end`: `whole` of them, a point, `decimals` of them.
template <typename Unsigned>
void write_point_number(char* end, Unsigned scaled, int whole, int decimals) {
  end = write_digits(end, scaled, decimals);
  if (decimals > 0) *--end = '.';
  write_digits(end, scaled, whole);
}

// Writes `scaled` / 10^decimals.
char* write_scaled(char* place, bool negative, std::uint64_t scaled, int decimals, int width) {
  const int total = count_digits(scaled);
  const int whole = total > decimals ? total - decimals : 1;
  const int length = (negative ? 1 : 0) + whole + (decimals > 0 ? 1 + decimals : 0);
  place = fill_blanks(place, width - length);
  *place = '-';  // the first digit's place when there is no sign
  char* const end = place + length;
  if (scaled <= UINT32_MAX)
    write_point_number(end, static_cast<std::uint32_t>(scaled), whole, decimals);
  else
    write_point_number(end, scaled, whole, decimals);
  return fill_blanks(end, -width - length);
}

bool has_fast_product(double magnitude, int decimals) {
  if (decimals > max_fast_decimals) return false;
  return magnitude * static_cast<double>(integer_powers[static_cast<std::size_t>(decimals)]) <
         fast_limit;
}

// The nearest integer of a value times 10^decimals, halves to even.
std::uint64_t scaled_integer(double magnitude, int decimals) {
  __extension__ using Wide = unsigned __int128;
  constexpr int mantissa_bits = 52, unit_exponent = 1075, most_bits = 110;
  const auto bits = std::bit_cast<std::uint64_t>(magnitude);
  const int exponent = static_cast<int>(bits >> mantissa_bits);
  const std::uint64_t hidden = std::uint64_t{exponent != 0 ? 1U : 0U} << mantissa_bits;
  const std::uint64_t mantissa = (bits & ((std::uint64_t{1} << mantissa_bits) - 1)) | hidden;
  // The value is mantissa / 2^shift.
  const int shift = unit_exponent - std::max(exponent, 1);
  const Wide product = Wide{mantissa} * integer_powers[static_cast<std::size_t>(decimals)];
  if (shift <= 0) return static_cast<std::uint64_t>(product << -shift);
  if (shift > most_bits) return 0;
  const auto whole = static_cast<std::uint64_t>(product >> shift);
  const Wide rest = product - (Wide{whole} << shift);
  const Wide half = Wide{1} << (shift - 1);
  const bool up = rest > half || (rest == half && (whole & 1) != 0);
  return whole + (up ? 1 : 0);
}

void append_padded(std::string_view text, int width) {
  const int length = static_cast<int>(text.size());
  lpbuffer.set_cursor(fill_blanks(lpbuffer.cursor(), width - length));
  lpbuffer.append(text);
  lpbuffer.set_cursor(fill_blanks(lpbuffer.cursor(), -width - length));
}

void append_general(double value, std::chars_format format, int decimals, int width) {
  char text[general_room];
  if (std::isnan(value)) value = std::fabs(value);  // "nan" without a sign
  const auto result = std::to_chars(text, text + sizeof text, value, format, decimals);
  append_padded({text, static_cast<std::size_t>(result.ptr - text)}, width);
}

// As printf("%.1e") and, aligned, printf(" %7.1e").
void append_exponent(double value) {
  if (!options.tabs_only) lpbuffer.append(' ');
  append_general(value, std::chars_format::scientific, 1, options.tabs_only ? 0 : column_width);
}

int with_extra_decimals(int decimals) {
  const int extra = options.extra_decimals;
  return extra >= 1 && extra <= max_extra_decimals ? decimals + extra : decimals;
}

}  // namespace

void LineBuffer::append_unsigned(std::uint64_t value) {
  if (value < eight_digits)
    return set_cursor(write_short(cursor_, static_cast<std::uint32_t>(value)));
  const int count = count_digits(value);
  write_digits(advance(static_cast<std::size_t>(count)) + count, value, count);
}

void append_fixed(double value, int decimals, int width) {
  const double magnitude = std::fabs(value);
  if (!has_fast_product(magnitude, decimals))
    append_general(value, std::chars_format::fixed, decimals, width);
  else
    lpbuffer.set_cursor(write_scaled(lpbuffer.cursor(), std::signbit(value),
                                     scaled_integer(magnitude, decimals), decimals, width));
}

void print_value(int decimals, double value) {
  lpbuffer.append('\t');
  if (value == static_cast<double>(MISSING_DATA)) {
    lpbuffer.append(std::string_view(missing_string));
    return;
  }
  const int shown = with_extra_decimals(decimals);
  if (shown != 0 && std::fabs(static_cast<float>(value)) >= exponent_limit)
    append_exponent(value);
  else
    append_fixed(value, shown, options.tabs_only ? 0 : column_width);
}

}  // namespace gzdconv
