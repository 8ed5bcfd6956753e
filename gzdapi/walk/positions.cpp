// findIndex is a binary search that narrows the range to two neighbours: an entry in the middle
// with a greater stamp ends the range, any other begins it, and a sample hit on the way is the
// answer. Of the last two, the first decides: the second is handed out only after a sample.

#include "walk/positions.h"

#include <algorithm>
#include <optional>

namespace gzd {

// ---- bookmarks ----------------------------------------------------------------------------------

std::size_t Bookmarks::placeOf(const BOOKMARK* bm) const {
  if (bm == nullptr) return nowhere;
  const auto known = serialOf_.find(bm->id);
  if (known == serialOf_.end()) return nowhere;
  const auto entry =
      std::lower_bound(bookmarks_.begin(), bookmarks_.end(), known->second,
                       [](const Entry& e, UINT64 serial) { return e.serial < serial; });
  return static_cast<std::size_t>(entry - bookmarks_.begin());
}

int Bookmarks::moveTo(UINT32 place) {
  walk_.currentBookMark = place;
  merge_.moveTo(bookmarks_[place].mark.id);
  return 0;
}

int Bookmarks::setBookMark(BOOKMARK* bm) {
  if (bm == nullptr || walk_.currentData >= index_.size()) return -1;
  const std::size_t count = bookmarks_.size();
  if (count == bookmarks_.capacity()) bookmarks_.reserve(2 * count + 1);  // nothing fails half-way
  if (!serialOf_.emplace(walk_.currentData, nextSerial_).second) return 0;
  bm->id = walk_.currentData;
  bookmarks_.push_back({*bm, nextSerial_++});
  return 0;
}

int Bookmarks::gotoBookMark(const BOOKMARK* bm) {
  const std::size_t place = placeOf(bm);
  return place == nowhere ? -1 : moveTo(static_cast<UINT32>(place));
}

int Bookmarks::removeBookMark(const BOOKMARK* bm) {
  const std::size_t place = placeOf(bm);
  if (place == nowhere) return -1;
  serialOf_.erase(bookmarks_[place].mark.id);
  bookmarks_.erase(bookmarks_.begin() + static_cast<std::ptrdiff_t>(place));
  // At the first bookmark this wraps to the largest value, from which the next one is the first.
  if (walk_.currentBookMark >= place) --walk_.currentBookMark;
  return 0;
}

int Bookmarks::gotoNextBookMark() {
  const UINT32 next = walk_.currentBookMark + 1;
  return next < bookmarks_.size() ? moveTo(next) : -1;
}

int Bookmarks::gotoPreviousBookMark() {
  const UINT32 previous = walk_.currentBookMark - 1;
  return previous < bookmarks_.size() ? moveTo(previous) : -1;
}

// ---- searching ----------------------------------------------------------------------------------

namespace {

// The stamp of an item; a boundary without its block has none.
std::optional<UINT64> key_of(const GZDItem& item) {
  if (item.isRecording() && item.getRecording() == nullptr) return std::nullopt;
  return item.getTimeStamp();
}

int choose_of_two(const Index& index, UINT64 stamp, int low, int high) {
  const GZDItem first = index.gzdItemList[static_cast<std::size_t>(low)];
  const GZDItem second = index.gzdItemList[static_cast<std::size_t>(high)];
  if (key_of(first) == stamp) return first.isSample() ? low : -1;
  return key_of(second) == stamp && first.isSample() ? high : -1;
}

}  // namespace

int findIndex(const Index& index, UINT32 find_time, int startIndex, int endIndex) {
  const UINT64 stamp = find_time;
  if (startIndex < 0 || endIndex < startIndex || static_cast<UINT32>(endIndex) >= index.size()) {
    return -1;
  }
  while (endIndex - startIndex >= 2) {
    const int mid = startIndex + (endIndex - startIndex) / 2;
    const GZDItem item = index.gzdItemList[static_cast<std::size_t>(mid)];
    if (item.isSample() && item.getTimeStamp() == stamp) return mid;
    if (key_of(item).value_or(0) > stamp) {
      endIndex = mid;
    } else {
      startIndex = mid;
    }
  }
  return choose_of_two(index, stamp, startIndex, endIndex);
}

void gotoIndex(const Index& index, Walk& walk, const Trials& trials, int itemIndex) {
  if (itemIndex >= 0 && static_cast<UINT32>(itemIndex) < index.size()) {
    walk.currentData = static_cast<UINT32>(itemIndex);
  }
  const UINT32 trial = trials.firstTrialStartingAt(itemIndex);
  if (trials.areCollected() && trial != no_trial) walk.currentTrial = trial;
}

}  // namespace gzd
