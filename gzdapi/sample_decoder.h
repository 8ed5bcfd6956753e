// Sample records: bytes and state in, a sample out.
#ifndef GZDAPI_SAMPLE_DECODER_H
#define GZDAPI_SAMPLE_DECODER_H

#include "MVIO.h"
#include "gzd_data.h"
#include "stream_state.h"

// Decodes the sample whose tag word is `tag` from the stream's position into `sample`. The time is
// `expectedTime` when that is not 0, else as recorded, from state.curr_time on; curr_time takes it.
// Velocities are preset to NOT_RECORDED; pupil sizes that the record does not hold stay as they
// are. Throws GZDException when the stream ends inside the record.
void decode_sample(InputStream& in, StreamState& state, UINT16 tag, UINT32 expectedTime,
                   FSAMPLE& sample);

// What the scan needs of a sample.
struct SampleGlance {
  UINT32 time = 0;
  UINT16 flags = 0;
  UINT16 input = NOT_RECORDED_WORD;
  INT16 htype = static_cast<INT16>(NOT_RECORDED_WORD);
  bool hasNegativePupil = false;  // a recorded pupil size of a present eye lies below 0
};

// Where in the fixed part of a record with one tag the scan finds what it needs; offsets from the
// record's body, 0 for a field that the record does not hold.
struct GlanceLayout {
  UINT16 tag = 0;
  bool hasBlocks = false;  // chains of blocks follow
  byte timeLength = 0;
  byte eyesWithSize = 0;
  byte pupilSizes = 0;
  byte input = 0;
  byte headData = 0;
  byte end = 0;  // of the fixed part, head data left out
};

// Moves over a sample record and decodes only what the scan needs. `layout` is that of the record
// before and is made anew when the tag changes. State and errors as above.
SampleGlance glance_at_sample(InputStream& in, StreamState& state, UINT16 tag,
                              GlanceLayout& layout);

// Presets every field that a record with this tag does not hold. decode_sample begins with it; a
// record that is decoded into a sample preset for the same tag need not repeat it.
void preset_sample(UINT16 tag, FSAMPLE& sample);

// decode_sample without presets: `sample` was preset for `tag` and has since only been decoded
// into.
void decode_into_preset_sample(InputStream& in, StreamState& state, UINT16 tag, UINT32 expectedTime,
                               FSAMPLE& sample);

// A sample that is not in the file, modelled on a recorded one with this tag (null for none): of
// the kinds of position and the eyes that the tag announces, values are missing; pupil sizes too,
// or not recorded where the model's is negative, as raw data have it.
void make_dummy_sample(UINT16 tag, const FSAMPLE* model, FSAMPLE& sample);

#endif
