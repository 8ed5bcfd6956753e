// What the elements of a walk tell, collected.
#include "outline.h"

#include <algorithm>

namespace gzdtables {

namespace {

// Events are kept while they are few, and at least so many elements come to each.
constexpr std::size_t most_kept_events = 1 << 17;
constexpr std::size_t elements_of_kept_event = 8;

}  // namespace

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

void OutlineMaker::Stretches::begin(Timeline& timeline, std::int32_t number, std::uint32_t time) {
  end(timeline, time);
  number_ = number;
  start_ = time;
}

void OutlineMaker::Stretches::end(Timeline& timeline, std::uint32_t time) {
  if (number_ != 0) timeline.add(start_, time, static_cast<std::uint32_t>(number_), number_);
  number_ = 0;
}

OutlineMaker::OutlineMaker(const Recording& recording)
    : most_kept_(std::min(most_kept_events, recording.element_count() / elements_of_kept_event)) {
  outline_.ended.emplace();
}

void OutlineMaker::take(const ElementWalk& walk) {
  const Element& element = walk.element();
  if (is_ended_event(element.code)) return take_event({element.record->fe, walk.period()});
  if (element.code == GZD_RECORDING) take_recording(element);
  if (element.opens_trial) trials_.begin(outline_.trials, element.trial, time_of(element));
  if (element.closes_trial) trials_.end(outline_.trials, time_of(element));
}

void OutlineMaker::take_event(const EyeEvent& event) {
  const auto type = static_cast<std::uint8_t>(event.type);
  outline_.events[event.side].add(event.start, event.end, type, type + 1);
  if (event.type == EventType::blink) outline_.blinks[event.side].add(event.start, event.end);
  if (outline_.ended && outline_.ended->size() == most_kept_) outline_.ended.reset();
  if (outline_.ended) outline_.ended->push_back(event);
}

void OutlineMaker::take_recording(const Element& element) {
  if (element.record->rec.state == GZD_BLOCK_END)
    return blocks_.end(outline_.blocks, time_of(element));
  outline_.announced |= element.record->rec.sflags;
  blocks_.begin(outline_.blocks, element.block, time_of(element));
}

Outline OutlineMaker::finish() {
  blocks_.end(outline_.blocks, Timeline::latest);
  trials_.end(outline_.trials, Timeline::latest);
  outline_.blocks.finish();
  outline_.trials.finish();
  for (Timeline& events : outline_.events) events.finish();
  for (BlinkList& blinks : outline_.blinks) blinks.finish();
  return std::move(outline_);
}

Outline make_outline(Recording& recording) {
  OutlineMaker maker(recording);
  ElementWalk walk(recording, want_ended_events);
  while (walk.next()) maker.take(walk);
  return maker.finish();
}

}  // namespace gzdtables
