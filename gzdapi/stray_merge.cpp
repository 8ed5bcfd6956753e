#include "stray_merge.h"

#include <algorithm>

namespace {

constexpr std::size_t ENTRIES_PER_STRAY = 8;  // fewer, and sorting is cheaper

}  // namespace

bool StrayMerge::run(std::size_t first, std::size_t last) {
  if (!findStrays(first, last) || !merge(first, last)) return false;
  std::copy(merged.begin(), merged.end(),
            items.packed().begin() + static_cast<std::ptrdiff_t>(first));
  return true;
}

// An entry is a stray when one before it has a greater stamp.
bool StrayMerge::findStrays(std::size_t first, std::size_t last) {
  strays.clear();
  placesOfStrays.clear();
  UINT64 newest = 0;
  for (std::size_t place = first; place != last; ++place) {
    const UINT64 stamp = items.stampAt(place);
    if (stamp >= newest) {
      newest = stamp;
      continue;
    }
    if (strays.size() * ENTRIES_PER_STRAY > last - first) return false;
    strays.push_back({stamp, place});
    placesOfStrays.push_back(place);
  }
  std::stable_sort(strays.begin(), strays.end(),
                   [](const Stray& a, const Stray& b) { return a.stamp < b.stamp; });
  return true;
}

bool StrayMerge::merge(std::size_t first, std::size_t last) {
  const std::vector<ItemList::Packed>& entries = items.packed();
  merged.clear();
  runStart = 0;
  runStamp = 0;
  auto stray = strays.begin();
  auto skipped = placesOfStrays.begin();
  for (std::size_t place = first; place != last; ++place) {
    if (skipped != placesOfStrays.end() && *skipped == place) {
      ++skipped;
      continue;
    }
    const UINT64 stamp = items.stampAt(place);
    for (; stray != strays.end() && stray->stamp < stamp; ++stray) {
      if (!append(stray->stamp, entries[stray->place])) return false;
    }
    if (!append(stamp, entries[place])) return false;
  }
  for (; stray != strays.end(); ++stray) {
    if (!append(stray->stamp, entries[stray->place])) return false;
  }
  return orderRun();
}

// Returns false when the entries of the stamp before have more than one order.
bool StrayMerge::append(UINT64 stamp, ItemList::Packed entry) {
  if (stamp != runStamp) {
    if (merged.size() - runStart > 1 && !orderRun()) return false;
    runStart = merged.size();
    runStamp = stamp;
  }
  merged.push_back(entry);
  return true;
}

bool StrayMerge::orderRun() {
  const std::size_t count = merged.size() - runStart;
  if (count > LONGEST_RUN) return false;
  run_items.clear();
  for (std::size_t i = 0; i < count; ++i) {
    const ItemList::Packed entry = merged[runStart + i];
    const GZDItem item = items.unpack(entry);
    std::size_t place = i;
    while (place > 0 && comesBefore(item, run_items[place - 1])) --place;
    run_items.insert(run_items.begin() + static_cast<std::ptrdiff_t>(place), item);
    const auto target = merged.begin() + static_cast<std::ptrdiff_t>(runStart + place);
    std::move_backward(target, merged.begin() + static_cast<std::ptrdiff_t>(runStart + i),
                       merged.begin() + static_cast<std::ptrdiff_t>(runStart + i + 1));
    *target = entry;
  }
  return hasOneOrder(run_items);
}

bool StrayMerge::hasOneOrder(const std::vector<GZDItem>& entries) const {
  for (auto a = entries.begin(); a != entries.end(); ++a) {
    for (auto b = a + 1; b != entries.end(); ++b) {
      if (!comesBefore(*a, *b) || comesBefore(*b, *a)) return false;
    }
  }
  return true;
}
