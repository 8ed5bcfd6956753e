// Edits are sorted by place, then merged with the list while both are walked once.
#include "index/index_edits.h"

#include <algorithm>
#include <cstddef>

namespace gzd {

void IndexEdits::sortByPlace() {
  const auto earlierInsertion = [](const Insertion& a, const Insertion& b) {
    return a.place < b.place;
  };
  const auto earlierRemoval = [](const Removal& a, const Removal& b) { return a.first < b.first; };
  if (!std::is_sorted(insertions_.begin(), insertions_.end(), earlierInsertion)) {
    std::stable_sort(insertions_.begin(), insertions_.end(), earlierInsertion);
  }
  if (!std::is_sorted(removals_.begin(), removals_.end(), earlierRemoval)) {
    std::sort(removals_.begin(), removals_.end(), earlierRemoval);
  }
}

bool IndexEdits::apply(ItemList& items) {
  if (insertions_.empty() && removals_.empty()) return false;
  sortByPlace();
  ItemList::Rebuild edited(items);
  auto removal = removals_.begin();
  std::size_t place = 0;
  const auto takeUpTo = [&](std::size_t target) {
    while (place < target) {
      const bool isLast = removal == removals_.end() || removal->first > target;
      const std::size_t stop = isLast ? target : removal->first;
      edited.take(place, stop);
      place = isLast ? stop : (removal++)->end;
    }
  };
  for (const Insertion& insertion : insertions_) {
    takeUpTo(insertion.place);
    edited.add(insertion.item);
  }
  takeUpTo(items.size());
  edited.finish();
  insertions_.clear();
  removals_.clear();
  return true;
}

}  // namespace gzd
