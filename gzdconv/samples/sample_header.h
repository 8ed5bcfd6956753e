// The header of sample lines: labels of the columns, and legends of their flag characters.
#ifndef GZDCONV_SAMPLE_HEADER_H
#define GZDCONV_SAMPLE_HEADER_H

#include "gzd_data.h"
#include "run_state.h"

namespace gzdconv {

// Prints the header for samples like this one.
void print_sample_header(const RunState& state, const RECORDINGS& block, const FSAMPLE& sample);

}  // namespace gzdconv

#endif
