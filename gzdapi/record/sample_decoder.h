// Sample records: bytes and state in, a sample out.
#ifndef GZDAPI_SAMPLE_DECODER_H
#define GZDAPI_SAMPLE_DECODER_H

#include "gzd_data.h"
#include "record/sample_blocks.h"
#include "record/sample_layout.h"
#include "record/stream_state.h"
#include "stream/MVIO.h"

namespace gzd {

// Decodes the sample whose tag word is `tag` from the stream's position into `sample`. The time is
// `expectedTime` when that is not 0, else as recorded, from state.curr_time on; curr_time takes it.
// Velocities are preset to NOT_RECORDED; pupil sizes that the record does not hold stay as they
// are. Throws GZDException when the stream ends inside the record.
void decode_sample(InputStream& in, StreamState& state, UINT16 tag, UINT32 expectedTime,
                   FSAMPLE& sample);

// Moves over a sample record and decodes only what the scan needs. `layout` is that of the record
// before and is made anew when the tag changes. State and errors as above.
SampleGlance glance_at_sample(InputStream& in, StreamState& state, UINT16 tag,
                              SampleLayout& layout);

// The blocks of the record that was read last, whose body stands at `position`, as far as they may
// be those of the next one as well.
BlockChain blocks_of_record(const InputStream& in, INT64 position, const SampleLayout& layout);

// Presets every field that a record with this tag does not hold. decode_sample begins with it; a
// record that is decoded into a sample preset for the same tag need not repeat it.
void preset_sample(UINT16 tag, FSAMPLE& sample);

// decode_sample without presets: `sample` was preset for the tag of `layout`, which is that of the
// parameters in force, and has since only been decoded into.
void decode_into_preset_sample(InputStream& in, StreamState& state, const SampleLayout& layout,
                               UINT32 expectedTime, FSAMPLE& sample);

// A sample that is not in the file, modelled on a recorded one with this tag (null for none): of
// the kinds of position and the eyes that the tag announces, values are missing; pupil sizes too,
// or not recorded where the model's is negative, as raw data have it.
void make_dummy_sample(UINT16 tag, const FSAMPLE* model, FSAMPLE& sample);

}  // namespace gzd

#endif
