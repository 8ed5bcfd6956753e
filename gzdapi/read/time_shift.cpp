// Whether the times of a record move, and the move.
#include "read/time_shift.h"

#include <algorithm>

#include "base/log.h"
#include "record/EData.h"

namespace gzd {

namespace {

// Below this no time is shifted.
constexpr UINT32 large_time = 0x3FFFFFFF;

UINT32 first_time_of(const FEVENT& event) {
  return event.time != 0 ? std::min(event.sttime, event.time) : event.sttime;
}

}  // namespace

// Returns whether the record at hand is to be shifted.
bool TimeShift::decide(UINT32 first, UINT32 maxTime, const char* announcement) {
  if (firsttime_ != 0) return true;
  firsttime_ = first;
  disableTimeFix_ = maxTime < large_time;
  if (!disableTimeFix_) print_log("%s", announcement);
  return !disableTimeFix_;
}

void TimeShift::shift(ALLF_DATA& d, int type, UINT32 minTime, UINT32 maxTime) {
  if (type == GZD_SAMPLE) {
    if (decide(d.fs.time, maxTime, "Enabling time offset fixup\n")) d.fs.time -= minTime;
  } else if (type == GZD_RECORDING) {
    // Boundaries are shifted by the first time handed out, not by the smallest.
    if (decide(d.rec.time, maxTime, "Enabling time offset fixup\n")) d.rec.time -= firsttime_;
  } else if (is_known_event_type(type)) {
    if (!decide(first_time_of(d.fe), maxTime, "Enabling time offset fixup \n")) return;
    d.fe.time -= minTime;
    d.fe.sttime -= minTime;
    d.fe.entime -= minTime;
  } else {
    print_log("Unknown type %d\n", type);
  }
}

}  // namespace gzd
