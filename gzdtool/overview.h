// What a page tells of a whole recording, as JSON.
#ifndef GZDTOOL_OVERVIEW_H
#define GZDTOOL_OVERVIEW_H

#include "recording_json.h"
#include "view/trace.h"

namespace gzdtool {

// Beside the facts: `blocks`, each with start, end, rate, eyes, samples, filled.
[[nodiscard]] Json facts_for_page(const gzdtables::Facts& facts);

// What holds for all samples: first and last time, which curves there are, the loss by eye in equal
// stretches of time, and where samples were filled in or are missing.
[[nodiscard]] Json summary_of(const Trace& trace);

// The points of a window, each curve's lowest and highest values rounded to tenths.
[[nodiscard]] Json json_of(const TraceWindow& window);

}  // namespace gzdtool

#endif
