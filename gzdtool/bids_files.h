// The four files of one eye in one run.
#ifndef GZDTOOL_BIDS_FILES_H
#define GZDTOOL_BIDS_FILES_H

#include <string>
#include <vector>

#include "bids_runs.h"
#include "recording_json.h"

namespace gzdtool {

// Where the files of a run go, and what their sidecars need beside the recording.
struct BidsTarget {
  BidsRun run;
  double next_start = 0;           // ms, where the next run begins
  std::string stem;                // up to "_recording-"
  Json lab;                        // keys of the laboratory for the sidecar
  double start_time = 0;           // s
  double events_from = run.start;  // ms, where its events and messages begin
};

// Writes ..._recording-eyeN_physio and _physioevents, .tsv.gz and .json, of one eye, 0 left, 1
// right. Returns how many samples found no free row. Throws ReadError and WriteError.
[[nodiscard]] std::int64_t write_bids_eye(gzdtables::Recording& recording, const BidsTarget& target,
                                          std::size_t eye);

}  // namespace gzdtool

#endif
