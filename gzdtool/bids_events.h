// The events of the task of one run, which name its screen.
#ifndef GZDTOOL_BIDS_EVENTS_H
#define GZDTOOL_BIDS_EVENTS_H

#include "bids_files.h"

namespace gzdtool {

// Writes ..._events.tsv, with the recording blocks of the run, and ..._events.json, which tells of
// the screen. Where there are ones, they are the user's own and stay. Throws ReadError and
// WriteError.
void write_bids_task_events(gzdtables::Recording& recording, const BidsTarget& target);

}  // namespace gzdtool

#endif
