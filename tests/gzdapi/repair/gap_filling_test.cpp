// The bound on dummies of a file.
#include "repair/gap_filling.h"

#include <gtest/gtest.h>

#include "support/recording_fixture.h"

using namespace gzd;

namespace {

// Samples as a scan meets them, at 1000 a second.
class Stream {
 public:
  DummyBudget budget;

  // The dummies that all samples so far have brought.
  long dummies(std::initializer_list<UINT32> times) {
    for (const UINT32 time : times) {
      const UINT64 stamp = clock_.stampOf(time);
      clock_.fillGap(index_, stamp, 1000, budget);
      index_.gzdItemList.push_back({7, GZD_SAMPLE, SIDE_NONE, UINT16{1}, stamp});
      clock_.advance(time);
    }
    long count = 0;
    for (const GZDItem item : index_.gzdItemList) count += item.isDummy() ? 1 : 0;
    return count;
  }

 private:
  Index index_;
  SampleClock clock_;
};

TEST(GapFilling, AFileHasABudget) {
  CapturedLog log;
  Stream stream;
  stream.budget.left = 12;
  EXPECT_EQ(stream.dummies({10, 11, 12, 20}), 7);
  EXPECT_EQ(stream.dummies({21, 28}), 7);  // six of five
  EXPECT_TRUE(log.take().ends_with(
      "Missing samples are over 10000, skip it without addimg missing samples\n "));
  EXPECT_EQ(stream.dummies({29, 35}), 12);
  EXPECT_EQ(stream.budget.left, 0);
  EXPECT_EQ(DummyBudget().left, 10'000'000);
}

}  // namespace
