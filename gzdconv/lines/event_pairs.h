// The start times that starts and ends of eye events tell, and whether they agree.
#ifndef GZDCONV_EVENT_PAIRS_H
#define GZDCONV_EVENT_PAIRS_H

#include "gzd_data.h"

namespace gzdconv {

// Notes the start time of an eye event (GZD_START_BLINK to GZD_END_FIXATION).
void note_start_time(const FEVENT& event);

// Reports, in a verbose run, every pair of start and end whose start times differ, and forgets the
// complete pairs.
void check_start_times();

}  // namespace gzdconv

#endif
