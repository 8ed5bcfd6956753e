// Starts of blocks bring scaling, rate and settings, some of them in fields that mean something
// else elsewhere; a message can bring an offset of its own time.
#include "record/event_effects.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "base/log.h"

namespace gzd {

namespace {

constexpr double rate_unit = 1.0 / 65536.0;  // the rate is stored as 16.16 fixed point
constexpr float lasting_rate = 500.0f;       // it alone goes on into blocks that name none

// Limits of a time offset at the start of a message.
constexpr int max_offset_blanks = 20;
constexpr int max_offset_digits = 7;
constexpr int max_offset = 999;

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

}  // namespace

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

}  // namespace gzd
