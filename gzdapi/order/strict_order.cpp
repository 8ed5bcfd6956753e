// Looks whether a window has one order only, and moves what comes late to its place.
#include "order/strict_order.h"

#include <algorithm>

namespace gzd {

namespace {

// Entries of one stamp are compared pair by pair; more than this are not.
constexpr std::size_t longest_run = 32;
// By how many places landmarks may move, for each entry of a window. Beyond it sorting is cheaper.
constexpr std::size_t moves_per_entry = 8;

}  // namespace

// Goes on to the first sample with a stamp or a later one, for stamps that do not fall.
class StrictOrder::RisingSamples {
 public:
  RisingSamples(const ItemList& list, UINT32 first, UINT32 end)
      : items_(list), next_(first), end_(end) {}

  void skipTo(UINT32 sample) { next_ = sample; }

  // Its number; the end when there is none.
  UINT32 firstFrom(UINT64 stamp) {
    for (; next_ < end_; next_ = spanEnd_) {
      if (!span_.holds(next_)) enterSpan();
      if (span_.at(spanEnd_ - 1).stamp >= stamp) return next_ = firstInSpan(stamp);
    }
    return next_;
  }
  // Whether that has this stamp.
  [[nodiscard]] bool isAt(UINT64 stamp) const {
    return next_ < end_ && span_.at(next_).stamp == stamp;
  }

 private:
  void enterSpan() {
    span_ = items_.samplesFrom(next_);
    spanEnd_ = next_ + static_cast<UINT32>(std::min<std::size_t>(end_ - next_, span_.count()));
    step_ = static_cast<UINT32>(span_.step());
  }
  [[nodiscard]] UINT32 firstInSpan(UINT64 stamp) const {
    UINT32 low = next_, high = spanEnd_ - 1;
    const UINT64 newest = span_.at(low).stamp;
    if (newest >= stamp) return low;
    if (step_ != 0) return low + (static_cast<UINT32>(stamp - newest) + step_ - 1) / step_;
    while (low < high) {
      const UINT32 middle = low + (high - low) / 2;
      (span_.at(middle).stamp < stamp ? low : high) =
          span_.at(middle).stamp < stamp ? middle + 1 : middle;
    }
    return low;
  }

  const ItemList& items_;
  UINT32 next_;
  const UINT32 end_;
  ItemList::Span span_;
  UINT32 spanEnd_ = 0;
  UINT32 step_ = 0;  // of the span; 0 when it has more than one
};

bool StrictOrder::make(std::size_t first, std::size_t last) {
  firstChange_ = last;
  const bool isOnlyOrder = makeAnew(first, last);
  orderedUpTo_ = isOnlyOrder ? last : 0;
  return isOnlyOrder;
}

bool StrictOrder::makeAnew(std::size_t first, std::size_t last) {
  const auto number = static_cast<UINT32>(items_.landmarksBefore(first));
  const auto end = static_cast<UINT32>(items_.landmarksBefore(last));
  const UINT32 sample = static_cast<UINT32>(first) - number;
  const UINT32 lastSample = static_cast<UINT32>(last) - end;
  if (!items_.samplesRise() && !items_.samplesRise(sample, lastSample)) return false;
  if (!sortLandmarks(number, end - number, moves_per_entry * (last - first))) return false;
  if (!placeAmongSamples(sample, lastSample)) return false;
  carryOut(number);
  return true;
}

StrictOrder::Entry StrictOrder::entryOf(Landmark landmark) const {
  const GZDItem item = items_[landmark];
  return {item.getTimeStamp(),
          {static_cast<std::size_t>(sort_class_of(item)), item.getFilePos()},
          landmark,
          landmark.place - landmark.number};
}

// ---- landmarks among themselves -----------------------------------------------------------------

bool StrictOrder::sortLandmarks(std::size_t number, std::size_t count, std::size_t mostMoves) {
  sorted_.clear();
  for (std::size_t i = 0; i < count; ++i) {
    const Entry entry = entryOf(items_.landmark(number + i));
    std::size_t place = i;
    if (entry.landmark.place >= orderedUpTo_ && !findPlace(entry, place)) return false;
    if (i - place > mostMoves) return false;
    mostMoves -= i - place;
    sorted_.insert(sorted_.begin() + static_cast<std::ptrdiff_t>(place), entry);
  }
  return true;
}

// Finds where a landmark belongs among those that are sorted. It comes before some of those of its
// stamp, the last ones, and after all others; else it has no place.
bool StrictOrder::findPlace(const Entry& entry, std::size_t& place) const {
  while (place > 0 && sorted_[place - 1].stamp > entry.stamp) --place;
  const std::size_t end = place;
  for (std::size_t i = end; i > 0 && sorted_[i - 1].stamp == entry.stamp; --i) {
    if (end - i == longest_run) return false;
    const Standing& other = sorted_[i - 1].standing;
    const bool comesFirst = comesBefore(entry.standing, other);
    if (comesFirst == comesBefore(other, entry.standing) || (comesFirst && place != i))
      return false;
    if (comesFirst) place = i - 1;
  }
  return true;
}

// ---- landmarks among samples --------------------------------------------------------------------

bool StrictOrder::placeAmongSamples(UINT32 first, UINT32 last) {
  RisingSamples samples(items_, first, last);
  UINT32 lowest = first;
  for (Entry& entry : sorted_) {
    if (entry.landmark.place < orderedUpTo_)
      samples.skipTo(std::max(first + 1, entry.samples) - 1);
    else if (!placeAmongSamples(entry, samples))
      return false;
    if (entry.samples < lowest) return false;
    lowest = entry.samples;
  }
  return true;
}

bool StrictOrder::placeAmongSamples(Entry& entry, RisingSamples& samples) const {
  constexpr auto as_sample = static_cast<std::size_t>(SortClass::Sample);
  const std::size_t sample = entry.samples = samples.firstFrom(entry.stamp);
  if (!samples.isAt(entry.stamp)) return true;
  const bool asksForPlace =
      precedence_table[as_sample][entry.standing.sortClass] == Precedence::ByFile ||
      precedence_table[entry.standing.sortClass][as_sample] == Precedence::ByFile;
  const Standing other{as_sample, asksForPlace ? items_.sample(sample).getFilePos() : 0};
  const bool comesLast = comesBefore(other, entry.standing);
  if (comesLast) ++entry.samples;
  return comesLast != comesBefore(entry.standing, other);
}

// ---- the outcome --------------------------------------------------------------------------------

// The landmarks from `number` on become the sorted ones.
void StrictOrder::carryOut(std::size_t number) {
  const auto newPlace = [&](std::size_t i) { return sorted_[i].samples + number + i; };
  const auto stays = [&](std::size_t i) {
    const Landmark& old = sorted_[i].landmark;
    return old.number == number + i && old.place == newPlace(i);
  };
  std::size_t begin = 0, end = sorted_.size();
  while (begin < end && stays(begin)) ++begin;
  while (begin < end && stays(end - 1)) --end;
  if (begin == end) return;
  firstChange_ = std::min<std::size_t>(items_.landmark(number + begin).place, newPlace(begin));
  arranged_.clear();
  for (std::size_t i = begin; i < end; ++i)
    arranged_.push_back({static_cast<UINT32>(newPlace(i)), sorted_[i].landmark.number});
  items_.arrange(number + begin, arranged_);
}

}  // namespace gzd
