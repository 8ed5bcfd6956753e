#include "gaze_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <vector>

namespace gzdsynth {
namespace {

std::vector<GazeState> run(std::uint64_t seed, int rate, int seconds) {
  GazeModel model(seed, rate);
  std::vector<GazeState> states;
  states.reserve(static_cast<std::size_t>(seconds * rate));
  for (int i = 0; i < seconds * rate; ++i) states.push_back(model.next());
  return states;
}

// A stretch of states of one phase; the last one of a run may be cut short and is left out.
struct Stretch {
  Phase phase;
  std::size_t begin, end;
};

std::vector<Stretch> stretches(const std::vector<GazeState>& states) {
  std::vector<Stretch> found;
  std::size_t begin = 0;
  for (std::size_t i = 1; i < states.size(); ++i) {
    if (states[i].phase == states[begin].phase) continue;
    found.push_back({states[begin].phase, begin, i});
    begin = i;
  }
  return found;
}

TEST(Random, IsTheSameOnEverySystem) {
  Random random(0);
  EXPECT_EQ(random.next(), 0xE220A8397B1DCDAFU);
  EXPECT_EQ(random.next(), 0x6E789E6AA1B965F4U);
}

TEST(Random, NormalHasMeanZeroAndDeviationOne) {
  Random random(5);
  double sum = 0, squares = 0;
  constexpr int kCount = 200000;
  for (int i = 0; i < kCount; ++i) {
    const double value = random.normal();
    ASSERT_LT(std::abs(value), 3.5);
    sum += value;
    squares += value * value;
  }
  EXPECT_NEAR(sum / kCount, 0, 0.01);
  EXPECT_NEAR(squares / kCount, 1, 0.02);
}

TEST(GazeModel, SameSeedSameMovements) {
  const auto a = run(7, 500, 5), b = run(7, 500, 5), other = run(8, 500, 5);
  int different = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    ASSERT_EQ(a[i].eyes[1].x, b[i].eyes[1].x);
    ASSERT_EQ(a[i].eyes[0].pupil, b[i].eyes[0].pupil);
    different += a[i].eyes[0].x != other[i].eyes[0].x ? 1 : 0;
  }
  EXPECT_GT(different, 2000);
}

// Amplitude, duration and peak are measured in the trace and compared with the main sequence.
TEST(GazeModel, SaccadesFollowTheMainSequence) {
  for (const int rate : {250, 1000, 2000}) {
    const auto states = run(3, rate, 60);
    const double tick = 1000.0 / rate;
    int count = 0;
    for (const Stretch& s : stretches(states)) {
      if (s.phase != Phase::kSaccade) continue;
      ++count;
      const EyeState &from = states[s.begin - 1].eyes[0], &to = states[s.end].eyes[0];
      const double amplitude = std::hypot(to.x - from.x, to.y - from.y);
      const double duration = static_cast<double>(s.end - s.begin) * tick;
      // Noise of the two positions reaches 0.2 degrees, rounding half a tick.
      EXPECT_NEAR(duration, 21 + 2.2 * amplitude, tick / 2 + 0.6);
      double peak = 0, way = 0;
      for (std::size_t i = s.begin; i < s.end; ++i) {
        peak = std::max(peak, states[i].speed);
        way += states[i].speed / rate;
      }
      EXPECT_NEAR(way, amplitude, 0.3 + 0.02 * amplitude);
      EXPECT_NEAR(peak, saccadePeakSpeed(amplitude), 0.12 * peak + 15);
    }
    EXPECT_GT(count, 100);
  }
}

TEST(GazeModel, FixationsStayInPlaceAndBothEyesAgree) {
  const auto states = run(4, 1000, 30);
  for (const Stretch& s : stretches(states)) {
    if (s.phase != Phase::kFixation) continue;
    const auto length = s.end - s.begin;
    EXPECT_GE(length, 150U);
    EXPECT_LE(length, 500U);
    const EyeState& first = states[s.begin].eyes[0];
    for (std::size_t i = s.begin; i < s.end; ++i) {
      const auto& [left, right] = states[i].eyes;
      ASSERT_LT(std::hypot(left.x - first.x, left.y - first.y), 0.5);
      ASSERT_NEAR(right.x - left.x, 0.25, 0.15);
    }
  }
}

TEST(GazeModel, PupilClosesBeforeABlinkAndReopensAfterIt) {
  const auto states = run(5, 1000, 60);
  const auto all = stretches(states);
  int blinks = 0;
  for (std::size_t i = 1; i + 2 < all.size(); ++i) {
    if (all[i].phase != Phase::kLost) continue;
    ++blinks;
    ASSERT_EQ(all[i - 1].phase, Phase::kClosing);
    ASSERT_EQ(all[i + 1].phase, Phase::kOpening);
    ASSERT_EQ(all[i + 2].phase, Phase::kFixation);
    const auto pupil = [&](std::size_t at) { return states[at].eyes[0].pupil; };
    EXPECT_LT(pupil(all[i].begin - 1), 0.4 * pupil(all[i - 1].begin));
    EXPECT_LT(pupil(all[i].end), 0.4 * pupil(all[i + 1].end));
    for (std::size_t k = all[i].begin; k < all[i].end; ++k) ASSERT_EQ(pupil(k), 0);
  }
  EXPECT_GT(blinks, 3);
}

}  // namespace
}  // namespace gzdsynth
