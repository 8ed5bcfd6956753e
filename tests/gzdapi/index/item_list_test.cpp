// Entries in words, against a plain list.
#include "index/item_list.h"

#include <gtest/gtest.h>

#include <algorithm>

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

TEST(ItemList, ChangesStayWithTheEntry) {
  std::vector<GZDItem> items = mixture();
  ItemList list = list_of(items);
  for (std::size_t i = 0; i < items.size(); ++i) {
    const UINT64 stamp = items[items.size() - 1 - i].getTimeStamp();
    const auto change = [&](GZDItem& item) {
      item.setTimeStamp(stamp);
      if (item.isSample()) item.markSampleInsideBlink(i % 2 == 0 ? GZD_LEFT_EYE : GZD_RIGHT_EYE);
      if (item.isEyeEvent()) item.markBlinkMerged();
    };
    change(items[i]);
    list.change(i, change);
  }
  EXPECT_TRUE(landmarks_hold(list));
  for (std::size_t i = 0; i < items.size(); ++i) expect_entry(list[i], items[i]);
  std::reverse(list.packed().begin(), list.packed().end());
  list.changed();
  EXPECT_TRUE(landmarks_hold(list));
  for (std::size_t i = 0; i < items.size(); ++i) expect_entry(list[i], items[items.size() - 1 - i]);
}

void expect_landmarks(const ItemList& list) {
  std::vector<UINT32> expected, actual;
  for (UINT32 place = 0; place < list.size(); ++place)
    if (!list[place].isSample()) expected.push_back(place);
  for (const Landmark mark : list.landmarks()) actual.push_back(mark.place);
  EXPECT_EQ(actual, expected);
}

TEST(ItemList, LandmarksMoveWithTheEntries) {
  constexpr std::size_t entry_count = 150;  // more than two words of landmarks
  ItemList list;
  for (std::size_t i = 0; i < entry_count; ++i) {
    const auto position = static_cast<INT64>(i);
    list.push_back(i % 3 == 1 ? GZDItem(position, GZD_MESSAGE, SIDE_NONE, 0, first_stamp + i)
                              : sample(position, first_stamp + i));
  }
  std::vector<GZDItem> items = items_of(list);
  EXPECT_TRUE(list.samplesRise());
  for (std::size_t from = 1; from < entry_count; ++from) {
    const std::size_t to = from * 7 % (from + 1);
    list.moveBack(from, to);
    const auto begin = items.begin();
    std::rotate(begin + static_cast<std::ptrdiff_t>(to), begin + static_cast<std::ptrdiff_t>(from),
                begin + static_cast<std::ptrdiff_t>(from) + 1);
    for (std::size_t i = 0; i < entry_count; ++i) expect_entry(list[i], items[i]);
    expect_landmarks(list);
  }
  list.changed();
  EXPECT_FALSE(list.samplesRise());
  list.push_back(sample(1, first_stamp));
  expect_landmarks(list);
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
