// Entries in words, against a plain list.
#include "index/item_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "support/item_lists.h"

using namespace gzd;

namespace {

void expect_entry(const GZDItem& actual, const GZDItem& expected) {
  EXPECT_EQ(actual.getFilePos(), expected.getFilePos());
  EXPECT_EQ(actual.getDetailedType(), expected.getDetailedType());
  EXPECT_EQ(actual.getTimeStamp(), expected.getTimeStamp());
  EXPECT_EQ(actual.isDummy(), expected.isDummy());
  if (!expected.isSample()) {
    EXPECT_EQ(actual.getLastTag(), expected.getLastTag());
  }
}

GZDItem sample(INT64 position, UINT64 stamp) {
  return {position, GZD_SAMPLE, SIDE_NONE, 0, stamp};
}

constexpr UINT64 first_stamp = 0x40000000;
constexpr INT64 last_short = (INT64{1} << 31) - 2;

// Samples that fit into a word and samples that just do not, events of either eye.
std::vector<GZDItem> mixture() {
  std::vector<GZDItem> items = {sample(2, first_stamp)};
  constexpr UINT64 stamps_before = 1 << 26, step_range = 1 << 30;
  for (const UINT64 stamp :
       {first_stamp + 1, first_stamp - stamps_before, first_stamp - stamps_before - 1,
        first_stamp - stamps_before + step_range - 1, first_stamp - stamps_before + step_range,
        UINT64{0}, ~UINT64{0}, ~UINT64{0} - 5, UINT64{1} << 34}) {
    items.push_back(sample(77, stamp));
    items.push_back(sample(position_of_dummy, stamp));
    items.push_back({90, GZD_START_BLINK, SIDE_RIGHT, 0x1234, stamp});
  }
  for (const INT64 position : {INT64{0}, last_short, last_short + 1, largest_position})
    items.push_back(sample(position, first_stamp));
  return items;
}

TEST(ItemList, GivesBackWhatItWasGiven) {
  const std::vector<GZDItem> items = mixture();
  const ItemList list = list_of(items);
  ASSERT_EQ(list.size(), items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    SCOPED_TRACE(i);
    expect_entry(list[i], items[i]);
    EXPECT_EQ(list.stampAt(i), items[i].getTimeStamp());
    EXPECT_EQ(list.isSampleAt(i), items[i].isSample());
  }
}

TEST(ItemList, SamplesOfAScanAreAsOthers) {
  ItemList list;
  const std::vector<GZDItem> items = mixture();
  for (const GZDItem& item : items)
    if (item.isSample()) list.addSample(item.getFilePos(), item.getTimeStamp());
  std::size_t place = 0;
  for (const GZDItem& item : items)
    if (item.isSample()) expect_entry(list[place++], item);
}

void expect_entries(const ItemList& list, const std::vector<GZDItem>& items) {
  ASSERT_EQ(list.size(), items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    SCOPED_TRACE(i);
    expect_entry(list[i], items[i]);
  }
  EXPECT_TRUE(landmarks_hold(list));
}

void mark_inside_blink(ItemList& list, std::size_t first, std::size_t last, bool isLeft) {
  ItemList::Rebuild marked(list);
  marked.take(0, first);
  marked.take(first, last, isLeft, !isLeft);
  marked.take(last, list.size());
  marked.finish();
}

TEST(ItemList, ChangesStayWithTheEntry) {
  std::vector<GZDItem> items = mixture();
  ItemList list = list_of(items);
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (items[i].isSample()) {
      items[i].markSampleInsideBlink(i % 2 == 0 ? GZD_LEFT_EYE : GZD_RIGHT_EYE);
      mark_inside_blink(list, i, i + 1, i % 2 == 0);
      continue;
    }
    const UINT64 stamp = items[items.size() - 1 - i].getTimeStamp();
    const auto change = [&](GZDItem& item) {
      item.setTimeStamp(stamp);
      item.markBlinkMerged();
    };
    change(items[i]);
    list.change(i, change);
  }
  expect_entries(list, items);
  ItemList::Rebuild turned(list);
  for (std::size_t i = items.size(); i-- > 0;) turned.take(i, i + 1);
  turned.finish();
  std::reverse(items.begin(), items.end());
  expect_entries(list, items);
}

// Samples as of a recording, or with places and stamps that follow no rule, between messages.
std::vector<GZDItem> long_list(bool isRegular, std::mt19937& random) {
  std::vector<GZDItem> items;
  INT64 position = 0;
  for (UINT64 i = 0; i < 5000; ++i) {
    position += isRegular ? 26 : 2 + static_cast<INT64>(random() % 100);
    const UINT64 stamp = first_stamp + 2 * i + (isRegular ? 0 : random() % 2);
    items.push_back(i % 100 == 7 ? GZDItem(position, GZD_MESSAGE, SIDE_NONE, 0, stamp)
                                 : sample(position, stamp));
  }
  return items;
}

// Three landmarks, turned round, before the samples around them.
void arrange_some(ItemList& list, std::vector<GZDItem>& items, std::size_t number) {
  if (number + 4 > list.landmarkCount()) return;
  const UINT32 begin = number > 0 ? list.landmark(number - 1).place + 1 : 0;
  const auto place = static_cast<UINT32>(number);
  list.arrange(number, {{begin, place + 2}, {begin + 1, place + 1}, {begin + 2, place}});
  const auto first = items.begin() + static_cast<std::ptrdiff_t>(begin);
  const auto last = items.begin() + static_cast<std::ptrdiff_t>(list.landmark(number + 3).place);
  std::stable_partition(first, last, [](const GZDItem& item) { return !item.isSample(); });
  std::reverse(first, first + 3);
}

// Moves, orders anew, marks, takes out and puts in, all at random.
TEST(ItemList, IsAPlainListUnderAnyChange) {
  std::mt19937 random(5);
  for (int round = 0; round < 40; ++round) {
    std::vector<GZDItem> items = long_list(round % 2 == 0, random);
    ItemList list = list_of(items);
    EXPECT_TRUE(list.samplesRise());
    EXPECT_LE(round % 2 == 0 ? 10 * list.bytes() : list.bytes(), 10 * items.size());
    for (int step = 0; step < 12; ++step) {
      std::size_t from = random() % items.size(), to = random() % items.size();
      const auto at = [&items](std::size_t i) {
        return items.begin() + static_cast<std::ptrdiff_t>(i);
      };
      if (step % 4 == 0) {
        arrange_some(list, items, list.landmarksBefore(from));
      } else if (step % 4 == 1) {
        if (from > to) std::swap(from, to);
        to = list.nextLandmark(from, to);
        mark_inside_blink(list, from, to, true);
        for (; from < to; ++from) items[from].markSampleInsideBlink(GZD_LEFT_EYE);
      } else if (step % 4 == 2) {
        std::vector<UINT32> order(std::min<std::size_t>(items.size() - from, 1500));
        std::iota(order.begin(), order.end(), 0U);
        if (step > 4) std::shuffle(order.begin(), order.end(), random);
        list.reorder(from, order);
        const std::vector<GZDItem> before = items;
        for (std::size_t i = 0; i < order.size(); ++i) items[from + i] = before[from + order[i]];
      } else {
        if (from > to) std::swap(from, to);
        const GZDItem added[] = {sample(position_of_dummy, first_stamp), items[7]};
        ItemList::Rebuild edited(list);
        edited.take(0, from);
        for (const GZDItem& item : added) edited.add(item);
        edited.take(to, items.size());
        edited.finish();
        items.erase(at(from), at(to));
        items.insert(at(from), std::begin(added), std::end(added));
      }
    }
    expect_entries(list, items);
  }
}

TEST(ItemList, AnEventTakesAtMostSixteenBytes) {
  constexpr UINT16 sample_tags[] = {0x03C0, 0x44C0, 0x0780, 0x1800, 0x1900, 0x1C00, 0x0B00};
  ItemList list;
  std::vector<GZDItem> items;
  for (std::size_t i = 0; i < 70'000; ++i) {
    const UINT16 tag = sample_tags[i % std::size(sample_tags)];
    const int type = tag >> 8 & 0x3F;
    const UINT16 side = type > GZD_END_FIXATION ? SIDE_NONE
                        : tag >> 14 == 1        ? SIDE_RIGHT
                                                : SIDE_LEFT;
    items.emplace_back(static_cast<INT64>(60'000 * i), type, side, tag,
                       first_stamp + 15'000 * i % (1 << 30));
    if (i % 5 == 0 && type < GZD_MESSAGE) items.back().setFixedTimeStamp(first_stamp + i);
    if (i % 3 == 0 && type == GZD_END_BLINK) items.back().markBlinkMerged();
    list.push_back(items.back());
  }
  EXPECT_LE(list.bytes(), 16 * items.size());
  for (std::size_t i = 0; i < items.size(); ++i) expect_entry(list[i], items[i]);
}

}  // namespace
