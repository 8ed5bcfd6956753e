// An event record is a chain of one-byte field codes, each followed by its value, up to a code 0.
// What the values mean depends on the type: records that start a block carry scaling and rate in
// fields of their own. After the chain the times are completed, then each type makes its own use of
// what was read. Nearly every event is an eye event laid out as the one before of its type: its
// values are read by that pattern.
#include "record/event_decoder.h"

#include "base/log.h"
#include "record/event_effects.h"
#include "record/event_fields.h"

namespace gzd {

namespace {

bool starts_block(int type) {
  return type == GZD_START_SAMPLES || type == GZD_START_EVENTS;
}

// ---- message text -------------------------------------------------------------------------------

using E = FEVENT;

// In the order of the message.
constexpr float E::*head_pose_members[][3] = {
    {&E::headInSpaceX_start, &E::headInSpaceX_end, &E::headInSpaceX_avg},
    {&E::headInSpaceY_start, &E::headInSpaceY_end, &E::headInSpaceY_avg},
    {&E::eyeInHeadX_start, &E::eyeInHeadX_end, &E::eyeInHeadX_avg},
    {&E::eyeInHeadY_start, &E::eyeInHeadY_end, &E::eyeInHeadY_avg},
    {&E::headRotationX_start, &E::headRotationX_end, &E::headRotationX_avg},
    {&E::headRotationY_start, &E::headRotationY_end, &E::headRotationY_avg},
    {&E::headRotationZ_start, &E::headRotationZ_end, &E::headRotationZ_avg},
    {&E::headPositionX_start, &E::headPositionX_end, &E::headPositionX_avg},
    {&E::headPositionY_start, &E::headPositionY_end, &E::headPositionY_avg},
    {&E::headPositionZ_start, &E::headPositionZ_end, &E::headPositionZ_avg},
    {&E::genx, &E::gstx, &E::gavx},
    {&E::geny, &E::gsty, &E::gavy},
};

void read_head_pose(LString source, FEVENT& e) {
  for (const auto& members : head_pose_members)
    for (float E::*const member : members) e.*member = source.getFloat();
}

// Returns false for a length that no record can have.
bool read_message(InputStream& in, EventRecord& record) {
  const int length = in.getWord();
  if (length < 0 || length > message_record_capacity) return false;
  record.text.clear();
  record.text.len = static_cast<INT16>(length);
  in.getData(record.text.text.data(), length);

  FEVENT& e = record.event;
  const byte* bytes = reinterpret_cast<const byte*>(record.text.text.data());
  const bool isBinary = length > 1 && bytes[0] == 0;
  e.message = isBinary ? nullptr : record.text.asLString();
  if (isBinary && length == head_pose_length && bytes[1] == head_pose_size_byte &&
      bytes[2] == head_pose_kind_byte) {
    read_head_pose(LString(bytes + head_pose_prefix, head_pose_length - head_pose_prefix), e);
    e.read |= EVT_HEAD_POSE;
  }
  return true;
}

// ---- fields -------------------------------------------------------------------------------------

float scaled(INT16 stored, float prescale) {
  if (stored == stored_missing) return MISSING_DATA;
  const float value = static_cast<float>(stored);
  return prescale >= smallest_prescale ? value / prescale : value;
}

float read_value(InputStream& in, ValueScale scale, const DecodingParameters& parameters) {
  const INT16 stored = in.getWord();
  switch (scale) {
    case ValueScale::Gaze:
      return scaled(stored, parameters.gaze_prescale);
    case ValueScale::Velocity:
      return scaled(stored, parameters.velocity_prescale);
    case ValueScale::Plain:
      return scaled(stored, 1.0f);
    default:
      return static_cast<float>(stored);
  }
}

void read_values(InputStream& in, EventRecord& record, const FieldFacts& field) {
  for (std::size_t i = 0; i < field.words; ++i) {
    const float value = read_value(in, field.scale, record.state.parameters);
    record.event.*field.values[i] = value;
    if (field.also[i] != nullptr) record.event.*field.also[i] = value;
  }
}

// Records that start a block keep settings in some of the fields. Returns false for any other.
bool read_setting(InputStream& in, EventRecord& record, int code) {
  DecodingParameters& parameters = record.state.parameters;
  const auto next = [&in] { return static_cast<float>(in.getWord()); };
  switch (code) {
    case FIELD_END_RESOLUTION:
      record.event.eupd_x = next();
      record.event.eupd_y = next();
      return true;
    case FIELD_BUTTONS:
      parameters.pupil_prescale = next();
      record.event.buttons = static_cast<UINT16>(static_cast<int>(parameters.pupil_prescale));
      record.hasPupilPrescale = true;
      return true;
    case FIELD_PEAK_VELOCITY:
      parameters.head_prescale = next();
      record.hasHeadPrescale = true;
      return true;
    default:
      return false;
  }
}

// Reads what follows the code of a field that is no message.
void read_field(InputStream& in, EventRecord& record, const FieldFacts& field) {
  FEVENT& e = record.event;
  switch (field.code) {
    case FIELD_START_TIME:
      e.sttime = static_cast<UINT32>(in.getInt());
      break;
    case FIELD_END_TIME:
      e.entime = static_cast<UINT32>(in.getInt());
      break;
    case FIELD_INPUT:
      e.input = static_cast<UINT16>(in.getWord());
      break;
    case FIELD_BUTTONS:
      e.buttons = static_cast<UINT16>(in.getWord());
      break;
    case FIELD_FLAGS:
      e.flags = static_cast<UINT16>(in.getWord());
      break;
    default:
      read_values(in, record, field);
  }
}

void tell_unknown_field(StreamState& state, int code) {
  if (state.reportsUnknownFields) print_notice("ERROR: Do not know how to handle %d\n", code);
  state.unknown_field = code;
}

// Reads the chain. Returns false for a message that cannot be.
bool read_fields(InputStream& in, EventRecord& record) {
  FEVENT& e = record.event;
  while (const int code = in.getByte()) {
    const FieldFacts& field = field_facts[static_cast<std::size_t>(code)];
    if (code == FIELD_MESSAGE) {
      if (!read_message(in, record)) return false;
    } else if (field.length == 0) {
      tell_unknown_field(record.state, code);
    } else {
      const bool isSpecial = record.startsBlock && code == FIELD_PEAK_VELOCITY;
      if (!isSpecial) e.read = static_cast<UINT16>(e.read | field.readBits);
      const bool isSetting = record.startsBlock && read_setting(in, record, code);
      if (!isSetting) read_field(in, record, field);
    }
  }
  return true;
}

// ---- events -------------------------------------------------------------------------------------

void read_tag(UINT16 tag, FEVENT& e) {
  const int high = tag >> 8;
  e.type = static_cast<INT16>(high & tag_type_mask);
  e.eye = (high & tag_eye_mask) == tag_eye_right ? GZD_RIGHT_EYE : GZD_LEFT_EYE;
  e.parsedby = tag & tag_parsed_by_mask;
}

// The time that a record lacks is the other one.
void take_end_as_start(FEVENT& e) {
  if ((e.read & (EVT_START_TIME | EVT_END_TIME)) == EVT_END_TIME) e.sttime = e.entime;
}
void take_start_as_end(FEVENT& e) {
  if ((e.read & EVT_END_TIME) == 0) e.entime = e.sttime;
}

// Of an event record that is being read.
void forget_findings(StreamState& state) {
  state.unknown_field = 0;
  state.rate_assumed = false;
}

// The pattern of the eye event at the stream's position; null for none, and for any other event.
const EventPattern* pattern_at(InputStream& in, StreamState& state, int type) {
  if (!is_eye_event(type)) return nullptr;
  return state.patterns.of(type, in.peek(0), in.available());
}

}  // namespace

bool glance_at_eye_event(InputStream& in, StreamState& state, UINT16 tag, FEVENT& event) {
  const EventPattern* const pattern = pattern_at(in, state, tag >> 8 & tag_type_mask);
  if (pattern == nullptr) return false;
  forget_findings(state);
  read_tag(tag, event);
  event.sttime = event.entime = 0;
  event.message = nullptr;
  pattern->readTimes(in.peek(0), event);
  in.take(pattern->length());
  take_end_as_start(event);
  take_start_as_end(event);
  return true;
}

int decode_event(InputStream& in, StreamState& state, UINT16 tag, MessageText& text,
                 FEVENT& event) {
  clear_event(event);
  forget_findings(state);
  read_tag(tag, event);
  EventRecord record{state, text, event, starts_block(event.type)};
  if (const EventPattern* const pattern = pattern_at(in, state, event.type)) {
    pattern->readTimes(in.peek(0), event);
    pattern->readValues(in.peek(0), state.parameters, event);
    in.take(pattern->length());
    take_end_as_start(event);
  } else {
    if (!read_fields(in, record)) return -1;
    take_end_as_start(event);
    use_by_type(record);
  }
  take_start_as_end(event);
  return 0;
}

}  // namespace gzd
