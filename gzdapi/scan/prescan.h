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
  UINT64 largestIndex = UINT64{4} << 30;  // bytes; a larger one is refused
  const char* debugFileName = nullptr;    // trace to this file, or null
};

// Scans the stream from its position on. `state` comes out as the last record left it. Outside
// fail-safe mode a read error throws GZDException, logged first; an index that is too large does
// always.
void preScan(InputStream& file, StreamState& state, const ScanOptions& options, Index& index);

}  // namespace gzd

#endif
