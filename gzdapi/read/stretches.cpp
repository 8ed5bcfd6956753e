#include "read/stretches.h"

#include <algorithm>
#include <vector>

namespace gzd {

const Stretch& Stretches::find(UINT32 itemIndex) {
  const std::vector<UINT32>& boundaries = index.boundaries;
  const auto next = std::upper_bound(boundaries.begin(), boundaries.end(), itemIndex);
  newest.end = next == boundaries.end() ? index.size() : *next;
  newest.begin = next == boundaries.begin() ? 0 : *(next - 1);
  newest.block = nullptr;
  if (next == boundaries.begin()) return newest;
  const GZDItem opening = index.gzdItemList[*(next - 1)];
  if (opening.isRecordingStart()) newest.block = opening.getRecording();
  return newest;
}

}  // namespace gzd
