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
  bool hasBlocks = false;          // chains of blocks follow
  bool hasWordForMissing = false;  // a pupil size of -32768 is missing, not negative
  byte timeLength = 0;
  byte eyesWithSize = 0;
  byte pupilSizes = 0;
  byte input = 0;
  byte headData = 0;
  byte end = 0;  // of the fixed part, head data left out
};

// The longest fixed part: time, positions of three kinds for two eyes, resolution, sizes, three
// words, head data.
constexpr std::size_t LONGEST_FIXED_PART = 4 + 3 * 8 + 4 + 4 + 3 * 2 + 1 + 8 * 2;
constexpr int MAX_HEAD_WORDS = 8;

// Moves over a sample record and decodes only what the scan needs. `layout` is that of the record
// before and is made anew when the tag changes. State and errors as above.
SampleGlance glance_at_sample(InputStream& in, StreamState& state, UINT16 tag,
                              GlanceLayout& layout);

// The same for a record of the same tag as the one before, without blocks, whose `start` is known
// to have LONGEST_FIXED_PART bytes behind it, and that follows one at `previousTime`. Returns its
// length.
inline std::size_t glance_at_fixed_part(const byte* start, UINT32 previousTime,
                                        const GlanceLayout& layout, SampleGlance& glance) {
  glance.time = layout.timeLength == 1 ? previousTime + *start : load_be32(start);
  glance.flags = layout.tag;
  glance.hasNegativePupil = false;
  for (int eye = 0; eye < layout.eyesWithSize; ++eye) {
    const INT16 size = load_be16s(start + layout.pupilSizes + 2 * eye);
    glance.hasNegativePupil |= size < 0 && !(layout.hasWordForMissing && size == INT16_MIN);
  }
  glance.input = layout.input != 0 ? load_be16(start + layout.input) : UINT16{NOT_RECORDED_WORD};
  if (layout.headData == 0) {
    glance.htype = static_cast<INT16>(NOT_RECORDED_WORD);
    return layout.end;
  }
  glance.htype = start[layout.headData];
  const int words = (glance.htype & 15) < MAX_HEAD_WORDS ? glance.htype & 15 : MAX_HEAD_WORDS;
  return layout.end + 2 * static_cast<std::size_t>(words);
}

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
