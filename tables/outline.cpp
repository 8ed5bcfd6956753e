// A walk of its own over the events of a recording, before that which makes rows.
#include "outline.h"

#include <algorithm>

#include "element_walk.h"

namespace gzdtables {

namespace {

// Collects stretches that follow one another. One that is not ended lasts until the next begins.
class Stretches {
 public:
  explicit Stretches(Timeline& timeline) : timeline_(timeline) {}

  void begin(std::int32_t number, std::uint32_t time) {
    end(time);
    number_ = number;
    start_ = time;
  }
  void end(std::uint32_t time) {
    if (number_ != 0) timeline_.add(start_, time, static_cast<std::uint32_t>(number_), number_);
    number_ = 0;
  }
  void finish() {
    end(Timeline::latest);
    timeline_.finish();
  }

 private:
  Timeline& timeline_;
  std::int32_t number_ = 0;
  std::uint32_t start_ = 0;
};

void take_event(Outline& outline, const FEVENT& event) {
  const std::size_t eye = side_of(event);
  const auto type = static_cast<std::uint8_t>(event_type_of(event.type));
  outline.events[eye].add(event.sttime, event.entime, type, type + 1);
  if (event.type == GZD_END_BLINK) outline.blinks[eye].add(event.sttime, event.entime);
}

}  // namespace

EventType event_type_of(int code) {
  if (code == GZD_END_FIXATION) return EventType::fixation;
  return code == GZD_END_SACCADE ? EventType::saccade : EventType::blink;
}

void BlinkList::add(std::uint32_t onset, std::uint32_t offset) {
  blinks_.emplace_back(std::min(onset, offset), std::max(onset, offset));
}

void BlinkList::finish() {
  std::sort(blinks_.begin(), blinks_.end());
  std::uint32_t first = Timeline::latest;
  for (auto blink = blinks_.rbegin(); blink != blinks_.rend(); ++blink)
    first = blink->second = std::min(first, blink->second);
}

bool BlinkList::lies_in(std::uint32_t start, std::uint32_t end) const {
  const auto blink =
      std::lower_bound(blinks_.begin(), blinks_.end(), std::pair{start, std::uint32_t{0}});
  return blink != blinks_.end() && blink->second <= end;
}

Outline make_outline(Recording& recording) {
  Outline outline;
  Stretches blocks(outline.blocks), trials(outline.trials);
  ElementWalk walk(recording, want_ended_events);
  while (walk.next()) {
    const Element& element = walk.element();
    if (is_ended_event(element.code)) {
      take_event(outline, element.record->fe);
      continue;
    }
    if (element.code == GZD_RECORDING && element.record->rec.state != GZD_BLOCK_END) {
      outline.announced |= element.record->rec.sflags;
      blocks.begin(element.block, time_of(element));
    } else if (element.code == GZD_RECORDING) {
      blocks.end(time_of(element));
    }
    if (element.opens_trial) trials.begin(element.trial, time_of(element));
    if (element.closes_trial) trials.end(time_of(element));
  }
  outline.samples = walk.samples_passed();
  blocks.finish();
  trials.finish();
  for (Timeline& events : outline.events) events.finish();
  for (BlinkList& blinks : outline.blinks) blinks.finish();
  return outline;
}

}  // namespace gzdtables
