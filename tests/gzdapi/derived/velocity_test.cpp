#include "derived/velocity.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "gzd_data.h"

using namespace gzd;

namespace {

constexpr int N = 39;
constexpr int MIDDLE = 19;
constexpr float M = MISSING_DATA;

std::vector<float> random_series(unsigned seed, int length = N) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> place(-2000.0f, 2000.0f);
  std::vector<float> x(static_cast<std::size_t>(length));
  for (float& value : x) value = place(random);
  return x;
}

double mean(const std::vector<float>& x, int from, int to) {
  double sum = 0;
  for (int i = from; i <= to; ++i) sum += static_cast<double>(x[static_cast<std::size_t>(i)]);
  return sum / (to - from + 1);
}

void expect_near(float value, double expected) {
  EXPECT_NEAR(static_cast<double>(value), expected, 2e-5 * std::abs(expected) + 1e-2);
}

// ---- newer trackers
// ------------------------------------------------------------------------------

struct Blocks {
  int rate, halfWindow;
  int outerFrom, outerTo, innerFrom, innerTo;  // distances from the middle
  double gain;
};

constexpr Blocks BLOCKS[] = {
    {250, 2, 2, 2, 1, 1, 1.0},
    {499, 2, 2, 2, 1, 1, 1.0},
    {500, 4, 3, 4, 1, 2, 1.2},
    {999, 4, 3, 4, 1, 2, 1.2},
    {1000, 9, 6, 9, 2, 5, 12.0 / 11.0},
    {1999, 9, 6, 9, 2, 5, 12.0 / 11.0},
    {2000, 19, 12, 19, 4, 11, 24.0 / 23.0},
};

TEST(FalconVelocity, IsADifferenceOfBlockMeans) {
  const double r = 25.0;
  for (const Blocks& b : BLOCKS) {
    for (unsigned seed = 0; seed < 20; ++seed) {
      const auto x = random_series(seed);
      const double before2 = mean(x, MIDDLE - b.outerTo, MIDDLE - b.outerFrom);
      const double before1 = mean(x, MIDDLE - b.innerTo, MIDDLE - b.innerFrom);
      const double after1 = mean(x, MIDDLE + b.innerFrom, MIDDLE + b.innerTo);
      const double after2 = mean(x, MIDDLE + b.outerFrom, MIDDLE + b.outerTo);
      const double slow = (after1 + after2 - before2 - before1) * 0.167 * b.gain * 250.0 / r;
      const double fast = (after1 - before1) * 0.5 * b.gain * 250.0 / r;
      const float rate = static_cast<float>(b.rate);
      expect_near(calcVelocity_falcon(false, x.data(), N, 25.0f, rate), slow);
      expect_near(calcVelocity_falcon(true, x.data(), N, 25.0f, rate), fast);
    }
  }
}

TEST(FalconVelocity, NeedsEverySampleInReachAndNoOther) {
  for (const Blocks& b : BLOCKS) {
    const float rate = static_cast<float>(b.rate);
    EXPECT_EQ(falcon_half_window(rate), b.halfWindow);
    for (int i = 0; i < N; ++i) {
      auto x = random_series(3);
      const float whole = calcVelocity_falcon(false, x.data(), N, 25.0f, rate);
      x[static_cast<std::size_t>(i)] = M;
      const float holed = calcVelocity_falcon(false, x.data(), N, 25.0f, rate);
      EXPECT_EQ(holed, std::abs(i - MIDDLE) <= b.halfWindow ? M : whole) << rate << ' ' << i;
    }
  }
}

TEST(FalconVelocity, ShortSeriesAndNoSeriesHaveNone) {
  for (const Blocks& b : BLOCKS) {
    const float rate = static_cast<float>(b.rate);
    for (int length = 1; length <= 2 * b.halfWindow + 2; ++length) {
      const auto x = random_series(4, length);
      const bool enough = length > 2 * b.halfWindow;
      EXPECT_EQ(calcVelocity_falcon(false, x.data(), length, 25.0f, rate) != M, enough)
          << rate << ' ' << length;
    }
  }
  EXPECT_EQ(calcVelocity_falcon(false, nullptr, N, 25.0f, 250.0f), M);
}

TEST(FalconVelocity, RoundsOnceAnOperation) {
  const std::vector<float> x = {1.1f, 2.3f, 3.7f, 5.2f, 9.4f};
  const float difference = (5.2f + 9.4f - 1.1f - 2.3f) * 0.167f;
  const float scale = 250.0f / 31.3f;
  EXPECT_EQ(calcVelocity_falcon(false, x.data(), 5, 31.3f, 250.0f), scale * (difference * 1.0f));
}

// ---- older trackers
// ------------------------------------------------------------------------------

// Every pattern of missing values among the five in the middle.
TEST(OlderVelocity, FallsBackByWhatIsMissing) {
  for (const float rate : {250.0f, 500.0f, 1000.0f, 2000.0f}) {
    for (unsigned pattern = 0; pattern < 32; ++pattern) {
      for (const bool fast : {false, true}) {
        auto x = random_series(pattern);
        bool has[5];
        double v[5];
        for (std::size_t i = 0; i < 5; ++i) {
          has[i] = (pattern >> i & 1) == 0;
          if (!has[i]) x[MIDDLE - 2 + i] = M;
          v[i] = static_cast<double>(x[MIDDLE - 2 + i]);
        }
        const double scale = static_cast<double>(rate) / 25.0;
        const float result = calcVelocity_non_falcon(fast, x.data(), N, 25.0f, rate);
        if (!has[1]) {
          if (has[2] && has[3]) {
            expect_near(result, (v[3] - v[2]) * scale);
          } else {
            EXPECT_EQ(result, M);
          }
        } else if (!fast && has[0] && has[3] && has[4]) {
          expect_near(result, (v[3] + v[4] - v[0] - v[1]) * scale / 6.0);
        } else if (has[3]) {
          expect_near(result, (v[3] - v[1]) * scale / 2.0);
        } else if (has[2]) {
          expect_near(result, (v[2] - v[1]) * scale);
        } else {
          EXPECT_EQ(result, M);
        }
      }
    }
  }
}

TEST(OlderVelocity, ShortSeriesUseTwoPoints) {
  const std::vector<float> x = {0, 1, 5, 11, 40};
  EXPECT_EQ(calcVelocity_non_falcon(false, x.data(), 5, 10.0f, 250.0f),
            (11.0f - 1.0f) * 250.0f * 0.5f / 10.0f);
  const std::vector<float> six = {0, 1, 5, 11, 40, 90};
  EXPECT_EQ(calcVelocity_non_falcon(false, six.data(), 6, 10.0f, 250.0f),
            (40.0f + 90.0f - 1.0f - 5.0f) * 250.0f / 6.0f / 10.0f);
}

}  // namespace
