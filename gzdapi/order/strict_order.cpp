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

// Goes on to the last of the samples that are known to rise from here on; nowhere from a landmark.
void StrictOrder::passRise(Cursor& at, std::size_t last) const {
  const std::size_t next = std::min(at.nextLandmark(), last);
  if (next > at.place() && items_.samplesRise()) at.goWithinGap(next - 1);
}

bool StrictOrder::make(std::size_t first, std::size_t last) {
  const bool isOnlyOrder = insertAll(first, last);
  if (!isOnlyOrder) undo();
  orderedUpTo_ = isOnlyOrder ? last : 0;
  return isOnlyOrder;
}

bool StrictOrder::insertAll(std::size_t first, std::size_t last) {
  std::size_t moves = moves_per_entry * (last - first);
  lowestPlace_ = last;
  moved_.clear();
  Cursor next(items_, orderedUpTo_ > first ? std::min(orderedUpTo_, last) - 1 : first);
  passRise(next, last);
  UINT64 newest = next.stamp();  // of the entries before
  for (next.next(); next.place() != last;) {
    const Cursor entry = next;
    const UINT64 stamp = entry.stamp();
    if (stamp > newest) {
      passRise(next, last);
      newest = next.place() == entry.place() ? stamp : next.stamp();
      next.next();
      continue;
    }
    next.next();
    const std::size_t place = placeOf(entry, stamp, first);
    if (place == nowhere || entry.place() - place > moves) return false;
    moves -= entry.place() - place;
    if (place == entry.place()) continue;
    lowestPlace_ = std::min(lowestPlace_, place);
    items_.move(entry, place);
    moved_.push_back({entry.place(), place});
  }
  return true;
}

void StrictOrder::undo() {
  for (; !moved_.empty(); moved_.pop_back()) items_.move(moved_.back().to, moved_.back().from);
}

// Goes back to the first place behind which, up to here, all stamps are above this one. Those
// before are in order.
void StrictOrder::goBackOverLater(Cursor& at, UINT64 stamp, std::size_t first) {
  while (at.place() > first) {
    Cursor before = at;
    before.previous();
    if (before.stamp() <= stamp) return;
    at = before;
    if (before.isLandmark()) continue;
    const std::size_t begin = std::max(at.gapBegin(), first);
    for (std::size_t low = begin; low < at.place();) {
      before.goWithinGap(low + (at.place() - low) / 2);
      if (before.stamp() > stamp)
        at = before;
      else
        low = before.place() + 1;
    }
    if (at.place() > begin) return;
  }
}

// Where an entry belongs among those from `first` on before it. It comes before some of those of
// its stamp, the last ones, and after all others; else it has no place.
std::size_t StrictOrder::placeOf(const Cursor& entry, UINT64 stamp, std::size_t first) const {
  Cursor at = entry;
  goBackOverLater(at, stamp, first);
  const Standing standing = standingOf(entry);
  const std::size_t end = at.place();
  std::size_t place = end;
  while (at.place() > first) {
    const bool mayComeBefore = place == at.place();
    at.previous();
    if (at.stamp() != stamp) break;
    if (end - at.place() == longest_run) return nowhere;
    const Standing other = standingOf(at);
    const bool comesFirst = comesBefore(standing, other);
    if (comesFirst == comesBefore(other, standing) || (comesFirst && !mayComeBefore))
      return nowhere;
    if (comesFirst) place = at.place();
  }
  return place;
}

}  // namespace gzd
