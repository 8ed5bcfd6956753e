// Numbers that are computed, against what printf makes of them.
#include "asc/computed_number.h"

#include "asc/number.h"

#include <cmath>
#include <random>

#include "support/capture.h"

using namespace gzdconv;

namespace {

class ComputedNumberTest : public AscTest {
 protected:
  template <class Write>
  void add(Write write) {
    lpbuffer.begin_line();
    lpbuffer.set_cursor(write(lpbuffer.cursor()));
    lpbuffer.append('\n');
  }
  // A line of the column, then what print_value writes.
  void add_pair(double value, int which) {
    constexpr int decimals[] = {0, 1, 2, 3, 1, 10};
    const auto wanted = [=](char* place) {
      lpbuffer.set_cursor(place);
      print_value(decimals[which], value);
      return lpbuffer.cursor();
    };
    add([=](char* place) {
      if (which < 4) return write_computed(place, value, form_of(which));
      return which == 4 ? write_computed_tenths(place, value, has_usual_form())
                        : write_ten_decimals(place, value);
    });
    add(wanted);
  }
};

// Halves of the last decimal and their neighbours among the values, in every form.
TEST_F(ComputedNumberTest, EqualsPrintValue) {
  std::mt19937 random(1);
  for (int i = 0; i < 200000; ++i) {
    options.tabs_only = static_cast<int>(random() % 2);
    options.extra_decimals = static_cast<int>(random() % 3) * static_cast<int>(random() % 3);
    const double digits = std::pow(10.0, static_cast<double>(random() % 12));
    double value = std::ldexp(static_cast<double>(random()), -static_cast<int>(random() % 50));
    if (i % 3 == 0) value = (std::floor(value * digits) + 0.5) / digits;
    if (i % 7 == 0) value = std::nextafter(value, i % 2 == 0 ? 0.0 : 1e9);
    add_pair(i % 2 == 0 ? value : -value, static_cast<int>(random() % 6));
  }
  const std::string text = asc();
  for (std::size_t at = 0, end = 0; at < text.size(); at = end + 1) {
    const std::size_t half = text.find('\n', at);
    end = text.find('\n', half + 1);
    ASSERT_EQ(text.substr(at, half - at), text.substr(half + 1, end - half - 1));
  }
}

}  // namespace
