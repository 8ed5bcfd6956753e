#include "strict_order.h"

#include <algorithm>

namespace {

// Entries of one stamp are compared pair by pair; more than this are not.
constexpr std::size_t LONGEST_RUN = 32;
// By how many places entries may move, for each entry of a window. Beyond it sorting is cheaper.
constexpr std::size_t MOVES_PER_ENTRY = 8;

}  // namespace

bool StrictOrder::isStrict(std::size_t first, std::size_t last) const {
  std::size_t run = first;
  UINT64 stamp = items.stampAt(first);
  for (std::size_t place = first + 1; place != last; ++place) {
    const UINT64 next = items.stampAt(place);
    if (next == stamp) continue;
    if (next < stamp) return false;
    if (place - run > 1 && !runIsStrict(run, place)) return false;
    run = place;
    stamp = next;
  }
  return last - run == 1 || runIsStrict(run, last);
}

bool StrictOrder::runIsStrict(std::size_t first, std::size_t last) const {
  if (last - first > LONGEST_RUN) return false;
  for (std::size_t a = first; a + 1 != last; ++a) {
    const GZDItem earlier = items[a];
    for (std::size_t b = a + 1; b != last; ++b) {
      const GZDItem later = items[b];
      if (!comesBefore(earlier, later) || comesBefore(later, earlier)) return false;
    }
  }
  return true;
}

bool StrictOrder::make(std::size_t first, std::size_t last) {
  const auto begin = items.packed().begin() + static_cast<std::ptrdiff_t>(first);
  original.assign(begin, begin + static_cast<std::ptrdiff_t>(last - first));
  if (insertAll(first, last) && isStrict(first, last)) return true;
  std::copy(original.begin(), original.end(), begin);
  return false;
}

bool StrictOrder::insertAll(std::size_t first, std::size_t last) {
  const auto begin = items.packed().begin();
  std::size_t moves = MOVES_PER_ENTRY * (last - first);
  lowestPlace = last;
  UINT64 newest = items.stampAt(first);
  for (std::size_t entry = first + 1; entry != last; ++entry) {
    const UINT64 stamp = items.stampAt(entry);
    if (stamp > newest) {
      newest = stamp;
      continue;
    }
    const std::size_t place = placeOf(entry, first);
    if (entry - place > moves) return false;
    moves -= entry - place;
    if (place != entry) lowestPlace = std::min(lowestPlace, place);
    const ItemList::Packed late = begin[static_cast<std::ptrdiff_t>(entry)];
    std::copy_backward(begin + static_cast<std::ptrdiff_t>(place),
                       begin + static_cast<std::ptrdiff_t>(entry),
                       begin + static_cast<std::ptrdiff_t>(entry + 1));
    begin[static_cast<std::ptrdiff_t>(place)] = late;
  }
  return true;
}

// Where an entry belongs among those from `first` on before it, which are in order.
std::size_t StrictOrder::placeOf(std::size_t entry, std::size_t first) const {
  const UINT64 stamp = items.stampAt(entry);
  std::size_t low = first;
  std::size_t place = entry;
  while (low < place) {
    const std::size_t middle = low + (place - low) / 2;
    if (items.stampAt(middle) > stamp)
      place = middle;
    else
      low = middle + 1;
  }
  const GZDItem item = items[entry];
  const std::size_t furthest = place - std::min(place - first, LONGEST_RUN);
  while (place > furthest && items.stampAt(place - 1) == stamp &&
         comesBefore(item, items[place - 1])) {
    --place;
  }
  return place;
}
