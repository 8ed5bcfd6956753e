// Numbers of any form.
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

}  // namespace gzdconv
