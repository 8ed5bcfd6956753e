// A walk over the elements of a recording that knows the block and the trial of each.
#ifndef GZDTABLES_ELEMENT_WALK_H
#define GZDTABLES_ELEMENT_WALK_H

#include <cstdint>

#include "recording.h"

namespace gzdtables {

// Kinds of elements that a reader wants to see the records of, or-ed.
enum Wanted : unsigned {
  want_samples = 1,
  want_ended_events = 2,
  want_messages = 4,
  want_inputs = 8,
};

struct Element {
  int code = 0;
  const ALLF_DATA* record = nullptr;  // until the next step
  std::int32_t block = 0;             // 0: outside blocks
  std::int32_t trial = 0;             // 0: outside trials
  bool opens_trial = false;           // it belongs to the trial that it opens,
  bool closes_trial = false;          // and to the one that it closes
};

// Whether the code is that of an eye event that ended.
[[nodiscard]] inline bool is_ended_event(int code) {
  return code == GZD_END_FIXATION || code == GZD_END_SACCADE || code == GZD_END_BLINK;
}

// The eye of an eye event: 0 left, 1 right.
[[nodiscard]] inline std::size_t side_of(const FEVENT& event) {
  return event.eye == GZD_LEFT_EYE ? 0 : 1;
}

// Time (ms) of a boundary, a message or the start of an event.
[[nodiscard]] inline std::uint32_t time_of(const Element& element) {
  return element.code == GZD_RECORDING ? element.record->rec.time : element.record->fe.sttime;
}

// Time of a sample (ms), half-milliseconds included.
[[nodiscard]] inline double time_of(const FSAMPLE& sample) {
  return static_cast<double>(sample.time) + ((sample.flags & SMP_HALF_MS) != 0 ? 0.5 : 0.0);
}

// The text of a message up to its first NUL; null without one, or when it is empty.
[[nodiscard]] const char* text_of(const FEVENT& message);

class ElementWalk {
 public:
  ElementWalk(Recording& recording, unsigned wanted);

  // Steps to the next element that is wanted, or that begins or ends a block. False at the end.
  // Throws ReadError when a record cannot be read again.
  [[nodiscard]] bool next();
  // Throws std::logic_error when another walk was begun since.
  void require_turn() const;

  // From a sample to the next element when that is one, too, quickly: of the element only `record`
  // changes. Else false, and next() goes on as if this had not been asked.
  [[nodiscard]] bool next_sample() {
    following_ = gzd_get_next_data(handle_);
    if (following_ != GZD_SAMPLE) return false;
    following_ = nothing;
    element_.record = gzd_get_float_data(handle_);
    if (element_.record == nullptr) throw_unreadable();
    return true;
  }

  [[nodiscard]] const Element& element() const { return element_; }
  // The start record of the block that the walk is in, or null.
  [[nodiscard]] const RECORDINGS* block() const { return in_block_ ? &block_ : nullptr; }
  // The GZD_BLOCK_ eyes of that block, GZD_BLOCK_BOTH outside blocks.
  [[nodiscard]] unsigned eyes() const { return in_block_ ? block_.eye : GZD_BLOCK_BOTH; }
  // The whole milliseconds of a sample period of that block, 0 outside blocks.
  [[nodiscard]] std::int64_t period() const { return in_block_ ? period_ : 0; }
  // Whether the sample announced last was filled in by the library. One with a pupil size was not,
  // so most need no question.
  [[nodiscard]] bool is_filled(const FSAMPLE& sample) const {
    const auto is_size = [](float size) { return size >= 0.0F && size < MISSING_DATA; };
    const bool has_size =
        (sample.flags & SMP_PUPIL_SIZE) != 0 && (is_size(sample.pa[0]) || is_size(sample.pa[1]));
    return !has_size && is_filled();
  }
  // How many samples that are not wanted were stepped over at once.
  [[nodiscard]] std::uint32_t samples_passed() const { return samples_passed_; }
  // Whether the message announced last stands in the experiment's log.
  [[nodiscard]] bool is_from_log() const;

 private:
  [[nodiscard]] bool is_filled() const;
  static constexpr int nothing = -1;

  [[nodiscard]] int step();
  [[noreturn]] static void throw_unreadable();
  [[nodiscard]] bool is_shown(int code) const;
  void leave_element();
  void take_mark();
  void take_recording(const RECORDINGS& record);
  void take_message(const FEVENT& message);
  void open_trial();

  Recording& recording_;
  std::uint64_t walk_;
  GZDFILE* handle_;
  unsigned wanted_;
  bool by_messages_;
  Element element_;
  int following_ = nothing;  // code of an element that next_sample() came upon
  RECORDINGS block_{};
  bool in_block_ = false, leaves_block_ = false;
  bool has_ended_ = false;  // a block or a trial ended, or began, with the element before
  std::int32_t blocks_ = 0, trials_ = 0;
  std::uint32_t samples_passed_ = 0;
  std::int64_t period_ = 0;
};

}  // namespace gzdtables

#endif
