#include "index_edits.h"

#include <algorithm>
#include <cstddef>

void IndexEdits::sortByPlace() {
  const auto earlier = [](const Insertion& a, const Insertion& b) { return a.place < b.place; };
  if (!std::is_sorted(insertions.begin(), insertions.end(), earlier)) {
    std::stable_sort(insertions.begin(), insertions.end(), earlier);
  }
  if (!std::is_sorted(removals.begin(), removals.end())) {
    std::sort(removals.begin(), removals.end());
  }
}

void IndexEdits::compact(std::vector<GZDItem>& items) const {
  if (removals.empty()) return;
  std::size_t kept = removals.front();
  auto removal = removals.begin();
  for (std::size_t place = kept; place < items.size(); ++place) {
    if (removal != removals.end() && *removal == place) {
      ++removal;
    } else {
      items[kept++] = items[place];
    }
  }
  items.resize(kept);
}

std::vector<GZDItem> IndexEdits::merged(const std::vector<GZDItem>& items) const {
  std::vector<GZDItem> result;
  result.reserve(items.size() + insertions.size() - removals.size());
  auto removal = removals.begin();
  auto insertion = insertions.begin();
  for (std::size_t place = 0; place <= items.size(); ++place) {
    for (; insertion != insertions.end() && insertion->place == place; ++insertion) {
      result.push_back(insertion->item);
    }
    if (removal != removals.end() && *removal == place) {
      ++removal;
    } else if (place < items.size()) {
      result.push_back(items[place]);
    }
  }
  return result;
}

bool IndexEdits::apply(std::vector<GZDItem>& items) {
  if (insertions.empty() && removals.empty()) return false;
  sortByPlace();
  if (insertions.empty()) {
    compact(items);
  } else {
    items = merged(items);
  }
  insertions.clear();
  removals.clear();
  return true;
}
