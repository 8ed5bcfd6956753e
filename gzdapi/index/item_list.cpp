#include "index/item_list.h"

#include <algorithm>

namespace gzd {

void ItemList::reserve(std::size_t count) {
  entries.reserve(count);
  if (!empty()) marks.reserve(marks.size() * count / size());
}

void ItemList::push_back(const GZDItem& item) {
  const Packed entry = pack(item);
  entries.push_back(entry);
  if (isPlain(entry)) {
    noteStamp(item.getTimeStamp());
  } else if (item.isSample()) {
    rising = false;
  } else if (marksKnown) {
    marks.push_back({static_cast<UINT32>(size() - 1), static_cast<UINT32>(others.size() - 1)});
  }
}

ItemList::Packed ItemList::pack(const GZDItem& item) {
  constexpr UINT16 BLINKS = GZDItem::LEFT_INSIDE_BLINK | GZDItem::RIGHT_INSIDE_BLINK;
  if ((item.getDetailedType() & ~BLINKS) == GZD_SAMPLE) {
    const UINT64 stamp = item.getTimeStamp();
    if (base == NO_BASE) base = stamp - std::min(stamp, STAMPS_BEFORE_FIRST);
    if (fits(item.getFilePos(), stamp)) {
      Packed entry = plain(item.getFilePos(), stamp);
      if (item.isSampleInsideBlink(GZD_LEFT_EYE)) entry.word |= IN_LEFT_BLINK;
      if (item.isSampleInsideBlink(GZD_RIGHT_EYE)) entry.word |= IN_RIGHT_BLINK;
      return entry;
    }
  }
  others.push_back(item);
  return {UINT64{others.size() - 1} << OTHER_SHIFT | OTHER};
}

void ItemList::set(std::size_t place, const GZDItem& item) {
  const Packed entry = entries[place];
  if (isPlain(entry)) {
    entries[place] = pack(item);
    rising &= item.getTimeStamp() == stampOf(entry);
    if (!isPlain(entries[place])) changed();
  } else {
    others[entry.word >> OTHER_SHIFT] = item;
  }
}

// ---- landmarks ----------------------------------------------------------------------------------

// Calls `visit` with the landmarks from place `first` up to `last`. Returns whether the samples
// among them rise; from `riseFrom` on others would.
template <class Visit>
bool ItemList::visitLandmarks(std::size_t first, std::size_t last, UINT64& riseFrom,
                              Visit visit) const {
  bool rise = true;
  riseFrom = 0;
  for (std::size_t place = first; place < last; ++place) {
    const Packed entry = entries[place];
    if (isPlain(entry)) {
      rise &= stampOf(entry) >= riseFrom;
      riseFrom = stampOf(entry) + 1;
    } else if (otherOf(entry).isSample()) {
      rise = false;
    } else {
      visit(Landmark{static_cast<UINT32>(place), static_cast<UINT32>(entry.word >> OTHER_SHIFT)});
    }
  }
  return rise;
}

void ItemList::findLandmarks() const {
  marks.clear();
  rising = visitLandmarks(0, size(), risingFrom, [this](Landmark mark) { marks.push_back(mark); });
  marksKnown = true;
}

std::size_t ItemList::landmarksBefore(std::size_t place) const {
  const auto isBefore = [](Landmark mark, std::size_t wanted) { return mark.place < wanted; };
  const auto found = std::lower_bound(landmarks().begin(), landmarks().end(), place, isBefore);
  return static_cast<std::size_t>(found - marks.begin());
}

void ItemList::orderChanged(std::size_t first, std::size_t last) {
  if (!marksKnown) return;
  // There are as many as before.
  auto mark = marks.begin() + static_cast<std::ptrdiff_t>(landmarksBefore(first));
  UINT64 riseFrom;
  rising &= visitLandmarks(first, last, riseFrom, [&](Landmark found) { *mark++ = found; });
}

void ItemList::moveBack(std::size_t from, std::size_t to, std::size_t mark) {
  Packed* const place = entries.data() + to;
  const Packed entry = entries[from];
  std::copy_backward(place, place + (from - to), place + (from - to) + 1);
  *place = entry;

  std::size_t passed = mark;
  while (passed > 0 && marks[passed - 1].place >= to) ++marks[--passed].place;
  if (isPlain(entry)) rising &= mark - passed == from - to;  // it has passed no sample
  if (isPlain(entry) || mark == marks.size() || marks[mark].place != from) return;
  const Landmark moved = {static_cast<UINT32>(to), marks[mark].number};
  std::copy_backward(marks.data() + passed, marks.data() + mark, marks.data() + mark + 1);
  marks[passed] = moved;
}

}  // namespace gzd
