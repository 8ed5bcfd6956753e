// Pairs starts with ends in index order, by kind and eye.
#include "repair/event_pairing.h"

#include <algorithm>
#include <array>
#include <optional>

namespace gzd {

namespace {

// True when an end is to show its start's entry time instead of the time in its own record.
bool start_decides(const GZDItem& start, const GZDItem& end) {
  return start.isTimeChanged() || start.isDummy() ||
         (end.getItemType() == GZD_END_BLINK && end.isBlinkMerged());
}

}  // namespace

EventPairing EventPairing::build(const Index& index) {
  EventPairing pairing;
  std::array<std::optional<GZDItem>, event_pairs> open;
  for (const Landmark mark : index.landmarks()) {
    const GZDItem& item = index.gzdItemList[mark];
    if (!item.isEyeEvent()) continue;
    std::optional<GZDItem>& start = open[pair_of(item)];
    if (item.isStartEvent()) {
      start = item;
    } else if (start) {
      const UINT32 startTime = time_of_stamp(start->getTimeStamp());
      if (start_decides(*start, item) && startTime < time_of_stamp(item.getTimeStamp())) {
        pairing.ends_.push_back({mark.place, startTime});
      }
      start.reset();
    }
  }
  return pairing;
}

void EventPairing::showEntryTime(const GZDItem& item, FEVENT& event) {
  const UINT32 time = time_of_stamp(item.getTimeStamp());
  if (item.isStartEvent()) {
    event.sttime = time;
  } else {
    event.entime = time;
    event.sttime = std::min(event.sttime, time);
  }
}

void EventPairing::showStartTime(UINT32 itemIndex, FEVENT& event) const {
  const auto found =
      std::lower_bound(ends_.begin(), ends_.end(), itemIndex,
                       [](const ChangedEnd& end, UINT32 wanted) { return end.itemIndex < wanted; });
  if (found != ends_.end() && found->itemIndex == itemIndex) event.sttime = found->startTime;
}

}  // namespace gzd
