// Steps, and the numbers of blocks and trials.
#include "element_walk.h"

#include <algorithm>
#include <utility>

#include "trial_rule.h"

namespace gzdtables {

namespace {

std::int64_t whole_period(float rate) {
  constexpr double ms_per_second = 1000.0;
  constexpr double highest = 1e9;
  return rate > 0.0F ? static_cast<std::int64_t>(std::min(ms_per_second / rate, highest)) : 0;
}

}  // namespace

const char* text_of(const FEVENT& message) {
  if (message.message == nullptr || message.message->len == 0) return nullptr;
  const char* const text = &message.message->c;
  return *text == '\0' ? nullptr : text;
}

ElementWalk::ElementWalk(Recording& recording, unsigned wanted)
    : recording_(recording),
      walk_(recording.begin_walk()),
      handle_(recording.handle()),
      wanted_(wanted),
      by_messages_(recording.options().trials.start.has_value()) {}

bool ElementWalk::is_shown(int code) const {
  if (code == GZD_SAMPLE) return (wanted_ & want_samples) != 0;
  if (code == GZD_RECORDING) return true;
  if (code == GZD_MESSAGE) return (wanted_ & want_messages) != 0 || by_messages_;
  if (code == GZD_BUTTON || code == GZD_INPUT) return (wanted_ & want_inputs) != 0;
  return is_ended_event(code) && (wanted_ & want_ended_events) != 0;
}

void ElementWalk::require_turn() const {
  if (!recording_.is_walking(walk_))
    throw std::logic_error("the recording is being read by another reader");
}

bool ElementWalk::next() {
  require_turn();
  if (has_ended_) leave_element();
  do {
    element_.code = step();
    if (element_.code == GZD_END_OF_DATA) return false;
  } while (!is_shown(element_.code));
  element_.record = gzd_get_float_data(handle_);
  if (element_.record == nullptr) throw_unreadable();
  if (element_.code != GZD_SAMPLE) take_mark();
  return true;
}

// The code of the next element. Samples that nobody wants are stepped over.
int ElementWalk::step() {
  if (following_ != nothing) return std::exchange(following_, nothing);
  if ((wanted_ & want_samples) == 0) samples_passed_ += gzd_skip_samples(handle_, nullptr);
  return gzd_get_next_data(handle_);
}

void ElementWalk::throw_unreadable() {
  throw ReadError("an element could not be read again");
}

// What the element makes of blocks and trials.
void ElementWalk::take_mark() {
  if (element_.code == GZD_RECORDING)
    take_recording(element_.record->rec);
  else if (element_.code == GZD_MESSAGE && by_messages_)
    take_message(element_.record->fe);
  has_ended_ = element_.opens_trial || element_.closes_trial || leaves_block_;
}

// What ended with the element before ends behind it.
void ElementWalk::leave_element() {
  has_ended_ = false;
  if (leaves_block_) in_block_ = leaves_block_ = false;
  if (!in_block_) element_.block = 0;
  if (element_.closes_trial) element_.trial = 0;
  element_.opens_trial = element_.closes_trial = false;
}

void ElementWalk::take_recording(const RECORDINGS& record) {
  if (record.state == GZD_BLOCK_END) {
    leaves_block_ = in_block_;
    element_.closes_trial = in_block_ && !by_messages_;
    return;
  }
  block_ = record;
  in_block_ = true;
  period_ = whole_period(record.sample_rate);
  element_.block = ++blocks_;
  if (!by_messages_) open_trial();
}

void ElementWalk::take_message(const FEVENT& message) {
  const char* const text = text_of(message);
  if (text == nullptr) return;
  const TrialMark mark = mark_of(recording_.options().trials, text);
  if (mark == TrialMark::start) open_trial();
  if (mark == TrialMark::end) element_.closes_trial = element_.trial != 0;
}

void ElementWalk::open_trial() {
  element_.trial = ++trials_;
  element_.opens_trial = true;
}

bool ElementWalk::is_filled() const {
  return gzd_get_element_origin(handle_) == GZD_ORIGIN_GAP;
}

bool ElementWalk::is_from_log() const {
  return gzd_get_element_origin(handle_) == GZD_ORIGIN_LOG;
}

}  // namespace gzdtables
