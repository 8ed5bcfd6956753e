// What decoding a record needs to know beyond its bytes.
#ifndef GZDAPI_STREAM_STATE_H
#define GZDAPI_STREAM_STATE_H

#include "gzd_data.h"
#include "record/event_pattern.h"

namespace gzd {

constexpr float default_rate = 250.0f;  // Hz

// What a stored word holds for a value that is not there.
constexpr INT16 stored_missing = -32768;

// Values with a smaller prescale are stored unscaled.
constexpr float smallest_prescale = 0.1f;

// Divisors of stored integers, set by the start records of a block.
struct DecodingParameters {
  float gaze_prescale = 1.0f;
  float velocity_prescale = 10.0f;
  float pupil_prescale = 1.0f;
  float head_prescale = 1.0f;

  bool operator==(const DecodingParameters&) const = default;
};

struct StreamState {
  DecodingParameters parameters;

  // From the preamble and the open options.
  INT16 revision = 0;
  INT16 ovilo_revision = GZD_TRACKER_OTHER;
  bool enableMsgTimestampOffsetTranslation = false;
  bool reportsUnknownFields = true;  // an event's field with an unknown code goes to the console

  // The pending tag word: read, but its record is not yet decoded. 0 when there is none.
  UINT16 last_tag = 0;

  // Running state of the stream.
  UINT32 curr_time = 0;  // ms, of the newest sample
  float sam_per_sec = default_rate;
  INT16 sample_divisor = 1;
  UINT16 sam_data = 0;  // union of the flags of the block's samples
  UINT16 evt_flags = 0;
  UINT16 evt_data = 0;
  INT16 crmode = 0;
  INT16 ffilter = 0;
  INT16 lfilter = 0;

  // Of the event decoded last: the code of a field that is not known, 0 for none; whether a rate
  // was taken that the record does not name.
  int unknown_field = 0;
  bool rate_assumed = false;

  EventPatterns patterns;
};

}  // namespace gzd

#endif
