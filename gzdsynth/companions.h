// Files that belong to a recording: the experiment's message log and tables of video frames.
#ifndef GZDSYNTH_COMPANIONS_H
#define GZDSYNTH_COMPANIONS_H

#include <string>
#include <vector>

#include "session.h"

namespace gzdsynth {

// The text of a message log with a clock of its own, a sync line for each trial, and "Quit logger"
// at its end. The recording's own sync messages are those of Session with a message log.
std::string message_log_text(const std::vector<TrialSpan>& trials);

// A frame table (".ett") of one trial: a frame each 33 ms, little-endian.
Bytes frame_table_bytes(const TrialSpan& trial);

// Name of the table of trial `index` (from 0) of a recording whose name ends in four characters
// of extension.
std::string frame_table_name(const std::string& recording, std::size_t index);

}  // namespace gzdsynth

#endif
