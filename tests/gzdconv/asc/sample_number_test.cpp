#include "asc/sample_number.h"

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

}  // namespace
