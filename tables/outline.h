// What has to be known of a recording before its rows can be told: blocks and trials by time, and
// the eye events that label samples.
#ifndef GZDTABLES_OUTLINE_H
#define GZDTABLES_OUTLINE_H

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "recording.h"
#include "timeline.h"

namespace gzdtables {

// Numbers of the `type` of events and the event of a sample.
enum class EventType : std::uint8_t { fixation, saccade, blink };
[[nodiscard]] EventType event_type_of(int code);

// Whether a blink lies inside a stretch of time, in logarithmic time.
class BlinkList {
 public:
  void add(std::uint32_t onset, std::uint32_t offset);
  void finish();
  // Whether a blink has onset and offset from `start` to `end`, ends included.
  [[nodiscard]] bool lies_in(std::uint32_t start, std::uint32_t end) const;

 private:
  // Where a blink begins, and the first end of this blink and all that begin later.
  std::vector<std::pair<std::uint32_t, std::uint32_t>> blinks_;
};

struct Outline {
  // Numbers of the last block and the last trial that hold a time; 0 for none.
  Timeline blocks, trials;
  // By eye, 0 left, 1 right: EventType + 1 of the event that holds a time, 0 for none.
  std::array<Timeline, 2> events;
  std::array<BlinkList, 2> blinks;
  // Samples of the walk, those filled in too; 0 when messages of the experiment's log are merged.
  std::uint32_t samples = 0;
  // SMP_ bits that any block announces.
  std::uint16_t announced = 0;
};

// Walks over all elements, samples not fetched.
[[nodiscard]] Outline make_outline(Recording& recording);

}  // namespace gzdtables

#endif
