// The entries of an index as a plain vector, and their order as std::sort makes it.
#ifndef TESTS_SUPPORT_ITEM_LISTS_H
#define TESTS_SUPPORT_ITEM_LISTS_H

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "index/item_list.h"
#include "order/time_order.h"

inline std::vector<gzd::GZDItem> items_of(const gzd::ItemList& list) {
  std::vector<gzd::GZDItem> items;
  for (const gzd::GZDItem item : list) items.push_back(item);
  return items;
}

inline gzd::ItemList list_of(const std::vector<gzd::GZDItem>& items) {
  gzd::ItemList list;
  for (const gzd::GZDItem& item : items) list.push_back(item);
  return list;
}

inline bool same_item(const gzd::GZDItem& a, const gzd::GZDItem& b) {
  return a.getFilePos() == b.getFilePos() && a.getDetailedType() == b.getDetailedType() &&
         a.getTimeStamp() == b.getTimeStamp() && a.getRecording() == b.getRecording();
}

// What the list says of its landmarks is what a look at every entry shows.
inline bool landmarks_hold(const gzd::ItemList& list) {
  std::vector<UINT32> expected, actual;
  bool rise = true;
  std::optional<UINT64> stamp;
  for (UINT32 place = 0; place < list.size(); ++place) {
    const gzd::GZDItem item = list[place];
    if (!item.isSample()) {
      expected.push_back(place);
    } else {
      rise = rise && (!stamp || item.getTimeStamp() > *stamp);
      stamp = item.getTimeStamp();
    }
  }
  bool same = true;
  for (const gzd::Landmark mark : list.landmarks()) {
    actual.push_back(mark.place);
    same = same && same_item(list[mark], list[mark.place]);
  }
  // A list may not know that its samples rise.
  return same && actual == expected && (rise || !list.samplesRise());
}

// The order that is wanted: std::sort by the comparison, window by window. A null place stands for
// the guards around each window.
inline void sort_plainly(std::vector<gzd::GZDItem>& items) {
  using Placed = std::pair<const gzd::GZDItem*, int>;  // -1 before, 1 after everything
  constexpr std::size_t window = 13500, step = 10500, whole = 20000;
  const auto sort_window = [&items](std::size_t first, std::size_t last) {
    std::vector<Placed> placed{{nullptr, -1}};
    for (std::size_t i = first; i < last; ++i) placed.emplace_back(&items[i], 0);
    placed.emplace_back(nullptr, 1);
    std::sort(placed.begin() + 1, placed.end() - 1, [](const Placed& a, const Placed& b) {
      if (a.second != 0 || b.second != 0) return a.second < b.second;
      return gzd::sortByTime(*a.first, *b.first);
    });
    std::vector<gzd::GZDItem> sorted;
    for (std::size_t i = 1; i + 1 < placed.size(); ++i) sorted.push_back(*placed[i].first);
    std::copy(sorted.begin(), sorted.end(), items.begin() + static_cast<std::ptrdiff_t>(first));
  };
  std::size_t first = 0;
  for (; items.size() > whole && first + window < items.size(); first += step)
    sort_window(first, first + window);
  sort_window(first, items.size());
}

#endif
