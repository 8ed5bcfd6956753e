// Numbers that are computed, against what printf makes of them.
#include "asc/computed_pair.h"

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
  // In the place of the left one or of the right one.
  template <class Columns>
  char* write_one_of_two(char* place, double value) {
    const int which = value < 0 ? 1 : 0;
    using Numbers = computed_number::Doubles2;
    const Columns pair(which == 0 ? Numbers{value, 0.25} : Numbers{-7e20, value});
    const bool is_ready = Columns::suits() && pair.ready()[which] != 0;
    ready_ += is_ready ? 1 : 0;
    return is_ready ? pair.write(place, which) : Columns::write_any(place, value);
  }
  // A line of the column, then what print_value writes.
  void add_pair(double value, int which) {
    constexpr int decimals[] = {0, 1, 2, 3, 1, 10};
    const auto wanted = [=](char* place) {
      lpbuffer.set_cursor(place);
      print_value(decimals[which], value);
      return lpbuffer.cursor();
    };
    add([=, this](char* place) {
      if (which < 4) return write_computed(place, value, form_of(which));
      return which == 4 ? write_one_of_two<TenthsPair>(place, value)
                        : write_one_of_two<TenDecimalsPair>(place, value);
    });
    add(wanted);
  }

  int ready_ = 0;  // numbers of pairs
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
  EXPECT_GT(ready_, 5000);
  const std::string text = asc();
  for (std::size_t at = 0, end = 0; at < text.size(); at = end + 1) {
    const std::size_t half = text.find('\n', at);
    end = text.find('\n', half + 1);
    ASSERT_EQ(text.substr(at, half - at), text.substr(half + 1, end - half - 1));
  }
}

}  // namespace
