// The lines of eye events, messages, buttons and inputs.
#ifndef GZDCONV_EVENT_LINES_H
#define GZDCONV_EVENT_LINES_H

#include "gzd_data.h"
#include "run_state.h"

namespace gzdconv {

// Prints the line of one event; `period` (ms, 0 when unknown) is the time between samples. Returns
// 0, also for records that have no line, or 1 when an option left the event out.
int print_event(RunState& state, const FEVENT& event, int period);

// True when the options let a message have a line.
bool has_message_line(const FEVENT& event);

// True for the codes of starts.
bool is_start_event(const FEVENT& event);

}  // namespace gzdconv

#endif
