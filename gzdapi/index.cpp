#include "index.h"

#include <algorithm>

const std::vector<UINT32>& Index::landmarks() const {
  if (landmarksKnown) return landmarkPlaces;
  landmarkPlaces.clear();
  gzdItemList.visitLongEntries(0, size(), [this](std::size_t place) {
    if (!gzdItemList.isSampleAt(place)) landmarkPlaces.push_back(static_cast<UINT32>(place));
  });
  landmarksKnown = true;
  return landmarkPlaces;
}

void Index::orderChanged(std::size_t first, std::size_t last) {
  if (!landmarksKnown) return;
  // There are as many as before.
  auto landmark = std::lower_bound(landmarkPlaces.begin(), landmarkPlaces.end(), first);
  gzdItemList.visitLongEntries(first, last, [&](std::size_t place) {
    if (!gzdItemList.isSampleAt(place)) *landmark++ = static_cast<UINT32>(place);
  });
}
