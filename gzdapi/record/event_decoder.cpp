// An event record is a chain of one-byte field codes, each followed by its value, up to a code 0.
// What the values mean depends on the type: records that start a block carry scaling and rate in
// fields of their own. After the chain the times are completed, then each type makes its own use of
// what was read.
#include "record/event_decoder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <string>

#include "base/log.h"
#include "record/event_fields.h"

namespace gzd {

namespace {

constexpr double rate_unit = 1.0 / 65536.0;  // the rate is stored as 16.16 fixed point
constexpr float lasting_rate = 500.0f;       // it alone goes on into blocks that name none

constexpr int longest_eye_field = 5;  // with its code

// Limits of a time offset at the start of a message.
constexpr int max_offset_blanks = 20;
constexpr int max_offset_digits = 7;
constexpr int max_offset = 999;

// One decoding: the record's parts at hand, and which prescales it brought.
struct EventRecord {
  InputStream& in;
  StreamState& state;
  MessageText& text;
  FEVENT& event;
  bool startsBlock;
  bool hasPupilPrescale = false;
  bool hasHeadPrescale = false;

  float raw() { return static_cast<float>(in.getWord()); }

  float rawOrMissing() { return scaled(1.0f); }
  float gaze() { return scaled(state.parameters.gaze_prescale); }
  float velocity() { return scaled(state.parameters.velocity_prescale); }

 private:
  float scaled(float prescale) {
    const INT16 stored = in.getWord();
    if (stored == stored_missing) return MISSING_DATA;
    const float value = static_cast<float>(stored);
    return prescale >= smallest_prescale ? value / prescale : value;
  }
};

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
bool read_message(EventRecord& record) {
  const int length = record.in.getWord();
  if (length < 0 || length > message_record_capacity) return false;
  record.text.clear();
  record.text.len = static_cast<INT16>(length);
  record.in.getData(record.text.text.data(), length);

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

using ReadField = bool (*)(EventRecord&);

template <UINT32 FEVENT::*Time>
bool read_time(EventRecord& record) {
  record.event.*Time = static_cast<UINT32>(record.in.getInt());
  return true;
}

template <UINT16 FEVENT::*Word>
bool read_word(EventRecord& record) {
  record.event.*Word = static_cast<UINT16>(record.in.getWord());
  return true;
}

template <float (EventRecord::*Value)(), float FEVENT::*Member>
bool read_one(EventRecord& record) {
  record.event.*Member = (record.*Value)();
  return true;
}

template <float (EventRecord::*Value)(), float FEVENT::*X, float FEVENT::*Y>
bool read_pair(EventRecord& record) {
  record.event.*X = (record.*Value)();
  record.event.*Y = (record.*Value)();
  return true;
}

// A raw position goes to the members of gaze, and to one or two of head-referenced ones as well.
template <float FEVENT::*X, float FEVENT::*Y, float FEVENT::*AlsoX, float FEVENT::*AlsoY>
bool read_raw_pair(EventRecord& record) {
  FEVENT& e = record.event;
  e.*X = e.*AlsoX = record.raw();
  e.*Y = e.*AlsoY = record.raw();
  return true;
}

bool read_resolution_at_end(EventRecord& record) {
  // Records that start a block keep packed settings here, not a resolution.
  const auto value = [&] { return record.startsBlock ? record.raw() : record.gaze(); };
  record.event.eupd_x = value();
  record.event.eupd_y = value();
  return true;
}

bool read_buttons(EventRecord& record) {
  const INT16 word = record.in.getWord();
  record.event.buttons = static_cast<UINT16>(word);
  if (!record.startsBlock) return true;
  record.state.parameters.pupil_prescale = static_cast<float>(word);
  record.hasPupilPrescale = true;
  return true;
}

bool read_peak_velocity(EventRecord& record) {
  if (record.startsBlock) {
    record.state.parameters.head_prescale = record.raw();
    record.hasHeadPrescale = true;
  } else {
    record.event.pvel = record.velocity();
    record.event.read |= EVT_AVERAGE_VALUES | EVT_VELOCITY;
  }
  return true;
}

struct Field {
  EventField code;
  ReadField read;
  UINT16 readBits;  // what `read` tells of it
  byte length;      // of the value; 0 when it varies
};

constexpr auto as_raw = &EventRecord::raw;
constexpr auto as_href = &EventRecord::rawOrMissing;
constexpr auto as_gaze = &EventRecord::gaze;
constexpr auto as_velocity = &EventRecord::velocity;

// In raw positions of start and end y replaces x in hstx and henx, and hsty and heny are not
// touched; that of the mean goes to hstx, a member of the start.
constexpr Field field_table[] = {
    {FIELD_START_TIME, read_time<&E::sttime>, EVT_START_TIME, 4},
    {FIELD_START_RAW, read_raw_pair<&E::gstx, &E::gsty, &E::hstx, &E::hstx>,
     EVT_PUPIL_POS | EVT_START_POSITION, 4},
    {FIELD_START_HREF, read_pair<as_href, &E::hstx, &E::hsty>, EVT_HREF | EVT_START_POSITION, 4},
    {FIELD_START_GAZE, read_pair<as_gaze, &E::gstx, &E::gsty>, EVT_GAZE | EVT_START_POSITION, 4},
    {FIELD_START_RESOLUTION, read_pair<as_gaze, &E::supd_x, &E::supd_y>,
     EVT_RESOLUTION | EVT_START_TIME, 4},
    {FIELD_START_PUPIL, read_one<as_raw, &E::sta>, EVT_PUPIL_SIZE | EVT_START_TIME, 2},
    {FIELD_START_VELOCITY, read_one<as_velocity, &E::svel>, EVT_VELOCITY | EVT_START_TIME, 2},
    {FIELD_END_TIME, read_time<&E::entime>, EVT_END_TIME, 4},
    {FIELD_END_RAW, read_raw_pair<&E::genx, &E::geny, &E::henx, &E::henx>,
     EVT_PUPIL_POS | EVT_END_POSITION, 4},
    {FIELD_END_HREF, read_pair<as_href, &E::henx, &E::heny>, EVT_HREF | EVT_END_POSITION, 4},
    {FIELD_END_GAZE, read_pair<as_gaze, &E::genx, &E::geny>, EVT_GAZE | EVT_END_POSITION, 4},
    {FIELD_END_RESOLUTION, read_resolution_at_end, EVT_RESOLUTION | EVT_END_VALUES, 4},
    {FIELD_END_PUPIL, read_one<as_raw, &E::ena>, EVT_PUPIL_SIZE | EVT_END_VALUES, 2},
    {FIELD_END_VELOCITY, read_one<as_velocity, &E::evel>, EVT_VELOCITY | EVT_END_VALUES, 2},
    {FIELD_INPUT, read_word<&E::input>, 0, 2},
    {FIELD_BUTTONS, read_buttons, 0, 2},
    {FIELD_MESSAGE, read_message, 0, 0},
    {FIELD_AVERAGE_RAW, read_raw_pair<&E::gavx, &E::gavy, &E::havx, &E::hstx>,
     EVT_PUPIL_POS | EVT_AVERAGE_POSITION, 4},
    {FIELD_AVERAGE_HREF, read_pair<as_href, &E::havx, &E::havy>, EVT_HREF | EVT_AVERAGE_POSITION,
     4},
    {FIELD_AVERAGE_GAZE, read_pair<as_gaze, &E::gavx, &E::gavy>, EVT_GAZE | EVT_AVERAGE_POSITION,
     4},
    {FIELD_AVERAGE_PUPIL, read_one<as_raw, &E::ava>, EVT_PUPIL_SIZE | EVT_AVERAGE_VALUES, 2},
    {FIELD_AVERAGE_VELOCITY, read_one<as_velocity, &E::avel>, EVT_VELOCITY | EVT_AVERAGE_VALUES, 2},
    {FIELD_PEAK_VELOCITY, read_peak_velocity, 0, 2},
    {FIELD_FLAGS, read_word<&E::flags>, EVT_FLAGS, 2},
};

// The row of each code; null for a code that is not known.
constexpr std::array<const Field*, 256> make_fields_by_code() {
  std::array<const Field*, 256> rows{};
  for (const Field& field : field_table) rows[field.code] = &field;
  return rows;
}
constexpr std::array<const Field*, 256> fields_by_code = make_fields_by_code();

// Reads the value after a field code. Returns false for a message that cannot be.
bool read_field(EventRecord& record, int code) {
  const Field* const field = fields_by_code[static_cast<std::size_t>(code)];
  if (field == nullptr) {
    if (record.state.reportsUnknownFields) {
      print_notice("ERROR: Do not know how to handle %d\n", code);
    }
    record.state.unknown_field = code;
    return true;
  }
  record.event.read = static_cast<UINT16>(record.event.read | field->readBits);
  return field->read(record);
}

// ---- what the types make of it ------------------------------------------------------------------

bool is_known_rate(float rate) {
  return rate == 250.0f || rate == 500.0f || rate == 1000.0f || rate == 2000.0f;
}

void use_packed_settings(StreamState& state, float settings) {
  const int packed = static_cast<int>(settings);
  state.lfilter = static_cast<INT16>(packed & 0x0F);
  state.ffilter = static_cast<INT16>((packed >> 4) & 0x0F);
  state.crmode = static_cast<INT16>((packed >> 8) & 0xFF);
}

void use_rate(StreamState& state, FEVENT& e) {
  // Revision 0 names none of these: they are the same in all of its recordings.
  if (state.revision == 0) {
    constexpr INT16 standard_filter = 1;
    constexpr INT16 mode_with_reflection = 9;
    state.sam_per_sec = e.avel = default_rate;
    state.ffilter = state.lfilter = standard_filter;
    state.crmode = mode_with_reflection;
    return;
  }
  if (e.entime != 0) {
    e.avel = static_cast<float>(e.entime * rate_unit);
    state.rate_assumed = !is_known_rate(e.avel);
    state.sam_per_sec = state.rate_assumed ? default_rate : e.avel;
  } else if (state.sam_per_sec != lasting_rate) {
    if (state.sam_per_sec > lasting_rate) {
      print_log("Possible miss handle! sample per second is %f resetting to 250 \n",
                static_cast<double>(state.sam_per_sec));
    }
    state.rate_assumed = true;
    state.sam_per_sec = default_rate;
  }
  use_packed_settings(state, e.eupd_x);
}

void use_prescales(EventRecord& record) {
  DecodingParameters& parameters = record.state.parameters;
  FEVENT& e = record.event;
  parameters.gaze_prescale = e.sta;
  parameters.velocity_prescale = e.ena;
  if (!record.hasPupilPrescale) {
    e.buttons = 1;
    parameters.pupil_prescale = 1.0f;
  }
  if (!record.hasHeadPrescale) e.pvel = parameters.head_prescale = 1.0f;
}

void start_samples(EventRecord& record) {
  FEVENT& e = record.event;
  record.state.sam_data = e.flags;
  use_prescales(record);
  const INT16 divisor = static_cast<INT16>(e.ava);
  record.state.sample_divisor = divisor != 0 ? divisor : INT16{1};
  use_rate(record.state, e);
  e.entime = e.sttime;
}

void start_events(EventRecord& record) {
  record.state.evt_flags = record.event.input;
  record.state.evt_data = record.event.flags;
  use_prescales(record);
  use_rate(record.state, record.event);
}

// A number at the start of a message is a time offset: it is taken from the time, and it and the
// blanks before it from the text. The stored length shrinks by the number alone.
void apply_message_offset(MessageText& text, FEVENT& e) {
  const char* const begin = text.text.data();
  const char* number = begin;
  while (number - begin < max_offset_blanks && *number == ' ') ++number;
  const char* behind = number;
  while (behind - number < max_offset_digits && *behind != ' ' && *behind != '\0') ++behind;

  const int offset = std::atoi(std::string(number, behind).c_str());
  const int length = static_cast<int>(behind - number);
  if (offset == 0 || std::abs(offset) > max_offset || length >= text.len - 1) return;
  e.sttime -= static_cast<UINT32>(offset);
  const auto moved = std::copy(behind, begin + text.text.size(), text.text.begin());
  std::fill(moved, text.text.end(), '\0');
  text.len = static_cast<INT16>(text.len - length);
}

void use_by_type(EventRecord& record) {
  switch (record.event.type) {
    case GZD_START_SAMPLES:
      start_samples(record);
      break;
    case GZD_START_EVENTS:
      start_events(record);
      break;
    case GZD_END_SAMPLES:
      record.state.sam_data = 0;
      break;
    case GZD_END_EVENTS:
      record.state.evt_flags = 0;
      break;
    case GZD_MESSAGE:
      if (record.state.enableMsgTimestampOffsetTranslation && record.event.message != nullptr) {
        apply_message_offset(record.text, record.event);
      }
      break;
    default:
      break;
  }
}

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

}  // namespace

bool glance_at_eye_event(InputStream& in, StreamState& state, UINT16 tag, FEVENT& event) {
  if (!is_eye_event(tag >> 8 & tag_type_mask)) return false;
  const byte* const begin = in.peek(0);
  const byte* const end = begin + in.available();
  const byte* at = begin;
  read_tag(tag, event);
  event.sttime = event.entime = event.read = 0;
  while (end - at > longest_eye_field && *at != FIELD_END) {
    const Field* const field = fields_by_code[*at++];
    if (field == nullptr || field->length == 0) return false;
    if (field->code == FIELD_START_TIME) event.sttime = load_be32(at);
    if (field->code == FIELD_END_TIME) event.entime = load_be32(at);
    event.read = static_cast<UINT16>(event.read | field->readBits);
    at += field->length;
  }
  if (end - at <= longest_eye_field) return false;
  in.take(static_cast<std::size_t>(at + 1 - begin));
  state.unknown_field = 0;
  state.rate_assumed = false;
  event.message = nullptr;
  take_end_as_start(event);
  take_start_as_end(event);
  return true;
}

int decode_event(InputStream& in, StreamState& state, UINT16 tag, MessageText& text,
                 FEVENT& event) {
  event = FEVENT{};
  state.unknown_field = 0;
  state.rate_assumed = false;
  read_tag(tag, event);
  EventRecord record{in, state, text, event, starts_block(event.type)};
  while (const int code = in.getByte()) {
    if (!read_field(record, code)) return -1;
  }
  take_end_as_start(event);
  use_by_type(record);
  take_start_as_end(event);
  return 0;
}

}  // namespace gzd
