// The index of an open file: one entry per element, the recording boundaries, the groups of long
// messages. One plain structure; the algorithms over it stand in files of their own.
#ifndef GZDAPI_INDEX_H
#define GZDAPI_INDEX_H

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

#include "base/findings.h"
#include "index/item_list.h"
#include "record/Recording.h"
#include "record/stream_state.h"

namespace gzd {

// Where the recording has values of its inputs.
enum InputType { INPUT_EVENTS = 1, INPUT_IN_SAMPLES = 2 };

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

  UINT64 pieceCount = 0;  // in msg_item_list

  Findings findings;

  // Which windows of the list time_order found, or left, in their final order; empty when that is
  // not known.
  std::vector<bool> settledWindows;

  // The places of the recording entries, ascending; see findBoundaries().
  std::vector<UINT32> boundaries;

  UINT32 minTime = 0;  // ms, of the first record
  UINT32 maxTime = 0;  // ms, the largest
  int inputType = 0;   // InputType bits

  // The entries that are no samples, ascending.
  [[nodiscard]] ItemList::Landmarks landmarks() const { return gzdItemList.landmarks(); }
  // To be called when entries were moved, added or removed.
  void itemsChanged() { settledWindows.clear(); }
  // To be called when entries were given another stamp.
  void stampsChanged() { settledWindows.clear(); }

  [[nodiscard]] UINT32 size() const { return static_cast<UINT32>(gzdItemList.size()); }
  // Notes where the boundaries are; to be called when the list has its final order.
  void findBoundaries() {
    boundaries.clear();
    for (const Landmark mark : landmarks()) {
      if (gzdItemList[mark].isRecording()) boundaries.push_back(mark.place);
    }
  }
  // The block that the entry at `place` lies in, starts or ends; null outside blocks.
  [[nodiscard]] const Recording* blockAt(UINT32 place) const {
    const auto next = std::upper_bound(boundaries.begin(), boundaries.end(), place);
    if (next == boundaries.begin()) return nullptr;
    const GZDItem last = gzdItemList[*(next - 1)];
    if (last.isRecordingStart()) return last.getRecording();
    const bool isItsEnd = *(next - 1) == place && next - 1 != boundaries.begin();
    return isItsEnd && gzdItemList[*(next - 2)].isRecordingStart()
               ? gzdItemList[*(next - 2)].getRecording()
               : nullptr;
  }
  // Of memory that it takes, allocations included.
  [[nodiscard]] UINT64 bytes() const {
    constexpr UINT64 allocation_bytes = 16;
    constexpr UINT64 boundary_bytes = sizeof(Recording) + allocation_bytes + 2 * sizeof(void*);
    constexpr UINT64 group_bytes = 128;
    return gzdItemList.bytes() + boundary_bytes * allRecordings.size() +
           group_bytes * msg_item_list.size() + 2 * sizeof(GZDItem) * pieceCount +
           2 * sizeof(ParameterEpoch) * parameterEpochs.size();
  }
  // The newest boundary, or null.
  [[nodiscard]] Recording* newestRecording() const {
    return allRecordings.empty() ? nullptr : allRecordings.back().get();
  }
};

// What is found of one entry that has a record.
inline Finding finding_of(int kind, const GZDItem& item) {
  return {.kind = kind,
          .eye = item.getSide(),
          .detail = item.getItemType(),
          .place = item.getRecordPlace(),
          .start = found_at(item.getTimeStamp()),
          .end = found_at(item.getTimeStamp())};
}

// That of an eye event which a repair has moved away from the stamp `before`.
inline Finding retimed(const GZDItem& item, UINT64 before) {
  Finding finding = finding_of(GZD_FINDING_EVENT_RETIMED, item);
  finding.start = found_at(before);
  return finding;
}

}  // namespace gzd

#endif
