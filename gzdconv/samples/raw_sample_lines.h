// Lines of raw samples: the camera's own measurements instead of calibrated positions.
#ifndef GZDCONV_RAW_SAMPLE_LINES_H
#define GZDCONV_RAW_SAMPLE_LINES_H

#include "gzd.h"
#include "run_state.h"

namespace gzdconv {

// True when a present eye of the sample has a negative pupil size: its fields hold camera data.
bool is_raw_sample(const RECORDINGS& block, const FSAMPLE& sample);

// Prints a raw sample. The first of a block fixes the block's columns and prints their
// labels.
void write_raw_sample(const RunState& state, const RECORDINGS& block, FSAMPLE& sample);

}  // namespace gzdconv

#endif
