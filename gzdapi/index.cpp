#include "index.h"

const std::vector<UINT32>& Index::landmarks() const {
  if (landmarksKnown) return landmarkPlaces;
  landmarkPlaces.clear();
  for (UINT32 place = 0; place < size(); ++place) {
    if (!gzdItemList.isSampleAt(place)) landmarkPlaces.push_back(place);
  }
  landmarksKnown = true;
  return landmarkPlaces;
}
