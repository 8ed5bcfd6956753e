#include "index/index_edits.h"

#include <algorithm>
#include <cstddef>

namespace gzd {

void IndexEdits::sortByPlace() {
  const auto earlierInsertion = [](const Insertion& a, const Insertion& b) {
    return a.place < b.place;
  };
  const auto earlierRemoval = [](const Removal& a, const Removal& b) { return a.first < b.first; };
  if (!std::is_sorted(insertions.begin(), insertions.end(), earlierInsertion)) {
    std::stable_sort(insertions.begin(), insertions.end(), earlierInsertion);
  }
  if (!std::is_sorted(removals.begin(), removals.end(), earlierRemoval)) {
    std::sort(removals.begin(), removals.end(), earlierRemoval);
  }
}

void IndexEdits::compact(std::vector<ItemList::Packed>& entries) const {
  auto kept = entries.begin() + removals.front().first;
  for (auto removal = removals.begin(); removal != removals.end(); ++removal) {
    const bool isLast = removal + 1 == removals.end();
    const auto end = isLast ? entries.end() : entries.begin() + (removal + 1)->first;
    kept = std::copy(entries.begin() + removal->end, end, kept);
  }
  entries.erase(kept, entries.end());
}

std::vector<ItemList::Packed> IndexEdits::merged(ItemList& items) const {
  const std::vector<ItemList::Packed>& entries = items.packed();
  std::vector<ItemList::Packed> result;
  result.reserve(entries.size() + insertions.size());
  auto removal = removals.begin();
  std::size_t place = 0;
  const auto copyUpTo = [&](std::size_t target) {
    while (place < target) {
      const std::size_t stop =
          removal == removals.end() ? target : std::min<std::size_t>(target, removal->first);
      result.insert(result.end(), entries.data() + place, entries.data() + stop);
      place = stop;
      if (removal != removals.end() && place == removal->first) place = (removal++)->end;
    }
  };
  for (const Insertion& insertion : insertions) {
    copyUpTo(insertion.place);
    result.push_back(items.pack(insertion.item));
  }
  copyUpTo(entries.size());
  return result;
}

bool IndexEdits::apply(ItemList& items) {
  if (insertions.empty() && removals.empty()) return false;
  sortByPlace();
  if (insertions.empty()) {
    compact(items.packed());
  } else {
    items.packed() = merged(items);
  }
  items.changed();
  insertions.clear();
  removals.clear();
  return true;
}

}  // namespace gzd
