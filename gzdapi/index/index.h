// The index of an open file: one entry per element, the recording boundaries, the groups of long
// messages. One plain structure; the algorithms over it stand in files of their own.
#ifndef GZDAPI_INDEX_H
#define GZDAPI_INDEX_H

#include <map>
#include <memory>
#include <vector>

#include "index/item_list.h"
#include "record/Recording.h"
#include "record/stream_state.h"

namespace gzd {

// Decoding parameters and the place in the file from which they hold.
struct ParameterEpoch {
  INT64 filePos;
  DecodingParameters parameters;
};

struct Index {
  // In file order during the scan, then in time order.
  ItemList gzdItemList;
  // Every boundary that was kept, in file order.
  std::vector<std::unique_ptr<Recording>> allRecordings;
  // The further pieces of each long message, in file order, by the place of its first piece.
  std::map<INT64, std::vector<GZDItem>> msg_item_list;
  // Ascending places; the first one is 0.
  std::vector<ParameterEpoch> parameterEpochs;

  // Which windows of the list time_order found, or left, in their final order; empty when that is
  // not known.
  std::vector<bool> settledWindows;

  UINT32 minTime = 0;  // ms, of the first record
  UINT32 maxTime = 0;  // ms, the largest
  int inputType = 0;   // bit 0: input events, bit 1: input values in samples

  // The entries that are no samples, ascending.
  [[nodiscard]] const std::vector<Landmark>& landmarks() const { return gzdItemList.landmarks(); }
  // To be called when entries were moved, added or removed.
  void itemsChanged() {
    gzdItemList.changed();
    settledWindows.clear();
  }
  // To be called when entries were given another stamp.
  void stampsChanged() { settledWindows.clear(); }

  [[nodiscard]] UINT32 size() const { return static_cast<UINT32>(gzdItemList.size()); }
  // The newest boundary, or null.
  [[nodiscard]] Recording* newestRecording() const {
    return allRecordings.empty() ? nullptr : allRecordings.back().get();
  }
};

}  // namespace gzd

#endif
