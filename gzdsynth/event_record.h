// One event as field codes and values in any order, and its bytes.
#ifndef GZDSYNTH_EVENT_RECORD_H
#define GZDSYNTH_EVENT_RECORD_H

#include <array>
#include <cstdint>
#include <string_view>

#include "byte_layout.h"
#include "gzd_data.h"
#include "record/event_fields.h"

namespace gzdsynth {

// The one-byte codes in front of the values of an event record.
using enum gzd::EventField;

// An event under construction. Each call appends one field; values are words as stored: gaze and
// resolution times the gaze prescale, velocities times the velocity prescale (see stored()).
class EventRecord {
 public:
  // type: 0..63. eye: GZD_LEFT_EYE or GZD_RIGHT_EYE. parsedBy: the tag's low byte, which must be
  // even (64 pupil, 128 head-referenced, 192 gaze).
  explicit EventRecord(unsigned type, int eye = GZD_LEFT_EYE,
                       unsigned parsedBy = GZD_POSITION_GAZE);

  // Any code with a word, two words or a 32-bit value.
  EventRecord& word(unsigned code, int value);
  EventRecord& pair(unsigned code, int x, int y);
  EventRecord& integer(unsigned code, std::uint32_t value);

  EventRecord& start(std::uint32_t time) { return integer(FIELD_START_TIME, time); }
  EventRecord& end(std::uint32_t time) { return integer(FIELD_END_TIME, time); }

  EventRecord& raw_start(int x, int y) { return pair(FIELD_START_RAW, x, y); }
  EventRecord& raw_end(int x, int y) { return pair(FIELD_END_RAW, x, y); }
  EventRecord& raw_average(int x, int y) { return pair(FIELD_AVERAGE_RAW, x, y); }
  EventRecord& href_start(int x, int y) { return pair(FIELD_START_HREF, x, y); }
  EventRecord& href_end(int x, int y) { return pair(FIELD_END_HREF, x, y); }
  EventRecord& href_average(int x, int y) { return pair(FIELD_AVERAGE_HREF, x, y); }
  EventRecord& gaze_start(int x, int y) { return pair(FIELD_START_GAZE, x, y); }
  EventRecord& gaze_end(int x, int y) { return pair(FIELD_END_GAZE, x, y); }
  EventRecord& gaze_average(int x, int y) { return pair(FIELD_AVERAGE_GAZE, x, y); }
  EventRecord& resolution_start(int x, int y) { return pair(FIELD_START_RESOLUTION, x, y); }
  EventRecord& resolution_end(int x, int y) { return pair(FIELD_END_RESOLUTION, x, y); }

  EventRecord& pupil_start(int size) { return word(FIELD_START_PUPIL, size); }
  EventRecord& pupil_end(int size) { return word(FIELD_END_PUPIL, size); }
  EventRecord& pupil_average(int size) { return word(FIELD_AVERAGE_PUPIL, size); }
  EventRecord& velocity_start(int value) { return word(FIELD_START_VELOCITY, value); }
  EventRecord& velocity_end(int value) { return word(FIELD_END_VELOCITY, value); }
  EventRecord& velocity_average(int value) { return word(FIELD_AVERAGE_VELOCITY, value); }
  EventRecord& velocity_peak(int value) { return word(FIELD_PEAK_VELOCITY, value); }

  EventRecord& input(int value) { return word(FIELD_INPUT, value); }
  EventRecord& buttons(int value) { return word(FIELD_BUTTONS, value); }
  EventRecord& flags(int value) { return word(FIELD_FLAGS, value); }

  // Code 94 with the text's length, or with another one.
  EventRecord& text(std::string_view text);
  EventRecord& text(std::string_view text, int statedLength);

  // Code 94 with the binary head-pose payload: 36 floats in the order of the record, which is that
  // of FEVENT from headInSpaceX_start to headPositionZ_avg, then genx, gstx, gavx, geny, gsty,
  // gavy.
  EventRecord& head_pose(const std::array<float, 36>& values);

  // Bytes as they are: unknown codes, cut fields.
  EventRecord& raw(const Bytes& bytes);

  // Leaves the closing code 0 away.
  EventRecord& unclosed();

  // The type that the record was made with.
  [[nodiscard]] unsigned type() const { return body_[0] & 0x3FU; }

  // The whole record: tag, fields, closing code.
  [[nodiscard]] Bytes bytes() const;

 private:
  Bytes body_;
  bool closed_ = true;
};

}  // namespace gzdsynth

#endif
