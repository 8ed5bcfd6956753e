// An event record is a chain of one-byte field codes, each followed by its value, up to a code 0.
// What the values mean depends on the type: records that start a block carry scaling and rate in
// fields of their own. After the chain the times are completed, then each type makes its own use of
// what was read.
#include "record/event_decoder.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string>

#include "base/log.h"

namespace gzd {

namespace {

constexpr INT16 STORED_MISSING = -32768;
constexpr double SMALLEST_PRESCALE = 0.1;
constexpr double RATE_UNIT = 1.0 / 65536.0;  // the rate is stored as 16.16 fixed point
constexpr float DEFAULT_RATE = 250.0f;

// A binary message that holds a head pose: its length and its second and third byte.
constexpr int HEAD_POSE_LENGTH = 147;
constexpr byte HEAD_POSE_SIZE_BYTE = 146;
constexpr byte HEAD_POSE_KIND_BYTE = 2;
constexpr std::size_t HEAD_POSE_PREFIX = 3;

// Limits of a time offset at the start of a message.
constexpr int MAX_OFFSET_BLANKS = 20;
constexpr int MAX_OFFSET_DIGITS = 7;
constexpr int MAX_OFFSET = 999;

constexpr int EYE_MASK = 0xC0;
constexpr int EYE_RIGHT = 0x40;

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
    if (stored == STORED_MISSING) return MISSING_DATA;
    const float value = static_cast<float>(stored);
    return static_cast<double>(prescale) > SMALLEST_PRESCALE ? value / prescale : value;
  }
};

bool starts_block(int type) {
  return type == GZD_START_SAMPLES || type == GZD_START_EVENTS;
}

// ---- message text
// ----------------------------------------------------------------------------------

void read_head_pose(LString source, FEVENT& e) {
  for (float* value : {&e.headInSpaceX_start,
                       &e.headInSpaceX_end,
                       &e.headInSpaceX_avg,
                       &e.headInSpaceY_start,
                       &e.headInSpaceY_end,
                       &e.headInSpaceY_avg,
                       &e.eyeInHeadX_start,
                       &e.eyeInHeadX_end,
                       &e.eyeInHeadX_avg,
                       &e.eyeInHeadY_start,
                       &e.eyeInHeadY_end,
                       &e.eyeInHeadY_avg,
                       &e.headRotationX_start,
                       &e.headRotationX_end,
                       &e.headRotationX_avg,
                       &e.headRotationY_start,
                       &e.headRotationY_end,
                       &e.headRotationY_avg,
                       &e.headRotationZ_start,
                       &e.headRotationZ_end,
                       &e.headRotationZ_avg,
                       &e.headPositionX_start,
                       &e.headPositionX_end,
                       &e.headPositionX_avg,
                       &e.headPositionY_start,
                       &e.headPositionY_end,
                       &e.headPositionY_avg,
                       &e.headPositionZ_start,
                       &e.headPositionZ_end,
                       &e.headPositionZ_avg,
                       &e.genx,
                       &e.gstx,
                       &e.gavx,
                       &e.geny,
                       &e.gsty,
                       &e.gavy}) {
    *value = source.getFloat();
  }
}

// Returns false for a length that no record can have.
bool read_message(EventRecord& record) {
  const int length = record.in.getWord();
  if (length < 0 || length > MESSAGE_RECORD_CAPACITY) return false;
  record.text.clear();
  record.text.len = static_cast<INT16>(length);
  record.in.getData(record.text.text.data(), length);

  FEVENT& e = record.event;
  const byte* bytes = reinterpret_cast<const byte*>(record.text.text.data());
  const bool isBinary = length > 1 && bytes[0] == 0;
  e.message = isBinary ? nullptr : record.text.asLString();
  if (isBinary && length == HEAD_POSE_LENGTH && bytes[1] == HEAD_POSE_SIZE_BYTE &&
      bytes[2] == HEAD_POSE_KIND_BYTE) {
    read_head_pose(LString(bytes + HEAD_POSE_PREFIX, HEAD_POSE_LENGTH - HEAD_POSE_PREFIX), e);
    e.read |= EVT_HEAD_POSE;
  }
  return true;
}

// ---- fields
// ------------------------------------------------------------------------------------------

void read_resolution_at_end(EventRecord& record) {
  // Records that start a block keep packed settings here, not a resolution.
  const auto value = [&] { return record.startsBlock ? record.raw() : record.gaze(); };
  record.event.eupd_x = value();
  record.event.eupd_y = value();
}

void read_buttons(EventRecord& record) {
  const INT16 word = record.in.getWord();
  record.event.buttons = static_cast<UINT16>(word);
  if (!record.startsBlock) return;
  record.state.parameters.pupil_prescale = static_cast<float>(word);
  record.hasPupilPrescale = true;
}

void read_peak_velocity(EventRecord& record) {
  if (record.startsBlock) {
    record.state.parameters.head_prescale = record.raw();
    record.hasHeadPrescale = true;
  } else {
    record.event.pvel = record.velocity();
    record.event.read |= 0x0104;
  }
}

// Reads the value behind a field code. Returns false for a message that cannot be.
bool read_field(EventRecord& record, int code) {
  FEVENT& e = record.event;
  const auto mark = [&e](int bits) { e.read = static_cast<UINT16>(e.read | bits); };
  switch (code) {
    case 33:
      e.sttime = static_cast<UINT32>(record.in.getInt());
      mark(0x0001);
      break;
    case 40:  // y replaces x in hstx; hsty is not touched
      e.gstx = e.hstx = record.raw();
      e.gsty = e.hstx = record.raw();
      mark(0x0408);
      break;
    case 41:
      e.hstx = record.rawOrMissing();
      e.hsty = record.rawOrMissing();
      mark(0x0808);
      break;
    case 42:
      e.gstx = record.gaze();
      e.gsty = record.gaze();
      mark(0x1008);
      break;
    case 43:
      e.supd_x = record.gaze();
      e.supd_y = record.gaze();
      mark(0x0201);
      break;
    case 48:
      e.sta = record.raw();
      mark(0x0081);
      break;
    case 51:
      e.svel = record.velocity();
      mark(0x0101);
      break;
    case 65:
      e.entime = static_cast<UINT32>(record.in.getInt());
      mark(0x0040);
      break;
    case 72:  // y replaces x in henx; heny is not touched
      e.genx = e.henx = record.raw();
      e.geny = e.henx = record.raw();
      mark(0x0410);
      break;
    case 73:
      e.henx = record.rawOrMissing();
      e.heny = record.rawOrMissing();
      mark(0x0810);
      break;
    case 74:
      e.genx = record.gaze();
      e.geny = record.gaze();
      mark(0x1010);
      break;
    case 75:
      read_resolution_at_end(record);
      mark(0x0202);
      break;
    case 81:
      e.ena = record.raw();
      mark(0x0082);
      break;
    case 83:
      e.evel = record.velocity();
      mark(0x0102);
      break;
    case 85:
      e.input = static_cast<UINT16>(record.in.getWord());
      break;
    case 86:
      read_buttons(record);
      break;
    case 94:
      return read_message(record);
    case 104:  // y goes to hstx, a field of the start; havy is not touched
      e.gavx = e.havx = record.raw();
      e.gavy = e.hstx = record.raw();
      mark(0x0420);
      break;
    case 105:
      e.havx = record.rawOrMissing();
      e.havy = record.rawOrMissing();
      mark(0x0820);
      break;
    case 106:
      e.gavx = record.gaze();
      e.gavy = record.gaze();
      mark(0x1020);
      break;
    case 114:
      e.ava = record.raw();
      mark(0x0084);
      break;
    case 115:
      e.avel = record.velocity();
      mark(0x0104);
      break;
    case 147:
      read_peak_velocity(record);
      break;
    case 180:
      e.flags = static_cast<UINT16>(record.in.getWord());
      mark(0x2000);
      break;
    default:
      if (record.state.reportsUnknownFields) {
        print_notice("ERROR: Do not know how to handle %d\n", code);
      }
      record.state.unknown_field = code;
      break;
  }
  return true;
}

// ---- what the types make of it
// --------------------------------------------------------------------------

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
  if (state.revision == 0) {
    state.sam_per_sec = e.avel = DEFAULT_RATE;
    state.ffilter = 1;
    state.crmode = 9;
    state.lfilter = 1;
    return;
  }
  if (e.entime != 0) {
    e.avel = static_cast<float>(e.entime * RATE_UNIT);
    state.rate_assumed = !is_known_rate(e.avel);
    state.sam_per_sec = state.rate_assumed ? DEFAULT_RATE : e.avel;
  } else if (state.sam_per_sec != 500.0f) {
    if (state.sam_per_sec > 500.0f) {
      print_log("Possible miss handle! sample per second is %f resetting to 250 \n",
                static_cast<double>(state.sam_per_sec));
    }
    state.rate_assumed = true;
    state.sam_per_sec = DEFAULT_RATE;
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
  while (number - begin < MAX_OFFSET_BLANKS && *number == ' ') ++number;
  const char* behind = number;
  while (behind - number < MAX_OFFSET_DIGITS && *behind != ' ' && *behind != '\0') ++behind;

  const int offset = std::atoi(std::string(number, behind).c_str());
  const int length = static_cast<int>(behind - number);
  if (offset == 0 || std::abs(offset) > MAX_OFFSET || length >= text.len - 1) return;
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
  e.type = static_cast<INT16>(high & 0x3F);
  e.eye = (high & EYE_MASK) == EYE_RIGHT ? GZD_RIGHT_EYE : GZD_LEFT_EYE;
  e.parsedby = tag & 0xFE;
}

}  // namespace

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
  const bool hasStart = (event.read & EVT_START_TIME) != 0;
  const bool hasEnd = (event.read & EVT_END_TIME) != 0;
  if (!hasStart && hasEnd) event.sttime = event.entime;
  use_by_type(record);
  if (!hasEnd) event.entime = event.sttime;
  return 0;
}

}  // namespace gzd
