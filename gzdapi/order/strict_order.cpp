// Looks whether a window has one order only, and moves what comes late to its place.
#include "order/strict_order.h"

#include <algorithm>
#include <array>

namespace gzd {

namespace {

// Entries of one stamp are compared pair by pair; more than this are not.
constexpr std::size_t longest_run = 32;
// By how many places entries may move, for each entry of a window. Beyond it sorting is cheaper.
constexpr std::size_t moves_per_entry = 8;

}  // namespace

std::size_t StrictOrder::Strides::from(std::size_t place) const {
  if (!samplesRise_) return place;
  const std::size_t next = items_.nextLandmark(place, last_);
  return next > place ? next - 1 : place;
}

bool StrictOrder::isStrict(std::size_t first, std::size_t last) const {
  const Strides strides(items_, last);
  std::size_t run = strides.from(first);
  UINT64 stamp = items_.stampAt(run);
  for (std::size_t place = run + 1; place != last; ++place) {
    const UINT64 next = items_.stampAt(place);
    if (next == stamp) continue;
    if (next < stamp) return false;
    if (place - run > 1 && !runIsStrict(run, place)) return false;
    run = place = strides.from(place);
    stamp = items_.stampAt(run);
  }
  return last - run == 1 || runIsStrict(run, last);
}

// Whether entries of one stamp have one order only.
bool StrictOrder::runIsStrict(std::size_t first, std::size_t last) const {
  if (last - first > longest_run) return false;
  std::array<Standing, longest_run> run;
  std::size_t count = 0;
  for (std::size_t place = first; place != last; ++place) {
    const Standing later = standingOf(items_[place]);
    for (std::size_t i = 0; i < count; ++i)
      if (!comesBefore(run[i], later) || comesBefore(later, run[i])) return false;
    run[count++] = later;
  }
  return true;
}

bool StrictOrder::make(std::size_t first, std::size_t last) {
  if (insertAll(first, last) && isStrict(first, last)) return true;
  undo(first, last);
  return false;
}

bool StrictOrder::insertAll(std::size_t first, std::size_t last) {
  std::size_t moves = moves_per_entry * (last - first);
  lowestPlace_ = last;
  moved_.clear();
  const Strides strides(items_, last);
  std::size_t newest = strides.from(first);
  for (std::size_t entry = newest + 1; entry != last; ++entry) {
    const std::size_t risen = strides.from(entry);
    if (items_.stampAt(entry) > items_.stampAt(entry - 1)) {
      entry = risen;
      continue;
    }
    const std::size_t place = placeOf(entry, first);
    if (entry - place > moves) return false;
    moves -= entry - place;
    if (place == entry) continue;
    lowestPlace_ = std::min(lowestPlace_, place);
    items_.moveBack(entry, place);
    moved_.push_back({entry, place});
  }
  return true;
}

void StrictOrder::undo(std::size_t first, std::size_t last) {
  ItemList::Packed* const entries = items_.packed().data();
  for (; !moved_.empty(); moved_.pop_back()) {
    const Move move = moved_.back();
    std::rotate(entries + move.to, entries + move.to + 1, entries + move.from + 1);
  }
  items_.orderChanged(first, last);
}

// Where an entry belongs among those from `first` on before it, which are in order. It is not far.
std::size_t StrictOrder::placeOf(std::size_t entry, std::size_t first) const {
  const UINT64 stamp = items_.stampAt(entry);
  std::size_t reach = 1;
  std::size_t place = entry;
  while (reach <= entry - first && items_.stampAt(entry - reach) > stamp) {
    place = entry - reach;
    reach *= 2;
  }
  std::size_t low = entry - std::min(reach, entry - first);
  while (low < place) {
    const std::size_t middle = low + (place - low) / 2;
    if (items_.stampAt(middle) > stamp)
      place = middle;
    else
      low = middle + 1;
  }
  const Standing standing = standingOf(items_[entry]);
  const std::size_t furthest = place - std::min(place - first, longest_run);
  while (place > furthest && items_.stampAt(place - 1) == stamp &&
         comesBefore(standing, standingOf(items_[place - 1]))) {
    --place;
  }
  return place;
}

}  // namespace gzd
