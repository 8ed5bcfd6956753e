// A sample record decoded from scratch: what every quicker way to decode one has to equal.
#ifndef TESTS_SUPPORT_WHOLE_SAMPLE_H
#define TESTS_SUPPORT_WHOLE_SAMPLE_H

#include "record/sample_decoder.h"

inline void decode_sample(gzd::InputStream& in, gzd::StreamState& state, UINT16 tag,
                          FSAMPLE& sample) {
  gzd::preset_sample(tag, sample);
  gzd::decode_into_preset_sample(in, state, gzd::layout_of(tag, state), 0, sample);
}

#endif
