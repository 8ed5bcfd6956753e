// The steps of std::sort, whose outcome they share for every comparison; its last pass is done in a
// list where it would take many steps.
#include "order/introsort.h"

#include <algorithm>
#include <bit>

namespace gzd {

namespace {

constexpr std::ptrdiff_t small_sort = 16;
// Steps of the insertion pass, for each entry, that are cheaper than to make a list of them.
constexpr std::ptrdiff_t steps_an_entry = 24;

// ---- parting ------------------------------------------------------------------------------------

void swap_median_to(SortEntry& target, SortEntry& a, SortEntry& b, SortEntry& c, ItemOrder before) {
  if (before(a, b)) {
    std::swap(target, before(b, c) ? b : before(a, c) ? c : a);
  } else {
    std::swap(target, before(a, c) ? a : before(b, c) ? c : b);
  }
}

// Only the guards stop a scan for certain: it may leave the range where the comparison does not
// agree with itself.
SortEntry* part(SortEntry* first, SortEntry* last, ItemOrder before) {
  swap_median_to(*first, first[1], first[(last - first) / 2], last[-1], before);
  const SortEntry pivot = *first;
  ++first;
  while (true) {
    while (before(*first, pivot)) ++first;
    do --last;
    while (before(pivot, *last));
    if (first >= last) return first;
    std::swap(*first, *last);
    ++first;
  }
}

void sort_by_heap(SortEntry* first, SortEntry* last, ItemOrder before) {
  std::make_heap(first, last, before);
  std::sort_heap(first, last, before);
}

void part_down_to_small(SortEntry* first, SortEntry* last, int partingsLeft, ItemOrder before) {
  while (last - first > small_sort) {
    if (partingsLeft-- == 0) return sort_by_heap(first, last, before);
    SortEntry* const cut = part(first, last, before);
    part_down_to_small(cut, last, partingsLeft, before);
    last = cut;
  }
}

// ---- inserting ----------------------------------------------------------------------------------

// Carries an entry to the left until one does not let it pass. Returns the number of steps.
std::ptrdiff_t insert(SortEntry* place, ItemOrder before) {
  const SortEntry entry = *place;
  SortEntry* hole = place;
  for (; before(entry, hole[-1]); --hole) *hole = hole[-1];
  *hole = entry;
  return place - hole;
}

// As above; but what is before the very first entry goes there, whatever lies between.
void insert_with_glance(SortEntry* first, SortEntry* place, ItemOrder before) {
  if (before(*place, *first)) {
    std::rotate(first, place, place + 1);
  } else {
    insert(place, before);
  }
}

}  // namespace

void IntroSort::sort(std::vector<SortEntry>& guarded, const ItemOrder& before) {
  SortEntry* const first = guarded.data() + 1;
  SortEntry* const last = guarded.data() + guarded.size() - 1;
  if (first == last) return;
  const auto depth = static_cast<int>(std::bit_width(static_cast<std::size_t>(last - first))) - 1;
  part_down_to_small(first, last, 2 * depth, before);
  insertAll(first, last, before);
}

void IntroSort::insertAll(SortEntry* first, SortEntry* last, const ItemOrder& before) {
  SortEntry* place = first + 1;
  for (; place < last && place - first < small_sort; ++place)
    insert_with_glance(first, place, before);
  std::ptrdiff_t stepsLeft = steps_an_entry * (last - first);
  for (; place < last && stepsLeft >= 0; ++place) stepsLeft -= insert(place, before);
  if (place < last) insertTheRest(first, place, last, before);
}

void IntroSort::insertTheRest(SortEntry* first, SortEntry* next, SortEntry* last,
                              const ItemOrder& before) {
  list_.assign(first, next, before);
  for (; next != last; ++next) list_.insert(*next, before);
  list_.copyTo(first);
}

}  // namespace gzd
