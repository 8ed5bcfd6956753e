// Sample records: bytes and state in, a sample out.
#ifndef GZDAPI_SAMPLE_DECODER_H
#define GZDAPI_SAMPLE_DECODER_H

#include "gzd_data.h"
#include "record/sample_blocks.h"
#include "record/sample_layout.h"
#include "record/stream_state.h"
#include "stream/MVIO.h"

namespace gzd {

// Presets every field that a record with this tag does not hold, but for pupil sizes, which stay as
// they are. Velocities become NOT_RECORDED. A sample that was preset for the same tag and since
// then only been decoded into need not be preset again.
void preset_sample(UINT16 tag, FSAMPLE& sample);

// Decodes the record at the stream's position into a sample preset for the tag of `layout`, which
// is that of the parameters in force. The time is `expectedTime` when that is not 0, else as
// recorded, from state.curr_time on; curr_time takes it. Throws GZDException when the stream ends
// inside the record.
void decode_into_preset_sample(InputStream& in, StreamState& state, const SampleLayout& layout,
                               UINT32 expectedTime, FSAMPLE& sample);

// Moves over a sample record and decodes only what the scan needs. `layout` is that of the record
// before and is made anew when the tag changes. State and errors as above.
SampleGlance glance_at_sample(InputStream& in, StreamState& state, UINT16 tag,
                              SampleLayout& layout);

// The blocks of the record that was read last, whose body stands at `position`, as far as they may
// be those of the next one as well.
BlockChain blocks_of_record(const InputStream& in, INT64 position, const SampleLayout& layout);

// A sample that is not in the file, modelled on a recorded one with this tag (null for none): of
// the kinds of position and the eyes that the tag announces, values are missing; pupil sizes too,
// or not recorded where the model's is negative, as raw data have it.
void make_dummy_sample(UINT16 tag, const FSAMPLE* model, FSAMPLE& sample);

}  // namespace gzd

#endif
