// Entries put into words and taken out of them, and the bits that mark landmarks.
#include "index/item_list.h"

#include <algorithm>

namespace gzd {

void ItemList::push_back(const GZDItem& item) {
  const Packed entry = pack(item);
  entries_.push_back(entry);
  if (isPlain(entry)) {
    noteStamp(item.getTimeStamp());
  } else if (item.isSample()) {
    rising_ = false;
  } else if (marksKnown_) {
    const UINT64 bit = UINT64{1} << (size() - 1) % word_bits;
    putMarks((size() - 1) / word_bits, bit, bit);
  }
}

// ---- words --------------------------------------------------------------------------------------

ItemList::Packed ItemList::pack(const GZDItem& item) {
  constexpr UINT16 blink_bits = GZDItem::left_inside_blink | GZDItem::right_inside_blink;
  const UINT64 stamp = item.getTimeStamp();
  UINT64& itsBase = item.isSample() ? base_ : eventBase_;
  if (itsBase == no_base && !item.isRecording()) {
    itsBase = stamp - std::min(stamp, stamps_before_first);
  }
  if ((item.getDetailedType() & ~blink_bits) == GZD_SAMPLE && fits(item.getFilePos(), stamp)) {
    Packed entry = plain(item.getFilePos(), stamp);
    if (item.isSampleInsideBlink(GZD_LEFT_EYE)) entry.word |= in_left_blink;
    if (item.isSampleInsideBlink(GZD_RIGHT_EYE)) entry.word |= in_right_blink;
    return entry;
  }
  if (isSmallEvent(item) && events_.size() < event_limit) {
    events_.add(item.getFilePos(), item.getLastTag());
    return packSmallEvent(item, events_.size() - 1);
  }
  others_.push_back(item);
  return {UINT64{others_.size() - 1} << other_shift | no_event_bit | no_sample_bit};
}

bool ItemList::isSmallEvent(const GZDItem& item) const {
  return SmallEvents::canHold(item) && item.getTimeStamp() - eventBase_ < stamp_limit;
}

ItemList::Packed ItemList::packSmallEvent(const GZDItem& item, std::size_t number) const {
  return {(item.getTimeStamp() - eventBase_) << stamp_shift | UINT64{number} << event_shift |
          UINT64{item.getMarks()} << mark_shift | no_sample_bit};
}

void ItemList::set(std::size_t place, const GZDItem& item) {
  const Packed entry = entries_[place];
  if (isEvent(entry)) {
    entries_[place] = isSmallEvent(item) ? packSmallEvent(item, eventNumber(entry)) : pack(item);
  } else if (isPlain(entry)) {
    entries_[place] = pack(item);
    rising_ &= item.getTimeStamp() == stampOf(entry);
    if (!isPlain(entries_[place])) changed();
  } else {
    others_[static_cast<std::size_t>(entry.word >> other_shift)] = item;
  }
}

// ---- landmarks ----------------------------------------------------------------------------------

// Of the bits of a word those of `mask` become those of `landmarks`.
void ItemList::putMarks(std::size_t number, UINT64 mask, UINT64 landmarks) const {
  if (number >= marks_.size()) {
    if (landmarks == 0) return;
    marks_.resize(number + 1);
  }
  marks_[number] = (marks_[number] & ~mask) | landmarks;
}

std::size_t ItemList::landmarkBehindWord(std::size_t number, std::size_t end) const {
  const std::size_t behind = std::min((end + word_bits - 1) / word_bits, marks_.size());
  while (++number < behind) {
    if (marks_[number] != 0) return std::min(number * word_bits + firstBit(marks_[number]), end);
  }
  return end;
}

bool ItemList::areLandmarks(std::size_t first, std::size_t last) const {
  while (first < last && nextLandmark(first, last) == first) ++first;
  return first == last;
}

bool ItemList::markLandmarks(std::size_t first, std::size_t last, UINT64& riseFrom) const {
  bool rise = true;
  UINT64 from = 0;
  for (std::size_t place = first; place < last;) {
    const std::size_t number = place / word_bits, begin = place % word_bits;
    const std::size_t end = std::min(last, place - begin + word_bits);
    const UINT64 seen = ~UINT64{0} >> (word_bits - (end - place)) << begin;
    UINT64 found = 0;
    for (; place < end; ++place) {
      const Packed entry = entries_[place];
      if (isPlain(entry)) {
        rise &= stampOf(entry) >= from;
        from = stampOf(entry) + 1;
      } else if (isSampleAt(place)) {
        rise = false;
      } else {
        found |= UINT64{1} << place % word_bits;
      }
    }
    putMarks(number, seen, found);
  }
  riseFrom = from;
  return rise;
}

void ItemList::findLandmarks() const {
  marks_.clear();
  rising_ = markLandmarks(0, size(), risingFrom_);
  marksKnown_ = true;
}

void ItemList::orderChanged(std::size_t first, std::size_t last) {
  if (!marksKnown_) return;
  UINT64 riseFrom;
  rising_ &= markLandmarks(first, last, riseFrom);
}

void ItemList::moveBack(std::size_t from, std::size_t to) {
  Packed* const place = entries_.data() + to;
  const Packed entry = entries_[from];
  std::copy_backward(place, place + (from - to), place + (from - to) + 1);
  *place = entry;
  if (isPlain(entry)) rising_ &= areLandmarks(to, from);  // it has passed no sample
  rotateMarks(to, from);
}

// The bits from `to` up to `from` move up by one; that at `from` takes the place of the first.
void ItemList::rotateMarks(std::size_t to, std::size_t from) {
  marks_.resize(std::max(marks_.size(), from / word_bits + 1));
  UINT64 moved = marks_[from / word_bits] >> from % word_bits & 1;
  for (std::size_t number = to / word_bits; number <= from / word_bits; ++number) {
    UINT64 kept = 0;
    std::size_t begin = 0;
    if (number == to / word_bits) {
      begin = to % word_bits;
      kept = (UINT64{1} << begin) - 1;
    }
    if (number == from / word_bits) kept |= ~UINT64{1} << from % word_bits;
    const UINT64 before = marks_[number];
    marks_[number] = (before & kept) | (((before & ~kept) << 1 | moved << begin) & ~kept);
    moved = before >> (word_bits - 1);
  }
}

}  // namespace gzd
