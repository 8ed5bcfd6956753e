// mergeBlinksInsideSaccade: the parser may split a blink when the pupil flashes up for some
// samples. Within a saccade of the same eye, the end of a blink and the start of the next one are
// both taken out, so that the first start and the last end remain.
//
// markSamplesInsideBlink: one state per eye, set and cleared by starts and ends of blinks.

#include "blink_repair.h"

#include <array>
#include <optional>

#include "index_edits.h"

namespace {

struct SaccadeState {
  int blinks = 0;
  std::optional<UINT32> lastEnd;  // place of the last end of blink
  bool inside = false;
  bool merged = false;
};

class BlinkMerge {
 public:
  explicit BlinkMerge(std::vector<GZDItem>& list) : items(list) {}

  void run() {
    for (UINT32 place = 0; place < items.size(); ++place) examine(place);
    edits.apply(items);
  }

 private:
  void examine(UINT32 place) {
    const GZDItem& item = items[place];
    SaccadeState& eye = eyes[static_cast<std::size_t>(item.getEye())];
    switch (item.getItemType()) {
      case GZD_RECORDING:
        eyes = {};
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
        if (eye.merged) items[place].markBlinkMerged();
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
    edits.remove(*eye.lastEnd);
    edits.remove(place);
    eye.merged = true;
    eye.lastEnd.reset();
  }

  std::vector<GZDItem>& items;
  IndexEdits edits;
  std::array<SaccadeState, 2> eyes;
};

}  // namespace

void mergeBlinksInsideSaccade(Index& index) {
  BlinkMerge(index.gzdItemList).run();
}

void markSamplesInsideBlink(Index& index) {
  std::array<bool, 2> inside{};
  for (GZDItem& item : index.gzdItemList) {
    switch (item.getItemType()) {
      case GZD_RECORDING:
        inside = {};
        break;
      case GZD_START_BLINK:
      case GZD_END_BLINK:
        inside[static_cast<std::size_t>(item.getEye())] = item.isStartEvent();
        break;
      case GZD_SAMPLE:
        if (inside[GZD_LEFT_EYE]) item.markSampleInsideBlink(GZD_LEFT_EYE);
        if (inside[GZD_RIGHT_EYE]) item.markSampleInsideBlink(GZD_RIGHT_EYE);
        break;
      default:
        break;
    }
  }
}
