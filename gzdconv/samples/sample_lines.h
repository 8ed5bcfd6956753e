// One line for each sample.
#ifndef GZDCONV_SAMPLE_LINES_H
#define GZDCONV_SAMPLE_LINES_H

#include "gzd.h"
#include "run_state.h"

namespace gzdconv {

// Forgets what earlier samples were, and the columns chosen for them. Due at the start of each file
// and at each recording record.
void begin_sample_block(BlockState& block);

// Prints the line of a sample of `block`, before the first one of a file the header as well. The
// sample's resolution is completed on the way. Returns 0, or 1 when samples are not asked for.
int write_sample(RunState& state, const RECORDINGS& block, FSAMPLE& sample);

}  // namespace gzdconv

#endif
