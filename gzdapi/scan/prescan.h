// Walks the record stream once and builds the index.
#ifndef GZDAPI_PRESCAN_H
#define GZDAPI_PRESCAN_H

#include "index/index.h"
#include "record/stream_state.h"
#include "stream/MVIO.h"

namespace gzd {

struct ScanOptions {
  bool failsafe = false;        // read errors end the scan instead of throwing
  bool fixConsistency = false;  // fill gaps, mend fixations, report periods
  bool loadEvents = true;
  bool loadSamples = true;
  const char* debugFileName = nullptr;  // trace to this file, or null
};

// Scans the stream from its position on. `state` comes out as the last record left it. Outside
// fail-safe mode a read error throws GZDException, logged first.
void preScan(InputStream& file, StreamState& state, const ScanOptions& options, Index& index);

}  // namespace gzd

#endif
