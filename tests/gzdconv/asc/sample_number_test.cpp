// Numbers of sample columns, against printf.
#include "asc/sample_number.h"

#include "asc/number.h"
#include "asc/number_form.h"
#include "asc/whole_numbers.h"

#include <cmath>
#include <limits>
#include <random>

#include "support/capture.h"

using namespace gzdconv;

namespace {

class SampleNumberTest : public AscTest {
 protected:
  // One print for a batch of values, against printf for each.
  void add(float value) {
    lpbuffer.begin_line();
    print_tenths(value);
    lpbuffer.set_cursor(write_signed_tenths(lpbuffer.cursor(), value, has_usual_form()));
    char column[64];
    std::snprintf(column, sizeof column, "\t%7.1f", static_cast<double>(value));
    expected_.append(column).append(column);
  }
  void compare() {
    EXPECT_TRUE(asc() == expected_);
    expected_.clear();
  }

  std::string expected_;
};

TEST_F(SampleNumberTest, TiesAndNeighboursOfEveryLimit) {
  for (const float limit : {0.0f, 0.05f, 0.25f, 0.75f, 9.95f, 99.95f, 100.0f, 999.95f, 1000.0f,
                            9998.95f, 9999.0f, 9999.95f, 10000.0f, 99998.95f, 99999.0f}) {
    for (const float sign : {1.0f, -1.0f}) {
      float below = sign * limit, above = sign * limit;
      for (int i = 0; i < 20; ++i) {
        add(below);
        add(above);
        below = std::nextafter(below, -std::numeric_limits<float>::infinity());
        above = std::nextafter(above, std::numeric_limits<float>::infinity());
      }
    }
  }
  add(-0.0f);
  add(std::numeric_limits<float>::denorm_min());
  compare();
}

TEST_F(SampleNumberTest, RandomFloats) {
  std::mt19937 random(1);
  std::uniform_real_distribution<float> distribution(-99000.0f, 99000.0f);
  for (int i = 0; i < 200000; ++i) add(distribution(random));
  compare();
}

// In every form, and in rows, what print_value gives, ties and neighbours of the limits among the
// values.
TEST_F(SampleNumberTest, FormsEqualPrintValue) {
  std::mt19937 random(2);
  std::uniform_real_distribution<float> distribution(-9999.0f, 10001.0f);
  for (int i = 0; i < 50000; ++i) {
    options.tabs_only = static_cast<int>(random() % 2);
    options.extra_decimals = static_cast<int>(random() % 8) - 1;
    const int decimals = static_cast<int>(random() % 4);
    float row[7];
    for (float& value : row) {
      value = distribution(random);
      if (random() % 3 == 0)
        value = std::ldexp(std::nearbyint(value), -static_cast<int>(random() % 16));
      if (random() % 50 == 0) value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
      print_value(decimals, value);
    }
    const std::string expected = asc();
    for (const float value : row)
      lpbuffer.set_cursor(write_column(lpbuffer.cursor(), value, form_of(decimals)));
    ASSERT_EQ(asc(), expected) << row[0] << " with " << decimals;
    lpbuffer.set_cursor(write_all_recorded(lpbuffer.cursor(), row, form_of(decimals)));
    ASSERT_EQ(asc(), expected) << row[0] << " with " << decimals;
    if (decimals != 1 || !has_compact_form() || !has_ready_signed_tenths(row[0])) continue;
    lpbuffer.set_cursor(write_ready_signed_tenths<true>(lpbuffer.cursor(), row[0]));
    const float sizes[2] = {std::fabs(row[0]), 7.25f};
    for (const int which : {0, 1})
      lpbuffer.set_cursor(ReadyPair(sizes).write<true>(lpbuffer.cursor(), which));
    for (const float value : {row[0], sizes[0], sizes[1]}) print_value(1, value);
    const std::string both = asc();
    ASSERT_EQ(both.substr(0, both.size() / 2), both.substr(both.size() / 2)) << row[0];
  }
  options.tabs_only = options.extra_decimals = 0;
  int ready = 0;
  for (int i = 0; i < 100000; ++i) {
    float four[4];
    for (float& value : four) {
      value = std::nearbyint(distribution(random));
      if (random() % 50 == 0) value = std::ldexp(value, static_cast<int>(random() % 40) - 20);
      if (random() % 50 == 0) value = std::copysign(0.0F, value);
    }
    const WholeNumbers numbers({four[0], four[1]}, {four[2], four[3]});
    if (!numbers.are_ready()) continue;
    ++ready;
    for (const float value : four) print_value(1, value);
    const std::string expected = asc();
    for (const int which : {0, 1, 2, 3})
      lpbuffer.set_cursor(numbers.write(lpbuffer.cursor(), which));
    ASSERT_EQ(asc(), expected) << four[0];
  }
  EXPECT_GT(ready, 50000);
  for (const INT64 count : {-70000, -1, 0, 7, 9999, 10000, 123456}) {
    lpbuffer.set_cursor(write_count(lpbuffer.cursor(), count));
    EXPECT_EQ(asc(), "\t" + std::to_string(count));
  }
}

}  // namespace
