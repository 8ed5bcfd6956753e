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

void IndexEdits::compact(std::vector<ItemList::Packed>& entries) const {
  auto kept = entries.begin() + removals_.front().first;
  for (auto removal = removals_.begin(); removal != removals_.end(); ++removal) {
    const bool isLast = removal + 1 == removals_.end();
    const auto end = isLast ? entries.end() : entries.begin() + (removal + 1)->first;
    kept = std::copy(entries.begin() + removal->end, end, kept);
  }
  entries.erase(kept, entries.end());
}

std::vector<ItemList::Packed> IndexEdits::merged(ItemList& items) const {
  const std::vector<ItemList::Packed>& entries = items.packed();
  std::vector<ItemList::Packed> result;
  result.reserve(entries.size() + insertions_.size());
  auto removal = removals_.begin();
  std::size_t place = 0;
  const auto copyUpTo = [&](std::size_t target) {
    while (place < target) {
      const std::size_t stop =
          removal == removals_.end() ? target : std::min<std::size_t>(target, removal->first);
      result.insert(result.end(), entries.data() + place, entries.data() + stop);
      place = stop;
      if (removal != removals_.end() && place == removal->first) place = (removal++)->end;
    }
  };
  for (const Insertion& insertion : insertions_) {
    copyUpTo(insertion.place);
    result.push_back(items.pack(insertion.item));
  }
  copyUpTo(entries.size());
  return result;
}

bool IndexEdits::apply(ItemList& items) {
  if (insertions_.empty() && removals_.empty()) return false;
  sortByPlace();
  if (insertions_.empty()) {
    compact(items.packed());
  } else {
    items.packed() = merged(items);
  }
  items.changed();
  insertions_.clear();
  removals_.clear();
  return true;
}

}  // namespace gzd
