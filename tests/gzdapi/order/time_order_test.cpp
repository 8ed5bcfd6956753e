// The order of time, against std::sort over windows.
#include "order/time_order.h"

#include <gtest/gtest.h>

#include <deque>
#include <random>

#include "support/item_lists.h"

using namespace gzd;

namespace {

constexpr int message_type = GZD_MESSAGE, SAMPLE = GZD_SAMPLE;
constexpr UINT64 last_stamp = 2 * UINT64{0xFFFFFFFF} + 1;

// Makes items, and the boundaries that some of them point to.
class Maker {
 public:
  GZDItem item(int type, UINT64 stamp, INT64 position = 100, UINT16 side = SIDE_NONE) {
    return {position, type, side, UINT16{0}, stamp};
  }
  GZDItem boundary(byte state, UINT64 stamp, bool collides = false) {
    Recording& block = blocks_.emplace_back();
    block.state = state;
    block.time_collision_detected = collides;
    block.updateTime(stamp);
    return GZDItem(&block);
  }

 private:
  std::deque<Recording> blocks_;
};

// ---- two items ----------------------------------------------------------------------------------

void expect_order(const GZDItem& a, const GZDItem& b, bool aFirst, bool bFirst) {
  EXPECT_EQ(sortByTime(a, b), aFirst) << a.getItemType() << " before " << b.getItemType();
  EXPECT_EQ(sortByTime(b, a), bFirst) << b.getItemType() << " before " << a.getItemType();
}

TEST(SortByTime, StampsAndBoundaries) {
  Maker make;
  const GZDItem start = make.boundary(GZD_BLOCK_START, 10), end = make.boundary(GZD_BLOCK_END, 10);
  expect_order(make.item(SAMPLE, 9), start, true, false);
  expect_order(make.item(8, 2001), make.item(7, 2000), false, true);
  // One that collides is ordered by 13 when it starts, by 11 when it ends.
  const GZDItem late = make.boundary(GZD_BLOCK_START, 10, true);
  expect_order(late, make.item(SAMPLE, 12), false, true);
  expect_order(late, make.item(SAMPLE, 13), true, false);
  expect_order(make.boundary(GZD_BLOCK_END, 10, true), make.item(SAMPLE, 12), true, false);
  expect_order(GZDItem(nullptr), make.item(SAMPLE, 1), true, false);
  expect_order(start, start, false, false);
  expect_order(end, end, false, false);
  expect_order(end, start, true, false);
}

// ---- lists --------------------------------------------------------------------------------------

void expect_plain_order(std::vector<GZDItem> items, int rounds = 1) {
  Index index;
  index.gzdItemList = list_of(items);
  for (; rounds > 0; --rounds) {
    sortItems(index);
    sort_plainly(items);
    const std::vector<GZDItem> sorted = items_of(index.gzdItemList);
    ASSERT_EQ(sorted.size(), items.size());
    for (std::size_t i = 0; i < items.size(); ++i)
      ASSERT_TRUE(same_item(sorted[i], items[i])) << "entry " << i << " of " << items.size();
    ASSERT_TRUE(landmarks_hold(index.gzdItemList));
  }
}

// Stamps that rise slowly, out of order by up to `disorder`.
TEST(SortItems, TiesComeOutAsOfStdSort) {
  const std::vector<std::vector<int>> mixtures = {
      {SAMPLE, SAMPLE, message_type, GZD_START_FIXATION, GZD_END_FIXATION, GZD_START_SACCADE,
       GZD_END_SACCADE},
      {SAMPLE, GZD_START_BLINK, GZD_END_BLINK, GZD_START_SACCADE, GZD_END_SACCADE, GZD_MESSAGE,
       GZD_BUTTON, GZD_RECORDING},
      {GZD_START_BLINK, GZD_END_BLINK},
      {message_type, SAMPLE},
      {SAMPLE},
      {GZD_RECORDING, SAMPLE, GZD_MESSAGE, 11}};
  std::mt19937 random(1);
  for (const auto& types : mixtures)
    for (const std::size_t count : {0u, 1u, 2u, 16u, 17u, 700u, 20000u, 20001u, 24001u, 50000u})
      for (const unsigned disorder : {1u, 4u, 300u}) {
        Maker make;
        std::vector<GZDItem> items;
        for (std::size_t i = 0; i < count; ++i) {
          const int type = types[random() % types.size()];
          const UINT64 stamp = i / 3 + random() % disorder;
          const auto side = static_cast<UINT16>(1 + random() % 2);
          items.push_back(type == GZD_RECORDING
                              ? make.boundary(static_cast<byte>(random() % 2), stamp)
                              : make.item(type, stamp, static_cast<INT64>(10 * i), side));
        }
        ASSERT_NO_FATAL_FAILURE(expect_plain_order(items, count < 1000 ? 2 : 1)) << disorder;
      }
}

// Runs of one stamp in which items come before each other: they are carried across half the list.
TEST(SortItems, LongCirclesComeOutAsOfStdSort) {
  const std::vector<std::vector<int>> mixtures = {
      {GZD_START_BLINK, GZD_END_BLINK},
      {GZD_MESSAGE, SAMPLE},
      {GZD_START_BLINK, GZD_END_BLINK, GZD_MESSAGE, SAMPLE, GZD_BUTTON},
      {GZD_START_PARSE, GZD_END_PARSE, GZD_START_BLINK, GZD_END_BLINK, GZD_START_SACCADE,
       GZD_END_SACCADE, GZD_START_FIXATION, GZD_END_FIXATION, GZD_MESSAGE, SAMPLE}};
  std::mt19937 random(3);
  for (const auto& types : mixtures)
    for (const std::size_t count : {600u, 20000u, 26000u})
      for (const UINT64 run : {200u, 100000u}) {
        Maker make;
        std::vector<GZDItem> items;
        for (std::size_t i = 0; i < count; ++i) {
          const int type = types[random() % types.size()];
          const auto place = static_cast<INT64>(random() % 4 == 0 ? random() % count : i);
          const auto side = static_cast<UINT16>(random() % 4 == 0 ? random() % 16 : type % 2);
          items.push_back(make.item(type, 10 + i / run, place, side));
        }
        ASSERT_NO_FATAL_FAILURE(expect_plain_order(items, 3)) << types.size();
      }
}

// As the tracker writes them: samples in order, events late, some early, some far away.
TEST(SortItems, EventsAmongRisingSamplesComeOutAsOfStdSort) {
  std::mt19937 random(11);
  for (const std::size_t count : {5u, 300u, 20000u, 40000u})
    for (const unsigned far : {0u, 1u, 30u})
      for (const std::vector<int>& types :
           {std::vector<int>{GZD_START_SACCADE, GZD_END_SACCADE, GZD_START_FIXATION,
                             GZD_END_FIXATION},
            {GZD_START_BLINK, GZD_END_BLINK, GZD_START_SACCADE, GZD_END_SACCADE, GZD_MESSAGE},
            {GZD_MESSAGE, GZD_BUTTON, GZD_INPUT, GZD_RECORDING}}) {
        Maker make;
        std::vector<GZDItem> items;
        for (std::size_t i = 0; i < count; ++i) {
          const auto position = static_cast<INT64>(10 * i);
          const UINT64 now = 100000 + 2 * i;
          items.push_back(make.item(SAMPLE, now, position, 0));
          if (random() % 20 != 0) continue;
          const unsigned reach = random() % 1000 < far ? 90000 : 200;
          const UINT64 stamp = now + reach / 8 - random() % reach;
          const int type = types[random() % types.size()];
          items.push_back(type == GZD_RECORDING
                              ? make.boundary(static_cast<byte>(random() % 2), stamp)
                              : make.item(type, stamp, position + 5, random() % 2 + 1));
        }
        ASSERT_NO_FATAL_FAILURE(expect_plain_order(items, 2)) << far;
      }
}

TEST(SortItems, StampsAtBothEndsOfTheirRange) {
  Maker make;
  std::vector<GZDItem> items;
  for (int i = 0; i < 40; ++i) {
    items.push_back(make.boundary(GZD_BLOCK_START, 0));
    items.push_back(make.item(GZD_START_BLINK, 0, i, SIDE_LEFT));
    items.push_back(make.item(GZD_END_BLINK, 0, i, SIDE_RIGHT));
    items.push_back(make.item(GZD_MESSAGE, last_stamp, 100 - i));
    items.push_back(make.item(SAMPLE, last_stamp, i));
  }
  expect_plain_order(items);
}

}  // namespace
