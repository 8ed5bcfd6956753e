// What the repairs of the index mean for the times of eye events.
#ifndef GZDAPI_EVENT_PAIRING_H
#define GZDAPI_EVENT_PAIRING_H

#include <vector>

#include "gzd_data.h"
#include "index/index.h"

namespace gzd {

// Starts and ends that belong together have one number below `event_pairs`: of three kinds, by eye.
constexpr std::size_t event_pairs = 3 * 2;
inline std::size_t pair_of(const GZDItem& eyeEvent) {
  return static_cast<std::size_t>((eyeEvent.getItemType() - GZD_START_BLINK) / 2 * 2 +
                                  eyeEvent.getEye());
}

// Holds the few ends of eye events whose start the repairs have changed.
class EventPairing {
 public:
  EventPairing() = default;
  // Pairs starts and ends in index order, by kind and eye. Build it after all checks: items are
  // known by their index.
  static EventPairing build(const Index& index);

  // Corrects the times of the record `event` of the item at `itemIndex`: a re-timed start or end
  // shows its entry's time, and an end the time of its changed start. Logarithmic in the number of
  // changed ends.
  void apply(UINT32 itemIndex, const GZDItem& item, FEVENT& event) const {
    if (!item.isEyeEvent()) return;
    if (item.isTimeChanged()) showEntryTime(item, event);
    if (!ends_.empty() && item.isEndEvent()) showStartTime(itemIndex, event);
  }

 private:
  struct ChangedEnd {
    UINT32 itemIndex;
    UINT32 startTime;  // ms, before the end's time
  };

  static void showEntryTime(const GZDItem& item, FEVENT& event);
  void showStartTime(UINT32 itemIndex, FEVENT& event) const;

  std::vector<ChangedEnd> ends_;  // ascending indices
};

}  // namespace gzd

#endif
