// Numbers, against printf.
#include "asc/number.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

#include "support/capture.h"

using namespace gzdconv;

namespace {

// True when append_fixed writes what printf writes, a NaN without sign; without building strings.
bool agrees(double value, int decimals, int width) {
  char* const start = lpbuffer.cursor();
  append_fixed(value, decimals, width);
  const auto length = static_cast<std::size_t>(lpbuffer.cursor() - start);
  lpbuffer.set_cursor(start);
  char expected[512];
  if (std::isnan(value)) value = std::fabs(value);
  const int wanted = std::snprintf(expected, sizeof expected, "%*.*f", width, decimals, value);
  return length == static_cast<std::size_t>(wanted) && std::memcmp(start, expected, length) == 0;
}

class NumberTest : public AscTest {
 protected:
  std::string column(int decimals, double value) {
    print_value(decimals, value);
    return asc();
  }
};

// Every stored word with the usual prescales, as the records hold them: singles.
TEST_F(NumberTest, RandomSinglesAreWrittenAsPrintfWritesThem) {
  std::mt19937 random(7);
  for (int i = 0; i < 1'000'000; ++i) {
    const auto any = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    const auto usual = static_cast<float>(random()) / 65536.0F - 20000.0F;
    const int decimals = static_cast<int>(random() % 16);
    const int width = static_cast<int>(random() % 24) - 10;
    ASSERT_TRUE(agrees(usual, decimals, width)) << usual << " with " << decimals;
    ASSERT_TRUE(agrees(any, decimals, width)) << any << " with " << decimals;
  }
}

TEST_F(NumberTest, RandomDoublesAreWrittenAsPrintfWritesThem) {
  std::mt19937_64 random(8);
  for (int i = 0; i < 500'000; ++i) {
    const auto any = std::bit_cast<double>(random());
    const double tenths = static_cast<double>(random() % 10'000'000) / 10.0;
    const double halves = static_cast<double>(random() % (1ULL << 34)) / 2.0;
    const int decimals = static_cast<int>(random() % 12);
    ASSERT_TRUE(agrees(tenths, decimals, 7)) << tenths << " with " << decimals;
    ASSERT_TRUE(agrees(-halves, decimals, -8)) << halves << " with " << decimals;
    ASSERT_TRUE(agrees(any, decimals, 7)) << any << " with " << decimals;
  }
}

TEST_F(NumberTest, UnsignedIntegersAtEveryLength) {
  std::string expected;
  std::uint64_t power = 1;
  for (int i = 0; i < 20; ++i, power *= 10)
    for (const std::uint64_t value : {power - 1, power, power + 1}) {
      lpbuffer.append_unsigned(value);
      lpbuffer.append(' ');
      expected += std::to_string(value) + ' ';
    }
  lpbuffer.append_unsigned(std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(asc(), expected + "18446744073709551615");
}

TEST_F(NumberTest, LargeValuesHaveExponents) {
  EXPECT_EQ(column(1, 99999.0), "\t99999.0");
  EXPECT_EQ(column(1, 1e5), "\t 1.0e+05");
  EXPECT_EQ(column(2, -2.54e10), "\t -2.5e+10");
  EXPECT_EQ(column(0, 123456.0), "\t 123456");
  // 99999.999 is 1e5 as a single, 99999.99 is not.
  EXPECT_EQ(column(1, 99999.999), "\t 1.0e+05");
  EXPECT_EQ(column(1, 99999.99), "\t100000.0");
  options.tabs_only = 1;
  EXPECT_EQ(column(1, 1e5), "\t1.0e+05");
}

TEST_F(NumberTest, SpecialValues) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(column(1, MISSING_DATA), "\t   .");
  EXPECT_EQ(column(1, NOT_RECORDED), "\t-32768.0");
  EXPECT_EQ(column(1, std::nextafter(1.0e8, 0.0)), "\t 1.0e+08");
  EXPECT_EQ(column(1, std::numeric_limits<double>::quiet_NaN()), "\t    nan");
  EXPECT_EQ(column(1, -std::numeric_limits<double>::quiet_NaN()), "\t    nan");
  EXPECT_EQ(column(1, infinity), "\t     inf");
  EXPECT_EQ(column(0, -infinity), "\t   -inf");
}

}  // namespace
