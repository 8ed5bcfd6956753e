// The conversion of one recording.
#ifndef GZDCONV_CONVERT_H
#define GZDCONV_CONVERT_H

#include <string>

#include "run_state.h"

namespace gzdconv {

// Converts the recording `name` into the ASC file named after `output_name`, or after itself when
// that is null; `state` is that of the run. Returns 0, or -1 when the recording or its output file
// could not be opened or written, which has been printed. Throws FatalError of frame_lines.h.
int process_gzd_file(RunState& state, const std::string& name, const std::string* output_name);

}  // namespace gzdconv

#endif
