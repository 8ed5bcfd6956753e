// The start record of a fixation can carry a time past the fixation's end. The end record tells
// when the fixation began: its start entry moves there, or to the start of its block when the end
// record's time lies before that.
#include "repair/fixation_repair.h"

#include <algorithm>

#include "base/log.h"

namespace gzd {

namespace {

UINT64 start_of_newest_recording(const Index& index) {
  const Recording* newest = index.newestRecording();
  if (newest != nullptr) return newest->getTime() >> 1;
  print_notice("ERROR: No start rec \n");
  return 0;
}

int as_int(UINT64 value) {
  return static_cast<int>(value);
}

void report(const char* what, UINT64 position, const GZDItem& start, UINT64 endStamp) {
  print_notice("%s: SFIX later than endfix sfix_index=%lld sfix.sttime=%lld efix.entime=%lld\n",
               what, static_cast<long long>(position),
               static_cast<long long>(start.getTimeStamp() >> 1),
               static_cast<long long>(endStamp >> 1));
}

}  // namespace

void FixationRepair::follow(const FEVENT& event, Index& index) {
  const int eye = event.eye == GZD_LEFT_EYE ? 0 : 1;
  if (event.type == GZD_START_FIXATION) {
    lastStart_[eye] = event.sttime;
    latestStart_[eye] = std::max(latestStart_[eye], event.sttime);
  }
  if (event.type != GZD_END_FIXATION) return;
  anyEndBeforeStart_ |= event.entime < latestStart_[eye];
  if (event.entime >= lastStart_[eye]) return;
  const UINT64 recordingStart = start_of_newest_recording(index);
  // The first two labels are exchanged; logs have always had them so.
  print_notice(
      "ORIGINAL SFIX time is later than end fix time sfix.sttime=%d efix.entime=%d efix.sttime=%d "
      "rec_start_time=%d\n",
      as_int(event.entime), as_int(lastStart_[eye]), as_int(event.sttime), as_int(recordingStart));
  index.findings.add({.kind = GZD_FINDING_FIXATION_ENDS_FIRST,
                      .eye = eye == GZD_LEFT_EYE ? GZD_BLOCK_LEFT : GZD_BLOCK_RIGHT,
                      .start = found_at(stamp_of_time(lastStart_[eye])),
                      .end = found_at(stamp_of_time(event.entime))});
  if (suspicious_.size() < max_rows) {
    suspicious_.push_back({lastStart_[eye], event.sttime, recordingStart});
  }
}

void FixationRepair::repair(Index& index) const {
  if (!anyEndBeforeStart_) return;
  struct Start {
    std::size_t place = 0;
    UINT64 stamp = 0;  // as recorded, also after a repair
  };
  Start starts[2];
  ItemList& items = index.gzdItemList;
  for (const Landmark mark : items.landmarks()) {
    const GZDItem item = items[mark];
    Start& start = starts[item.getEye()];
    if (item.getItemType() == GZD_START_FIXATION) {
      start = {mark.place, item.getTimeStamp()};
    } else if (item.getItemType() == GZD_END_FIXATION && item.getTimeStamp() < start.stamp) {
      items.change(start.place, [&](GZDItem& fixation) {
        const UINT64 before = fixation.getTimeStamp();
        if (!repairStart(fixation, start.place, item.getTimeStamp())) return;
        index.findings.add(retimed(fixation, before));
      });
    }
  }
  index.stampsChanged();
}

bool FixationRepair::repairStart(GZDItem& start, UINT64 position, UINT64 endStamp) const {
  const UINT64 time = start.getTimeStamp() >> 1;
  start.setFixedTimeStamp(start.getTimeStamp());
  report("FIXING", position, start, endStamp);
  const auto row = std::find_if(suspicious_.begin(), suspicious_.end(),
                                [time](const SuspiciousFixation& s) { return s.start == time; });
  if (row == suspicious_.end()) return false;
  const bool inside = row->recordingStart == 0 || row->recordingStart <= row->startOfEnd;
  start.setFixedTimeStamp(2 * (inside ? row->startOfEnd : row->recordingStart));
  report(inside ? "FIXED (A - Inside of recoding block)" : "FIXED (A - Outside of recoding block)",
         position, start, endStamp);
  return true;
}

}  // namespace gzd
