// mergeBlinksInsideSaccade: the parser may split a blink when the pupil flashes up for some
// samples. Within a saccade of the same eye, the end of a blink and the start of the next one are
// both taken out, so that the first start and the last end remain.
//
// markSamplesInsideBlink: one state per eye, set and cleared by starts and ends of blinks.

#include "repair/blink_repair.h"

#include <array>
#include <optional>

#include "index/index_edits.h"

namespace gzd {

namespace {

struct SaccadeState {
  int blinks = 0;
  std::optional<UINT32> lastEnd;  // place of the last end of blink
  bool inside = false;
  bool merged = false;
};

class BlinkMerge {
 public:
  explicit BlinkMerge(Index& list) : index_(list), items_(list.gzdItemList) {}

  void run() {
    for (const Landmark mark : index_.landmarks()) examine(mark.place, items_[mark]);
    if (edits_.apply(items_)) index_.itemsChanged();
  }

 private:
  void examine(UINT32 place, const GZDItem& item) {
    SaccadeState& eye = eyes_[static_cast<std::size_t>(item.getEye())];
    switch (item.getItemType()) {
      case GZD_RECORDING:
        eyes_ = {};
        break;
      case GZD_START_SACCADE:
        eye = {};
        eye.inside = true;
        break;
      case GZD_END_SACCADE:
        eye = {};
        break;
      case GZD_START_BLINK:
        startBlink(eye, place);
        break;
      case GZD_END_BLINK:
        if (eye.merged) items_.change(place, [](GZDItem& end) { end.markBlinkMerged(); });
        eye.lastEnd = place;
        break;
      default:
        break;
    }
  }

  void startBlink(SaccadeState& eye, UINT32 place) {
    if (!eye.inside || eye.blinks == 0 || !eye.lastEnd) {
      ++eye.blinks;
      return;
    }
    Finding merged = finding_of(GZD_FINDING_BLINKS_MERGED, items_[*eye.lastEnd]);
    merged.end = found_at(items_.stampAt(place));
    index_.findings.add(merged);
    edits_.remove(*eye.lastEnd);
    edits_.remove(place);
    eye.merged = true;
    eye.lastEnd.reset();
  }

  Index& index_;
  ItemList& items_;
  IndexEdits edits_;
  std::array<SaccadeState, 2> eyes_;
};

}  // namespace

void mergeBlinksInsideSaccade(Index& index) {
  BlinkMerge(index).run();
}

void markSamplesInsideBlink(Index& index) {
  std::array<bool, 2> inside{};
  const auto mark = [&](std::size_t begin, std::size_t end) {
    index.gzdItemList.markInsideBlink(begin, end, inside[GZD_LEFT_EYE], inside[GZD_RIGHT_EYE]);
  };
  std::size_t behind = 0;  // the place after the landmark before
  for (const Landmark landmark : index.landmarks()) {
    mark(behind, landmark.place);
    behind = landmark.place + std::size_t{1};
    const GZDItem& item = index.gzdItemList[landmark];
    if (item.isRecording()) inside = {};
    if (item.getItemType() == GZD_START_BLINK || item.getItemType() == GZD_END_BLINK) {
      inside[static_cast<std::size_t>(item.getEye())] = item.isStartEvent();
    }
  }
  mark(behind, index.size());
}

}  // namespace gzd
