// The entries of an index as a plain vector, and back.
#ifndef TESTS_GZDAPI_ITEM_LISTS_H
#define TESTS_GZDAPI_ITEM_LISTS_H

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "index/item_list.h"
#include "order/time_order.h"

using namespace gzd;

inline std::vector<GZDItem> itemsOf(const ItemList& list) {
  std::vector<GZDItem> items;
  for (const GZDItem item : list) items.push_back(item);
  return items;
}

inline ItemList listOf(const std::vector<GZDItem>& items) {
  ItemList list;
  for (const GZDItem& item : items) list.push_back(item);
  return list;
}

// What the list says of its landmarks is what a look at every entry shows.
inline void expectLandmarks(const ItemList& list) {
  std::vector<UINT32> expected, actual;
  bool rise = true;
  std::optional<UINT64> stamp;
  for (UINT32 place = 0; place < list.size(); ++place) {
    const GZDItem item = list[place];
    if (!item.isSample()) {
      expected.push_back(place);
    } else {
      rise = rise && (!stamp || item.getTimeStamp() > *stamp);
      stamp = item.getTimeStamp();
    }
  }
  for (const Landmark mark : list.landmarks()) {
    actual.push_back(mark.place);
    EXPECT_EQ(list[mark].getFilePos(), list[mark.place].getFilePos());
    EXPECT_EQ(list[mark].getDetailedType(), list[mark.place].getDetailedType());
  }
  EXPECT_EQ(actual, expected);
  // A list may not know that its samples rise.
  EXPECT_TRUE(rise || !list.samplesRise());
}

// Sorts a list that is no part of an index.
inline void sortItems(std::vector<GZDItem>& items) {
  Index index;
  index.gzdItemList = listOf(items);
  sortItems(index);
  items = itemsOf(index.gzdItemList);
}

#endif
