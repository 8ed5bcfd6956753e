// The entries of an index as a plain vector, and back.
#ifndef TESTS_GZDAPI_ITEM_LISTS_H
#define TESTS_GZDAPI_ITEM_LISTS_H

#include <vector>

#include "item_list.h"
#include "time_order.h"

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

// Sorts a list that is no part of an index.
inline void sortItems(std::vector<GZDItem>& items) {
  Index index;
  index.gzdItemList = listOf(items);
  sortItems(index);
  items = itemsOf(index.gzdItemList);
}

#endif
