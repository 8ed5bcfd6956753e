// Finds the recording entries on either side of an entry.
#include "read/stretches.h"

#include <algorithm>
#include <vector>

namespace gzd {

const Stretch& Stretches::find(UINT32 itemIndex) {
  const std::vector<UINT32>& boundaries = index_.boundaries;
  const auto next = std::upper_bound(boundaries.begin(), boundaries.end(), itemIndex);
  newest_.end = next == boundaries.end() ? index_.size() : *next;
  newest_.begin = next == boundaries.begin() ? 0 : *(next - 1);
  newest_.block = nullptr;
  if (next == boundaries.begin()) return newest_;
  const GZDItem opening = index_.gzdItemList[*(next - 1)];
  if (opening.isRecordingStart()) newest_.block = opening.getRecording();
  return newest_;
}

}  // namespace gzd
