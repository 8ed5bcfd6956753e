#include "index.h"

const std::vector<UINT32>& Index::landmarks() const {
  if (landmarksKnown) return landmarkPlaces;
  landmarkPlaces.clear();
  gzdItemList.visitLongEntries([this](std::size_t place) {
    if (!gzdItemList.isSampleAt(place)) landmarkPlaces.push_back(static_cast<UINT32>(place));
  });
  landmarksKnown = true;
  return landmarkPlaces;
}
