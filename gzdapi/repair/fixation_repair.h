// Fixations whose recorded start lies past their end.
#ifndef GZDAPI_FIXATION_REPAIR_H
#define GZDAPI_FIXATION_REPAIR_H

#include <vector>

#include "index/index.h"

namespace gzd {

// A suspicious fixation, times in ms.
struct SuspiciousFixation {
  UINT64 start;           // as its start record has it
  UINT64 startOfEnd;      // as its end record has it
  UINT64 recordingStart;  // of the block it lies in, 0 without one
};

class FixationRepair {
 public:
  // Follows the fixation records while the file is scanned, and reports those that end before they
  // start.
  void follow(const FEVENT& event, Index& index);

  // Gives the starts of those fixations, in file order still, an earlier stamp.
  void repair(Index& index) const;

 private:
  static constexpr std::size_t max_rows = 100;

  // What becomes of the start at `position` whose end has `endStamp`. Returns whether it is mended.
  bool repairStart(GZDItem& start, UINT64 position, UINT64 endStamp) const;

  UINT32 lastStart_[2] = {0, 0};  // ms, by eye
  UINT32 latestStart_[2] = {0, 0};
  bool anyEndBeforeStart_ = false;  // of any fixation of the same eye before it
  std::vector<SuspiciousFixation> suspicious_;
};

}  // namespace gzd

#endif
