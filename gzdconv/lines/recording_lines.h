// The lines that begin and end a recording block, and the choice of its sample type.
#ifndef GZDCONV_RECORDING_LINES_H
#define GZDCONV_RECORDING_LINES_H

#include "gzd.h"
#include "run_state.h"

namespace gzdconv {

// Prints the lines of a block's start or its END line. A start chooses the position types of the
// block. Returns 1.
int print_recording(RunState& state, const RECORDINGS& record);
int print_start(RunState& state, const RECORDINGS& record);
int print_end(const RECORDINGS& record);

// True when the block holds data of this eye.
bool block_has_left(const RECORDINGS& block);
bool block_has_right(const RECORDINGS& block);

// The position type (GZD_POSITION_) for samples that hold `sflags`, nearest to the preferred one.
int select_sample_type(unsigned sflags);

// "PUPIL", "HREF" or "GAZE", which stands for every other code.
const char* parse_type(int code);

// Whether column headers can be told before the first line.
int canHeaderDeterminedForEvents();
int canHeaderDeterminedForSamples();

}  // namespace gzdconv

#endif
