// Any numbers, formats and column options.
//
// Asserts: the fast path and the general path give what printf gives, for any value, number of
// decimals and width; a column is the missing text, the exponent form or the fixed form with its
// tab, as the options ask; the one-decimal column equals the general one, and shows what was not
// recorded as missing.
#include "asc/number.h"

#include <bit>
#include <cmath>
#include <limits>

#include "asc/output.h"
#include "asc/sample_number.h"
#include "cli/options.h"
#include "fuzz_support.h"
#include "gzd_data.h"

using namespace gzdconv;

namespace {

constexpr int MOST_DECIMALS = 17;
constexpr int LARGEST_WIDTH = 20;

// What `append` puts into the line buffer.
template <class Append>
std::string appended(Append append) {
  lpbuffer.begin_line();
  const char* const begin = lpbuffer.cursor();
  append();
  std::string text(begin, static_cast<std::size_t>(lpbuffer.cursor() - begin));
  lpbuffer.set_cursor(lpbuffer.cursor() - text.size());
  return text;
}

std::string printed(const char* format, int width, int decimals, double value) {
  char text[512];
  std::snprintf(text, sizeof text, format, width, decimals, value);
  return text;
}

// The sign of a NaN depends on how it was made.
double without_nan_sign(double value) {
  return std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
}

std::string expected_column(int decimals, double value) {
  std::string text = "\t";
  if (value == static_cast<double>(MISSING_DATA)) return text.append(missing_string);
  const int shown = decimals + options.extra_decimals;
  const bool exponent = shown != 0 && std::fabs(static_cast<float>(value)) >= 1.0e5f;
  const int width = options.tabs_only ? 0 : 7;
  if (!exponent) return text.append(printed("%*.*f", width, shown, value));
  if (!options.tabs_only) text.push_back(' ');
  return text.append(printed("%*.*e", width, 1, value));
}

double value_from(fuzz::Tail& tail) {
  const unsigned kind = tail.byte() % 4;
  if (kind == 0) return static_cast<double>(std::bit_cast<float>(tail.integer()));
  if (kind == 1) {
    const auto stored = static_cast<std::int16_t>(tail.word());
    return static_cast<double>(static_cast<float>(stored) / static_cast<float>(tail.byte()));
  }
  if (kind == 2) return static_cast<double>(static_cast<std::int32_t>(tail.integer())) / 2.0;
  const std::uint64_t high = tail.integer();
  return std::bit_cast<double>(high << 32 | tail.integer());
}

void check_value(fuzz::Tail& tail) {
  const double value = without_nan_sign(value_from(tail));
  const int decimals = tail.byte() % (MOST_DECIMALS + 1);
  const int width = tail.byte() % (2 * LARGEST_WIDTH + 1) - LARGEST_WIDTH;
  FUZZ_REQUIRE(appended([&] { append_fixed(value, decimals, width); }) ==
               printed("%*.*f", width, decimals, value));
  FUZZ_REQUIRE(appended([&] { print_value(decimals % 8, value); }) ==
               expected_column(decimals % 8, value));
  const auto single = static_cast<float>(value);
  FUZZ_REQUIRE(
      appended([&] { print_tenths(single); }) ==
      expected_column(1, static_cast<double>(single == NOT_RECORDED ? MISSING_DATA : single)));
  const auto whole = std::bit_cast<std::uint64_t>(value);
  FUZZ_REQUIRE(appended([&] { lpbuffer.append_unsigned(whole); }) == std::to_string(whole));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::silence_standard_output();
  init_options();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Tail tail({data, size});
  options.tabs_only = tail.byte() % 2;
  options.extra_decimals = tail.byte() % 6;
  while (!tail.rest().empty()) check_value(tail);
  return 0;
}
