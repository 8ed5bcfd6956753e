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
  ItemList::Rebuild marked(index.gzdItemList);
  std::array<bool, 2> inside{};
  std::size_t taken = 0;
  const auto takeUpTo = [&](std::size_t place) {
    marked.take(taken, place, inside[GZD_LEFT_EYE], inside[GZD_RIGHT_EYE]);
    taken = place;
  };
  for (const Landmark landmark : index.landmarks()) {
    const GZDItem item = index.gzdItemList[landmark];
    std::array<bool, 2> now = inside;
    if (item.isRecording()) now = {};
    if (item.getItemType() == GZD_START_BLINK || item.getItemType() == GZD_END_BLINK) {
      now[static_cast<std::size_t>(item.getEye())] = item.isStartEvent();
    }
    if (now == inside) continue;
    takeUpTo(landmark.place);
    inside = now;
  }
  if (taken == 0 && inside == std::array<bool, 2>{}) return;
  takeUpTo(index.size());
  marked.finish();
}

}  // namespace gzd
