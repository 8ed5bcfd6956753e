#include "order/time_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <random>

#include "support/item_lists.h"

using namespace gzd;

namespace {

// Makes items, and the boundaries that some of them point to.
class Items {
 public:
  GZDItem item(int type, UINT64 stamp, INT64 position = 100, UINT16 side = SIDE_NONE) {
    return {position, type, side, UINT16{0}, stamp};
  }
  GZDItem boundary(byte state, UINT64 stamp) {
    Recording& block = blocks.emplace_back();
    block.state = state;
    block.updateTime(stamp);
    return GZDItem(&block);
  }
  GZDItem start(UINT64 stamp) { return boundary(GZD_BLOCK_START, stamp); }
  GZDItem end(UINT64 stamp) { return boundary(GZD_BLOCK_END, stamp); }

 private:
  std::deque<Recording> blocks;
};

enum class Order { First, Second, File, None, Both };

void expect_order(const GZDItem& a, const GZDItem& b, bool aFirst, bool bFirst) {
  EXPECT_EQ(sortByTime(a, b), aFirst) << a.getItemType() << " before " << b.getItemType();
  EXPECT_EQ(sortByTime(b, a), bFirst) << b.getItemType() << " before " << a.getItemType();
}

// Items of two types at one stamp, each in turn earlier in the file.
void expect_types(int a, int b, Order order, UINT16 sideA = SIDE_LEFT, UINT16 sideB = SIDE_LEFT) {
  Items items;
  for (const bool aEarlier : {true, false}) {
    const GZDItem itemA = items.item(a, 10, aEarlier ? 100 : 300, sideA);
    const GZDItem itemB = items.item(b, 10, 200, sideB);
    const bool aFirst =
        order == Order::First || order == Order::Both || (order == Order::File && aEarlier);
    const bool bFirst =
        order == Order::Second || order == Order::Both || (order == Order::File && !aEarlier);
    expect_order(itemA, itemB, aFirst, bFirst);
  }
}

const std::vector<int> OPENING = {1, 3, 5, 7, 15, 17};
const std::vector<int> CLOSING = {2, 4, 6, 8, 16, 18};
const std::vector<int> BY_FILE = {9, 10, 25, 28};
constexpr int MESSAGE = 24, SAMPLE = 200;

TEST(SortByTime, StampsDecideFirst) {
  Items items;
  expect_order(items.item(SAMPLE, 9), items.start(10), true, false);
  expect_order(items.item(8, 2001), items.item(7, 2000), false, true);
  Recording late;
  late.state = GZD_BLOCK_START;
  late.updateTime(10);
  late.time_collision_detected = true;  // ordered by 13
  expect_order(GZDItem(&late), items.item(SAMPLE, 12), false, true);
  expect_order(GZDItem(&late), items.item(SAMPLE, 13), true, false);
  late.state = GZD_BLOCK_END;  // by 11
  expect_order(GZDItem(&late), items.item(SAMPLE, 12), true, false);
  expect_order(GZDItem(nullptr), items.item(SAMPLE, 1), true, false);
}

TEST(SortByTime, BoundariesAmongThemselves) {
  Items items;
  expect_order(items.start(10), items.start(10), false, false);
  expect_order(items.end(10), items.end(10), false, false);
  expect_order(items.end(10), items.start(10), true, false);
}

TEST(SortByTime, BoundariesAndOthers) {
  Items items;
  for (int type = 1; type < 64; ++type) {
    if (type != GZD_RECORDING) expect_order(items.start(10), items.item(type, 10), true, false);
  }
  expect_order(items.start(10), items.item(SAMPLE, 10), true, false);
  for (const auto* last : {&CLOSING, &BY_FILE}) {
    for (const int type : *last) expect_order(items.end(10), items.item(type, 10), false, true);
  }
  expect_order(items.end(10), items.item(SAMPLE, 10), false, true);
  expect_order(items.end(10), items.item(MESSAGE, 10), false, true);
  for (const int type : OPENING) expect_order(items.end(10), items.item(type, 10), false, false);
}

TEST(SortByTime, OpeningAndClosing) {
  for (const int opening : OPENING) {
    for (const int closing : CLOSING) expect_types(opening, closing, Order::First);
    expect_types(SAMPLE, opening, Order::Second);
    expect_types(opening, opening, Order::File);
    expect_types(opening, opening, Order::File, SIDE_LEFT, SIDE_RIGHT);
  }
  for (const int closing : CLOSING) {
    expect_types(SAMPLE, closing, Order::First);
    expect_types(closing, closing, Order::File);
  }
}

TEST(SortByTime, DifferentTypesOfOneKind) {
  for (const int a : OPENING) {
    for (const int b : OPENING) {
      if (a == b) continue;
      const bool saccadeAndBlink = a == 5 && b == 3;
      if (a == 3 && b == 5) continue;
      expect_types(a, b, saccadeAndBlink ? Order::First : Order::None);
    }
  }
  for (const int a : CLOSING) {
    for (const int b : CLOSING) {
      if (a == b || (a == 6 && b == 4)) continue;
      expect_types(a, b, a == 4 && b == 6 ? Order::First : Order::None);
    }
  }
}

TEST(SortByTime, BlinksOfTwoEyes) {
  expect_types(3, 4, Order::First, SIDE_LEFT, SIDE_LEFT);
  expect_types(3, 4, Order::First, SIDE_RIGHT, SIDE_RIGHT);
  expect_types(3, 4, Order::Both, SIDE_LEFT, SIDE_RIGHT);
  expect_types(3, 4, Order::Both, SIDE_RIGHT, SIDE_LEFT);
  expect_types(7, 8, Order::First, SIDE_RIGHT, SIDE_LEFT);
}

TEST(SortByTime, FileOrder) {
  for (const int type : BY_FILE) {
    for (const auto* others : {&OPENING, &CLOSING, &BY_FILE}) {
      for (const int other : *others) expect_types(type, other, Order::File);
    }
    for (const int other : {MESSAGE, SAMPLE, 11, 29, 40}) expect_types(type, other, Order::File);
  }
  for (const auto* others : {&OPENING, &CLOSING}) {
    for (const int other : *others) expect_types(MESSAGE, other, Order::File);
  }
  for (const int other : {MESSAGE, 11, 29, 40}) expect_types(MESSAGE, other, Order::File);
}

TEST(SortByTime, MessagesAndSamples) {
  Items items;
  expect_order(items.item(MESSAGE, 10, 100), items.item(SAMPLE, 10, 200), true, false);
  expect_order(items.item(MESSAGE, 10, 300), items.item(SAMPLE, 10, 200), true, true);
  expect_types(SAMPLE, SAMPLE, Order::None);
  expect_types(SAMPLE, 29, Order::None);
}

TEST(SortByTime, MarksOfRepairsDoNotMatter) {
  Items items;
  GZDItem repaired = items.item(7, 10, 200);
  repaired.setFixedTimeStamp(10);
  expect_order(repaired, items.item(7, 10, 300), true, false);
}

// ---- the whole list
// ------------------------------------------------------------------------------

constexpr std::size_t WINDOW = 13500, STEP = 10500, WHOLE = 20000;

bool same_item(const GZDItem& a, const GZDItem& b) {
  return a.getFilePos() == b.getFilePos() && a.getDetailedType() == b.getDetailedType() &&
         a.getTimeStamp() == b.getTimeStamp() && a.getRecording() == b.getRecording();
}

void expect_same(const std::vector<GZDItem>& a, const std::vector<GZDItem>& b) {
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t i = 0; i < a.size(); ++i) ASSERT_TRUE(same_item(a[i], b[i])) << "entry " << i;
}

// std::sort of the items themselves. A null place stands for the guards around each window.
struct Placed {
  const GZDItem* item;
  int guard;  // -1 before, 1 behind everything
};

bool placed_before(const Placed& a, const Placed& b) {
  if (a.guard != 0 || b.guard != 0) return a.guard < b.guard;
  return sortByTime(*a.item, *b.item);
}

void sort_window(std::vector<GZDItem>& items, std::size_t first, std::size_t last) {
  std::vector<Placed> placed{{nullptr, -1}};
  for (std::size_t i = first; i < last; ++i) placed.push_back({&items[i], 0});
  placed.push_back({nullptr, 1});
  std::sort(placed.begin() + 1, placed.end() - 1, placed_before);
  std::vector<GZDItem> sorted;
  for (std::size_t i = 1; i + 1 < placed.size(); ++i) sorted.push_back(*placed[i].item);
  std::copy(sorted.begin(), sorted.end(), items.begin() + static_cast<std::ptrdiff_t>(first));
}

std::vector<GZDItem> sorted_by_model(std::vector<GZDItem> items) {
  if (items.size() <= WHOLE) {
    sort_window(items, 0, items.size());
    return items;
  }
  std::size_t first = 0;
  for (; first + WINDOW < items.size(); first += STEP) sort_window(items, first, first + WINDOW);
  sort_window(items, first, items.size());
  return items;
}

// Entries of the given types at stamps that rise slowly, out of order by up to `disorder` stamps.
std::vector<GZDItem> random_items(Items& items, std::size_t count, const std::vector<int>& types,
                                  unsigned disorder, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<GZDItem> list;
  for (std::size_t i = 0; i < count; ++i) {
    const UINT64 stamp = i / 3 + random() % disorder;
    const int type = types[random() % types.size()];
    if (type == GZD_RECORDING) {
      list.push_back(items.boundary(static_cast<byte>(random() % 2), stamp));
    } else {
      list.push_back(items.item(type, stamp, static_cast<INT64>(10 * i),
                                static_cast<UINT16>(1 + random() % 2)));
    }
  }
  return list;
}

TEST(SortItems, ConsistentListsComeOutAsOfAnySort) {
  // One type a stamp: there is one right order.
  for (const std::size_t count : {0u, 1u, 2u, 17u, 1000u}) {
    Items items;
    std::vector<GZDItem> list = random_items(items, count, {MESSAGE}, 50, 5);
    std::vector<GZDItem> expected = list;
    std::stable_sort(expected.begin(), expected.end(), [](const GZDItem& a, const GZDItem& b) {
      return a.getTimeStamp() < b.getTimeStamp();
    });
    sortItems(list);
    expect_same(list, expected);
  }
}

TEST(SortItems, TiesComeOutAsOfStdSort) {
  const std::vector<std::vector<int>> mixtures = {
      {SAMPLE, SAMPLE, MESSAGE, 7, 8, 5, 6},
      {SAMPLE, 3, 4, 5, 6, 24, 25, 30},
      {3, 4},
      {24, 200},
      {200},
      {30, 200, 24, 11},
  };
  unsigned seed = 1;
  for (const auto& types : mixtures) {
    for (const std::size_t count : {2u, 5u, 16u, 17u, 40u, 700u, 20000u}) {
      for (const unsigned disorder : {1u, 4u, 300u}) {
        Items items;
        std::vector<GZDItem> list = random_items(items, count, types, disorder, ++seed);
        const std::vector<GZDItem> expected = sorted_by_model(list);
        sortItems(list);
        ASSERT_NO_FATAL_FAILURE(expect_same(list, expected)) << count << ' ' << disorder;
      }
    }
  }
}

// Runs of one stamp in which items come before each other: they are carried across half the list.
TEST(SortItems, LongCirclesComeOutAsOfStdSort) {
  const std::vector<std::vector<int>> mixtures = {
      {3, 4}, {24, SAMPLE}, {3, 4, 24, SAMPLE, 25}, {1, 2, 3, 4, 5, 6, 7, 8, 24, SAMPLE}};
  std::mt19937 random(3);
  for (const auto& types : mixtures) {
    for (const std::size_t count : {600u, 20000u, 26000u}) {
      for (const UINT64 run : {200u, 100000u}) {
        Items items;
        std::vector<GZDItem> list;
        for (std::size_t i = 0; i < count; ++i) {
          const int type = types[random() % types.size()];
          const auto place = static_cast<INT64>(random() % 4 == 0 ? random() % count : i);
          const auto side = static_cast<UINT16>(random() % 4 == 0 ? random() % 16 : type % 2);
          list.push_back(items.item(type, 10 + i / run, place, side));
        }
        for (int time = 0; time < 3; ++time) {
          const std::vector<GZDItem> expected = sorted_by_model(list);
          sortItems(list);
          ASSERT_NO_FATAL_FAILURE(expect_same(list, expected)) << types.size() << ' ' << count;
        }
      }
    }
  }
}

// As the tracker writes them: samples in order, events late, some early, some far away.
TEST(SortItems, EventsAmongRisingSamplesComeOutAsOfStdSort) {
  std::mt19937 random(11);
  for (const std::size_t count : {5u, 300u, 20000u, 40000u}) {
    for (const unsigned far : {0u, 1u, 30u}) {
      for (const std::vector<int>& types :
           {std::vector<int>{5, 6, 7, 8}, {3, 4, 5, 6, 24}, {24, 25, 28, GZD_RECORDING}}) {
        Items items;
        std::vector<GZDItem> list;
        for (std::size_t i = 0; i < count; ++i) {
          const auto position = static_cast<INT64>(10 * i);
          const UINT64 now = 100000 + 2 * i;
          list.push_back(items.item(SAMPLE, now, position, 0));
          if (random() % 20 != 0) continue;
          const unsigned reach = random() % 1000 < far ? 90000 : 200;
          const UINT64 stamp = now + reach / 8 - random() % reach;
          const int type = types[random() % types.size()];
          list.push_back(type == GZD_RECORDING
                             ? items.boundary(static_cast<byte>(random() % 2), stamp)
                             : items.item(type, stamp, position + 5, random() % 2 + 1));
        }
        const std::vector<GZDItem> expected = sorted_by_model(list);
        Index index;
        index.gzdItemList = listOf(list);
        EXPECT_TRUE(index.gzdItemList.samplesRise());
        sortItems(index);
        ASSERT_NO_FATAL_FAILURE(expect_same(itemsOf(index.gzdItemList), expected))
            << count << ' ' << far;
        expectLandmarks(index.gzdItemList);
      }
    }
  }
}

TEST(SortItems, LandmarksThatAreKnownFollowTheOrder) {
  for (const std::size_t count : {30u, 30000u}) {
    Items items;
    Index index;
    index.gzdItemList =
        listOf(random_items(items, count, {SAMPLE, SAMPLE, 24, 3, 4, GZD_RECORDING}, 400, 7));
    expectLandmarks(index.gzdItemList);
    sortItems(index);
    expectLandmarks(index.gzdItemList);
  }
}

TEST(SortItems, LongListsAreSortedInWindows) {
  for (const std::size_t count : {20000u, 20001u, 24000u, 24001u, 50000u}) {
    Items items;
    std::vector<GZDItem> list = random_items(items, count, {SAMPLE, 24, 3, 4, 7, 8}, 400, 9);
    const std::vector<GZDItem> expected = sorted_by_model(list);
    sortItems(list);
    ASSERT_NO_FATAL_FAILURE(expect_same(list, expected)) << count;
  }
}

TEST(SortItems, AnItemFurtherOutOfPlaceThanAWindowStaysBehind) {
  for (const std::size_t count : {20000u, 20001u}) {
    Items items;
    std::vector<GZDItem> list;
    for (std::size_t i = 0; i + 1 < count; ++i) {
      list.push_back(items.item(SAMPLE, 10 + i, static_cast<INT64>(i)));
    }
    list.push_back(items.item(MESSAGE, 1, 77));
    sortItems(list);
    const auto place = std::find_if(list.begin(), list.end(), [](const GZDItem& item) {
      return item.getItemType() == MESSAGE;
    });
    // The second window begins at 10500.
    EXPECT_EQ(place - list.begin(), count == 20000 ? 0 : 10500);
  }
}

TEST(SortItems, StampsAtBothEndsOfTheirRange) {
  Items items;
  std::vector<GZDItem> list;
  for (int i = 0; i < 40; ++i) {
    list.push_back(items.start(0));
    list.push_back(items.item(3, 0, i, SIDE_LEFT));
    list.push_back(items.item(4, 0, i, SIDE_RIGHT));
    list.push_back(items.item(24, ~UINT64{0}, 100 - i));
    list.push_back(items.item(200, ~UINT64{0}, i));
  }
  const std::vector<GZDItem> expected = sorted_by_model(list);
  sortItems(list);
  expect_same(list, expected);
  EXPECT_TRUE(list.front().isRecordingStart());
}

}  // namespace
