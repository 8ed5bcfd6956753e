// The order that std::sort of the GNU library makes, step by step, of a comparison that may answer
// true both ways; at less cost than std::sort where it does.
//
// Large ranges are parted at a pivot, or sorted by a heap when they were parted too often, down to
// pieces of 16; then a pass from left to right inserts each entry into those before it. Where
// entries come before each other, that pass carries many of them across half the list, one by one.
// Here it takes another way once that happens: see insertion_list.h.
#ifndef GZDAPI_INTROSORT_H
#define GZDAPI_INTROSORT_H

#include <vector>

#include "order/insertion_list.h"
#include "order/sort_entry.h"

namespace gzd {

class IntroSort {
 public:
  // Sorts all but the first and the last entry, which must be the guards.
  void sort(std::vector<SortEntry>& guarded, const ItemOrder& before);

 private:
  void insertAll(SortEntry* first, SortEntry* last, const ItemOrder& before);
  void insertTheRest(SortEntry* first, SortEntry* next, SortEntry* last, const ItemOrder& before);

  InsertionList list_;
};

}  // namespace gzd

#endif
