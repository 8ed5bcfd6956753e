// Trials by time, against a plain search.
#include "walk/trial_times.h"

#include <gtest/gtest.h>

#include <random>

using namespace gzd;

TEST(TrialTimes, EqualsASearchFromTheLastIntervalToTheFirst) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    std::vector<TrialTimes::Interval> intervals(random() % 12);
    for (auto& i : intervals) i = {UINT32(random() % 40), UINT32(random() % 40)};
    if (round % 3 == 0) intervals.push_back({5, 0xFFFFFFFFu});
    TrialTimes times;
    times.build(intervals);
    for (UINT32 time = 0; time < 45; ++time) {
      UINT32 expected = TrialTimes::nowhere;
      for (UINT32 i = 0; i < intervals.size(); ++i)
        if (intervals[i].start <= time && time <= intervals[i].end) expected = i;
      ASSERT_EQ(times.at(time), expected) << round << " " << time;
    }
  }
}
