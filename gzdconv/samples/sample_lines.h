// One line for each sample.
#ifndef GZDCONV_SAMPLE_LINES_H
#define GZDCONV_SAMPLE_LINES_H

#include "gzd.h"

namespace gzdconv {

// Forgets the columns chosen for earlier samples. Due at the start of each file and at each
// recording record, together with options.current_eye = -1.
void begin_sample_block();

// Prints the line of a sample of `block`, before the first one of a file the header as well. The
// sample's resolution is completed on the way. Returns 0, or 1 when samples are not asked for.
int write_sample(GZDFILE* handle, const RECORDINGS& block, FSAMPLE& sample);

}  // namespace gzdconv

#endif
