// What has to be known of a recording before its rows can be told: blocks and trials by time, and
// the eye events that label samples.
#ifndef GZDTABLES_OUTLINE_H
#define GZDTABLES_OUTLINE_H

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <utility>
#include <vector>

#include "element_walk.h"
#include "eye_event.h"
#include "recording.h"
#include "timeline.h"

namespace gzdtables {

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
  // The eye events that ended, in the walk's order, unless they are too many, or a large part of
  // all elements.
  std::optional<std::deque<EyeEvent>> ended;
  // SMP_ bits that any block announces.
  std::uint16_t announced = 0;
};

// Puts an outline together from the elements of a walk that shows ended events.
class OutlineMaker {
 public:
  explicit OutlineMaker(const Recording& recording);
  // Takes the element that the walk is at, which is no sample.
  void take(const ElementWalk& walk);
  // The outline, when the walk is at its end.
  [[nodiscard]] Outline finish();

 private:
  // Collects stretches that follow one another. One that is not ended lasts until the next begins.
  class Stretches {
   public:
    void begin(Timeline& timeline, std::int32_t number, std::uint32_t time);
    void end(Timeline& timeline, std::uint32_t time);

   private:
    std::int32_t number_ = 0;
    std::uint32_t start_ = 0;
  };

  void take_event(const EyeEvent& event);
  void take_recording(const Element& element);

  Outline outline_;
  std::size_t most_kept_;  // ended events
  Stretches blocks_, trials_;
};

// Walks over all elements, samples not fetched.
[[nodiscard]] Outline make_outline(Recording& recording);

}  // namespace gzdtables

#endif
