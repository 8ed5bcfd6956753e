#include "walk/positions.h"

#include <gtest/gtest.h>

#include <random>

#include "support/index_builder.h"

using namespace gzd;

namespace {

// ---- bookmarks ---------------------------------------------------------------------------------

struct BookmarkTest : testing::Test {
  BookmarkTest() {
    for (UINT32 t = 0; t < 10; ++t) b.sample(t);
  }
  int setAt(UINT32 place, BOOKMARK* bm) {
    walk.currentData = place;
    return marks.setBookMark(bm);
  }

  IndexBuilder b;
  Walk walk;
  MessageLog log;
  LogMerge merge{b.index, walk, log, [](UINT32) { return std::string_view(); }};
  Bookmarks marks{b.index, walk, merge};
  BOOKMARK first{99}, second{99}, third{99};
};

TEST_F(BookmarkTest, SetGoAndFree) {
  EXPECT_EQ(setAt(7, &first), 0);
  EXPECT_EQ(setAt(3, &second), 0);
  EXPECT_EQ(first.id, 7u);
  EXPECT_EQ(marks.gotoBookMark(&first), 0);
  EXPECT_EQ(walk.currentData, 7u);
  EXPECT_EQ(marks.gotoNextBookMark(), 0);
  EXPECT_EQ(walk.currentData, 3u);
  EXPECT_EQ(marks.gotoNextBookMark(), -1);
  EXPECT_EQ(marks.gotoPreviousBookMark(), 0);
  EXPECT_EQ(walk.currentData, 7u);
  EXPECT_EQ(marks.gotoPreviousBookMark(), -1);
  EXPECT_EQ(walk.currentBookMark, 0u);
  EXPECT_EQ(marks.removeBookMark(&first), 0);
  EXPECT_EQ(marks.removeBookMark(&first), -1);
  EXPECT_EQ(marks.gotoBookMark(&first), -1);
  EXPECT_EQ(marks.gotoBookMark(&second), 0);
}

TEST_F(BookmarkTest, NullAndTheEndOfTheWalkAreRefused) {
  EXPECT_EQ(marks.setBookMark(nullptr), -1);
  EXPECT_EQ(setAt(10, &first), -1);
  EXPECT_EQ(first.id, 99u);
  EXPECT_EQ(marks.gotoBookMark(nullptr), -1);
  EXPECT_EQ(marks.gotoBookMark(&first), -1);
  EXPECT_EQ(marks.removeBookMark(nullptr), -1);
  EXPECT_EQ(marks.removeBookMark(&first), -1);
  EXPECT_EQ(marks.gotoNextBookMark(), -1);
  EXPECT_EQ(marks.gotoPreviousBookMark(), -1);
}

TEST_F(BookmarkTest, ASecondOneAtAPlaceIsNotFilledIn) {
  setAt(4, &first);
  EXPECT_EQ(setAt(4, &second), 0);
  EXPECT_EQ(second.id, 99u);
  EXPECT_EQ(marks.gotoNextBookMark(), -1);
  EXPECT_EQ(marks.removeBookMark(&first), 0);
  EXPECT_EQ(setAt(4, &second), 0);
  EXPECT_EQ(second.id, 4u);
}

TEST_F(BookmarkTest, RemovingMovesTheCurrentPlace) {
  setAt(1, &first);
  setAt(2, &second);
  setAt(3, &third);
  marks.gotoBookMark(&second);
  marks.removeBookMark(&third);
  EXPECT_EQ(walk.currentBookMark, 1u);
  marks.removeBookMark(&first);
  EXPECT_EQ(walk.currentBookMark, 0u);
  marks.removeBookMark(&second);
  EXPECT_EQ(walk.currentBookMark, 0xFFFFFFFFu);
  setAt(5, &first);
  EXPECT_EQ(marks.gotoNextBookMark(), 0);
  EXPECT_EQ(walk.currentBookMark, 0u);
  EXPECT_EQ(walk.currentData, 5u);
}

// ---- searching ---------------------------------------------------------------------------------

int find(const IndexBuilder& b, UINT32 time) {
  return findIndex(b.index, time * 2, 0, static_cast<int>(b.index.size()) - 1);
}

// Where every stamp is that of one item and two samples stand at the end.
TEST(FindIndex, EqualsAPlainScanWhereTimesAreUnique) {
  std::mt19937 random(3);
  for (int round = 0; round < 300; ++round) {
    IndexBuilder b;
    std::vector<int> sampleAt(200, -1);
    UINT32 time = 0;
    for (UINT32 i = 0, n = 3 + UINT32(random() % 30); i < n; ++i) {
      time += 1 + UINT32(random() % 3);
      const unsigned kind = unsigned(random() % 6);
      if (kind == 0 && i > 0 && i + 2 < n) {
        b.start(time);
      } else if (kind == 1 && i > 0 && i + 2 < n) {
        b.message(time, "m");
      } else {
        sampleAt[time] = static_cast<int>(i);
        b.sample(time);
      }
    }
    for (UINT32 t = 0; t < time + 3; ++t) {
      ASSERT_EQ(find(b, t), sampleAt[t]) << b.describe() << " at " << t;
    }
  }
}

TEST(FindIndex, OfTwoTheFirstDecides) {
  IndexBuilder b;
  b.message(10, "m").sample(10);
  EXPECT_EQ(find(b, 10), -1);
  IndexBuilder behindOther;
  behindOther.message(9, "m").sample(10);
  EXPECT_EQ(find(behindOther, 10), -1);
  IndexBuilder behindSample;
  behindSample.sample(9).message(10, "m");
  EXPECT_EQ(find(behindSample, 10), 1);  // the type of the second is not looked at
  IndexBuilder one;
  one.sample(10);
  EXPECT_EQ(find(one, 10), 0);
  EXPECT_EQ(find(one, 11), -1);
}

TEST(FindIndex, AnEqualStampInTheMiddleThatIsNoSampleLeadsOn) {
  IndexBuilder b;
  b.sample(5).sample(9).message(10, "m").sample(10).sample(11);
  EXPECT_EQ(find(b, 10), 3);
  IndexBuilder before;
  before.sample(5).sample(10).message(10, "m").sample(11).sample(12);
  EXPECT_EQ(find(before, 10), -1);  // it lies on the other side
  IndexBuilder block;
  block.sample(5).sample(9).start(10).sample(10).sample(11);
  EXPECT_EQ(find(block, 10), 3);
}

TEST(FindIndex, ABoundaryWithoutABlockHasNoKey) {
  IndexBuilder b;
  b.sample(5).sample(9).sample(9).sample(10).sample(11);
  b.index.gzdItemList.change(2, [](GZDItem& item) { item = GZDItem(nullptr); });
  EXPECT_EQ(find(b, 10), 3);
  EXPECT_EQ(find(b, 9), -1);
}

TEST(FindIndex, RangesOutsideTheIndexFindNothing) {
  IndexBuilder b;
  EXPECT_EQ(find(b, 1), -1);
  b.sample(1).sample(2);
  EXPECT_EQ(findIndex(b.index, 2, 1, 0), -1);
  EXPECT_EQ(findIndex(b.index, 2, -1, 1), -1);
  EXPECT_EQ(findIndex(b.index, 2, 0, 2), -1);
}

TEST(GotoIndex, MovesAndSelectsTheTrialThatStartsThere) {
  IndexBuilder b;
  b.start(10).end(20).start(30).end(40);
  Walk walk;
  MessageLog log;
  LogMerge merge(b.index, walk, log, [](UINT32) { return std::string_view(); });
  Trials trials(b.index, walk, merge, log, [](UINT32) { return nullptr; });
  gotoIndex(b.index, walk, trials, 2);
  EXPECT_EQ(walk.currentData, 2u);
  EXPECT_EQ(walk.currentTrial, NO_TRIAL);
  trials.collectTrials();
  gotoIndex(b.index, walk, trials, 2);
  EXPECT_EQ(walk.currentTrial, 1u);
  gotoIndex(b.index, walk, trials, 1);
  EXPECT_EQ(walk.currentData, 1u);
  EXPECT_EQ(walk.currentTrial, 1u);
  for (const int outside : {-1, 4}) gotoIndex(b.index, walk, trials, outside);
  EXPECT_EQ(walk.currentData, 1u);
}

}  // namespace
