// The format of event records: the one-byte codes in front of the values, where the values go, and
// what is special in the words after them.
#ifndef GZDAPI_EVENT_FIELDS_H
#define GZDAPI_EVENT_FIELDS_H

#include <array>
#include <cstddef>

#include "gzd_data.h"

namespace gzd {

// Records that start a block put settings into some fields; these are named in brackets.
enum EventField : byte {
  FIELD_END = 0,  // of the record
  FIELD_START_TIME = 33,
  FIELD_START_RAW = 40,
  FIELD_START_HREF = 41,
  FIELD_START_GAZE = 42,
  FIELD_START_RESOLUTION = 43,
  FIELD_START_PUPIL = 48,  // [gaze prescale]
  FIELD_START_VELOCITY = 51,
  FIELD_END_TIME = 65,  // [rate, 16.16 fixed point]
  FIELD_END_RAW = 72,
  FIELD_END_HREF = 73,
  FIELD_END_GAZE = 74,
  FIELD_END_RESOLUTION = 75,  // [packed filter and tracking mode, kind of pupil size]
  FIELD_END_PUPIL = 81,       // [velocity prescale]
  FIELD_END_VELOCITY = 83,
  FIELD_INPUT = 85,    // [flags word of events]
  FIELD_BUTTONS = 86,  // [pupil prescale]
  FIELD_MESSAGE = 94,
  FIELD_AVERAGE_RAW = 104,
  FIELD_AVERAGE_HREF = 105,
  FIELD_AVERAGE_GAZE = 106,
  FIELD_AVERAGE_PUPIL = 114,  // [divisor of samples]
  FIELD_AVERAGE_VELOCITY = 115,
  FIELD_PEAK_VELOCITY = 147,  // [head prescale]
  FIELD_FLAGS = 180,          // [SMP_ bits of samples, flags word of events]
};

// What the words of a field are divided by. All but raw ones can be missing.
enum class ValueScale : byte { Raw, Plain, Gaze, Velocity };
constexpr std::size_t value_scales = 4;

struct FieldFacts {
  using Value = float FEVENT::*;

  EventField code = FIELD_END;
  UINT16 readBits = 0;  // what `read` tells of it
  byte length = 0;      // of what follows the code; 0 when it varies, and of codes not known
  byte words = 0;       // that are numbers for the members `values`
  ValueScale scale = ValueScale::Raw;
  std::array<Value, 2> values{};
  std::array<Value, 2> also{};  // these take over the same numbers, first x, then y
};

// Of each code.
extern const std::array<FieldFacts, 256> field_facts;

// The tag of an event: type and eye in the high byte, the kind of its positions in the low one.
constexpr int tag_type_mask = 0x3F;
constexpr int tag_eye_mask = 0xC0;
constexpr int tag_eye_right = 0x40;
constexpr int tag_parsed_by_mask = 0xFE;

// Codes of starts and ends of blinks, saccades and fixations; those of ends are even.
constexpr bool is_eye_event(int type) {
  return type >= GZD_START_BLINK && type <= GZD_END_FIXATION;
}
constexpr bool is_eye_event_end(int type) {
  return is_eye_event(type) && type % 2 == 0;
}

// A binary message that holds a head pose: its length and its second and third byte.
constexpr int head_pose_length = 147;
constexpr byte head_pose_size_byte = 146;
constexpr byte head_pose_kind_byte = 2;
constexpr std::size_t head_pose_prefix = 3;

}  // namespace gzd

#endif
