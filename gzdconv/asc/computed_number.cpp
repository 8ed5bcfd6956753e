// Numbers of any form, and those with ten decimals.
#include "asc/computed_number.h"

#include "asc/number.h"
#include "asc/output.h"

namespace gzdconv {

using namespace computed_number;

namespace {

// Most are short, and short ones are divided in half the time.
std::uint64_t quotient(std::uint64_t value, std::uint64_t divisor) {
  if ((value | divisor) >> 32 != 0) return value / divisor;
  return static_cast<std::uint32_t>(value) / static_cast<std::uint32_t>(divisor);
}

// Ten digits and the point in front of them; one byte more is stored.
char* write_decimals_of(char* place, std::uint64_t rest) {
  const auto put = [place](std::size_t at, std::uint32_t three) {
    std::memcpy(place + at, &number_form::decimal_cells.of[three],
                sizeof(number_form::DecimalCell));
  };
  const auto first = static_cast<std::uint32_t>(rest / 10'000);  // six digits
  const auto last = static_cast<std::uint32_t>(rest % 10'000);
  put(9, last % 10 * 100);  // the last ones first, as each group brings a point
  put(6, last / 10);
  put(3, first % 1000);
  put(0, first / 1000);
  return place + 11;
}

}  // namespace

char* write_computed(char* place, double value, const NumberForm& form) {
  const double product = std::fabs(value) * form.scale;
  const double nearest = nearest_to(product);
  const bool is_small = std::fabs(value) < static_cast<double>(form.limit);
  if (!is_small || !is_sure(product, nearest)) return write_unformed(place, value, form);
  const auto scaled = static_cast<std::uint64_t>(nearest);
  const std::uint64_t whole = quotient(scaled, form.power);
  return write_parts(place, std::signbit(value), whole, scaled - whole * form.power, form);
}

char* write_ten_decimals(char* place, double value) {
  constexpr std::uint64_t one = 10'000'000'000;
  const double product = std::fabs(value) * double{one};
  const double nearest = nearest_to(product);
  const bool is_small = product < 1.9 * double{one} && options.extra_decimals == 0;
  if (!is_small || !is_sure(product, nearest)) {
    lpbuffer.set_cursor(place);
    print_value(10, value);
    return lpbuffer.cursor();
  }
  const auto scaled = static_cast<std::uint64_t>(nearest);
  const bool has_one = scaled >= one;
  *place = '\t';
  place[1] = '-';
  place += std::signbit(value) ? 2 : 1;
  *place = has_one ? '1' : '0';
  return write_decimals_of(place + 1, has_one ? scaled - one : scaled);
}

}  // namespace gzdconv
