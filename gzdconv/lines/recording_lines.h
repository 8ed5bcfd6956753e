// The lines that begin and end a recording block, and the choice of its sample type.
#ifndef GZDCONV_RECORDING_LINES_H
#define GZDCONV_RECORDING_LINES_H

#include "gzd.h"

namespace gzdconv {

// Prints the lines of a block's start or its END line. Returns 1.
int print_recording(GZDFILE* handle, const RECORDINGS& record);
int print_start(const RECORDINGS& record, GZDFILE* handle);
int print_end(const RECORDINGS& record);

// The position type (GZD_POSITION_) for samples that hold `sflags`, nearest to the preferred one.
int select_sample_type(unsigned sflags);

// "PUPIL", "HREF" or "GAZE", which stands for every other code.
const char* parse_type(int code);

// Whether column headers can be told before the first line.
int canHeaderDeterminedForEvents();
int canHeaderDeterminedForSamples();

}  // namespace gzdconv

#endif
