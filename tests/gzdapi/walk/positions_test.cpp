// Bookmarks and look-ups by time.
#include "walk/positions.h"

#include <gtest/gtest.h>

#include <random>

#include "support/index_builder.h"

using namespace gzd;

namespace {

// ---- bookmarks ----------------------------------------------------------------------------------

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

// ---- searching ----------------------------------------------------------------------------------

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
        b.event(GZD_MESSAGE, time);
      } else {
        sampleAt[time] = static_cast<int>(i);
        b.sample(time);
      }
    }
    for (UINT32 t = 0; t < time + 3; ++t) {
      ASSERT_EQ(find(b, t), sampleAt[t]) << round << " at " << t;
    }
  }
}

TEST(FindIndex, OfTwoTheFirstDecides) {
  IndexBuilder b;
  b.event(GZD_MESSAGE, 10).sample(10);
  EXPECT_EQ(find(b, 10), -1);
  IndexBuilder behindOther;
  behindOther.event(GZD_MESSAGE, 9).sample(10);
  EXPECT_EQ(find(behindOther, 10), -1);
  IndexBuilder behindSample;
  behindSample.sample(9).event(GZD_MESSAGE, 10);
  EXPECT_EQ(find(behindSample, 10), 1);  // the type of the second is not looked at
  IndexBuilder one;
  one.sample(10);
  EXPECT_EQ(find(one, 10), 0);
  EXPECT_EQ(find(one, 11), -1);
  for (const auto& [from, to] : {std::pair{-1, 0}, {0, 1}, {1, 1}, {0, -1}, {1, 0}})
    EXPECT_EQ(findIndex(one.index, 20, from, to), -1) << from << " to " << to;
}

}  // namespace
