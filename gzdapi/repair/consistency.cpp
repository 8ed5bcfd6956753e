// checkConsistency, over the sorted index:
// 1. Eye events that spill over the end of a block go to the boundaries; sort again.
// 2. One walk over blocks: samples outside blocks are dropped (or, where a block's end and the next
//    start share their time, the two boundaries change places); starts and ends of blinks are
//    paired, and a blink whose start lies before the block gets one at the block's start.
// 3. With repairs: sort, merge blinks inside saccades, mark the samples inside blinks.
// 4. Configuration messages that fell into the block before theirs move to after its end.
// No step inserts or erases in the middle: edits are collected and carried out in one pass.

#include "repair/consistency.h"

#include <array>
#include <optional>

#include "base/log.h"
#include "index/index_edits.h"
#include "order/time_order.h"
#include "repair/blink_repair.h"

namespace gzd {

namespace {

constexpr UINT16 tag_of_inserted = 0xFFFF;

UINT32 time_of(const GZDItem& item) {
  return time_of_stamp(item.getTimeStamp());
}

std::size_t eye_of(const GZDItem& item) {
  return static_cast<std::size_t>(item.getEye());
}

// ---- eye events outside blocks ------------------------------------------------------------------

class OutsideEvents {
 public:
  explicit OutsideEvents(Index& list) : index_(list) {}

  void run() {
    for (const Landmark mark : index_.landmarks()) examine(mark.place, index_.gzdItemList[mark]);
    if (changed_) index_.stampsChanged();
  }

 private:
  void examine(UINT32 place, const GZDItem& item) {
    if (item.isRecordingStart()) {
      startSeen_ = true;
      outside_ = false;
      releasePending(item.getTimeStamp());
    } else if (item.isRecording()) {
      outside_ = startSeen_;
      endStamp_ = item.getTimeStamp();
    } else if (outside_ && item.isEyeEvent() && item.getTimeStamp() > endStamp_) {
      examineOutside(place, item);
    }
  }

  void releasePending(UINT64 startStamp) {
    for (const UINT32 start : pending_) retime(start, startStamp);
    changed_ |= !pending_.empty();
    pending_.clear();
  }

  void retime(UINT32 place, UINT64 stamp) {
    index_.gzdItemList.change(place, [this, stamp](GZDItem& item) {
      const UINT64 before = item.getTimeStamp();
      item.setFixedTimeStamp(stamp);
      index_.findings.add(retimed(item, before));
    });
  }

  void examineOutside(UINT32 place, const GZDItem& item) {
    if (item.isStartEvent()) {
      pending_.push_back(place);
      if (item.getItemType() == GZD_START_BLINK) blinkStarted_ = true;
      return;
    }
    retime(place, endStamp_);
    changed_ = true;
    if (item.getItemType() == GZD_END_BLINK && blinkStarted_) {
      index_.gzdItemList.change(place, [](GZDItem& end) { end.markBlinkMerged(); });
      blinkStarted_ = false;
    }
  }

  Index& index_;
  bool changed_ = false;
  std::vector<UINT32> pending_;  // places of starts that wait for the next block
  bool startSeen_ = false;
  bool outside_ = false;  // past the end of a block
  UINT64 endStamp_ = 0;
  bool blinkStarted_ = false;
};

// ---- the walk over blocks -----------------------------------------------------------------------

// An entry that the walk remembers: its place in the list, and the index that it has in the list
// as edited so far.
struct Remembered {
  UINT32 place;
  INT64 number;
};

struct BlinkState {
  bool startOpen = false;
  bool endSeen = false;
};

class BlockWalk {
 public:
  BlockWalk(Index& list, bool repairs) : index_(list), items_(list.gzdItemList), repair_(repairs) {}

  void run() {
    UINT32 behind = 0;  // the place after the landmark before
    for (const Landmark mark : index_.landmarks()) {
      examineSamples(behind, mark.place);
      examine(mark);
      behind = mark.place + 1;
    }
    examineSamples(behind, index_.size());
    if (edits_.apply(items_))
      index_.itemsChanged();
    else if (anyRetimed_)
      index_.stampsChanged();
  }
  [[nodiscard]] bool boundariesChangedPlaces() const { return changedPlaces_; }

 private:
  void examine(Landmark mark) {
    switch (items_[mark].getItemType()) {
      case GZD_RECORDING:
        boundary(mark.place);
        break;
      case GZD_END_BLINK:
        endBlink(mark.place);
        break;
      case GZD_START_BLINK:
        startBlink(mark.place);
        break;
      default:
        break;
    }
  }

  void examineSamples(UINT32 begin, UINT32 end) {
    UINT32 place = begin;
    while (place < end && !inside_ && straySample(place)) ++place;
    if (place > begin) noteStrays(begin, place);
  }

  [[nodiscard]] Remembered remember(UINT32 place) const { return {place, place + growth_}; }

  void boundary(UINT32 place) {
    inside_ = items_[place].isRecordingStart();
    if (inside_) {
      lastStart_ = place;
      starts_ = ends_ = 0;
    } else {
      lastEnd_ = place;
    }
  }

  void noteStrays(UINT32 begin, UINT32 end) {
    index_.findings.add({.kind = GZD_FINDING_SAMPLES_DROPPED,
                         .count = INT64{end} - begin,
                         .place = items_[begin].getRecordPlace(),
                         .start = found_at(items_.stampAt(begin)),
                         .end = found_at(items_.stampAt(end - 1))});
  }

  // Returns whether the sample is dropped.
  bool straySample(UINT32 place) {
    if (lastEnd_ && lastStart_ &&
        items_[*lastEnd_].getTimeStamp() == items_[*lastStart_].getTimeStamp()) {
      moveEndBeforeStart();
      return false;
    }
    strayLine_.log(static_cast<int>(time_of(items_[place])));
    edits_.remove(place);
    --growth_;
    return true;
  }

  // The end, which is the newer of the two, goes to the start's place; all between moves up.
  void moveEndBeforeStart() {
    edits_.remove(*lastEnd_);
    edits_.insertBefore(*lastStart_, items_[*lastEnd_]);
    if (pending_ && pending_->place > *lastStart_ && pending_->place < *lastEnd_)
      ++pending_->number;
    inside_ = true;
    changedPlaces_ = true;
    Finding swap = finding_of(GZD_FINDING_BOUNDARIES_SWAPPED, items_[*lastStart_]);
    swap.detail = 0;
    index_.findings.add(swap);
  }

  void endBlink(UINT32 place) {
    BlinkState& eye = blinks_[eye_of(items_[place])];
    ++ends_;
    if (eye.endSeen) loneEndLine_.log(time_of(items_[place]));
    eye.endSeen = true;
    if (eye.startOpen) {
      eye = {};
    } else {
      pending_ = remember(place);
    }
  }

  void startBlink(UINT32 place) {
    BlinkState& eye = blinks_[eye_of(items_[place])];
    ++starts_;
    if (starts_ > ends_) {
      openBlink(eye, place);
    } else if (starts_ != 1 || ends_ != 1) {
      closeOrKeep(eye, place);
    } else if (pending_ && lastStart_) {
      insertStart(eye, place);
      startBlink(place);  // once more, now after the inserted start
    } else {
      eye.startOpen = true;
    }
  }

  void openBlink(BlinkState& eye, UINT32 place) {
    if (eye.startOpen) {
      loneStartLine_.log(time_of(items_[place]));
    }
    eye.startOpen = true;
    if (!eye.endSeen) return;
    if (repair_ && pending_) pairWithPending(place);
    eye = {};
  }

  void pairWithPending(UINT32 place) {
    const GZDItem start = items_[place];
    const GZDItem end = items_[pending_->place];
    print_log("matching EBLINK found for SBLINK index %d for %lu fix order %d to %lu \n",
              static_cast<int>(remember(place).number), static_cast<unsigned long>(time_of(start)),
              static_cast<int>(pending_->number), static_cast<unsigned long>(time_of(end)));
    items_.change(place, [&](GZDItem& item) {
      item.setFixedTimeStamp(end.getTimeStamp());
      index_.findings.add(retimed(item, start.getTimeStamp()));
    });
    anyRetimed_ = true;
    pending_.reset();
  }

  void closeOrKeep(BlinkState& eye, UINT32 place) {
    if (!eye.endSeen) return;
    if (eye.startOpen) {
      eye = {};
    } else {
      pending_ = remember(place);
    }
  }

  // The block begins inside a blink: its end has no start.
  void insertStart(BlinkState& eye, UINT32 place) {
    items_.change(pending_->place, [](GZDItem& end) { end.markBlinkMerged(); });
    const GZDItem start(position_of_dummy, GZD_START_BLINK, items_[pending_->place].getSide(),
                        tag_of_inserted, items_[*lastStart_].getTimeStamp());
    edits_.insertBefore(place, start);
    index_.findings.add(finding_of(GZD_FINDING_BLINK_START_INSERTED, start));
    ++growth_;
    pending_.reset();
    eye.endSeen = false;
    starts_ = ends_ = 1;
  }

  Index& index_;
  ItemList& items_;
  const bool repair_;
  bool anyRetimed_ = false;
  NumberLine strayLine_{"WARNING: GZD FILE MAY BE CORRUPTED. Sample at ",
                        " found without start recording. Skipping this sample \n"};
  NumberLine loneEndLine_{"found EBLINK  with no SBLINK ", " \n"};
  NumberLine loneStartLine_{"No matching EBLINK found for SBLINK  ", " \n"};
  IndexEdits edits_;
  INT64 growth_ = 0;  // entries inserted less entries removed so far
  bool inside_ = false;
  bool changedPlaces_ = false;
  std::optional<UINT32> lastStart_;
  std::optional<UINT32> lastEnd_;
  // The counters serve both eyes and begin anew with each block; flags and pending end live on.
  UINT32 starts_ = 0;
  UINT32 ends_ = 0;
  std::array<BlinkState, 2> blinks_;
  std::optional<Remembered> pending_;  // a blink end that waits for its start
};

}  // namespace

int MergeEyeEventsOutsideOfTrials(Index& index) {
  OutsideEvents(index).run();
  return 0;
}

int checkConsistency(Index& index, bool repair, const MessageReader& messageText) {
  sortItems(index);
  MergeEyeEventsOutsideOfTrials(index);
  sortItems(index);
  BlockWalk walk(index, repair);
  walk.run();
  if (repair) {
    if (!walk.boundariesChangedPlaces()) sortItems(index);
    mergeBlinksInsideSaccade(index);
    markSamplesInsideBlink(index);
  }
  move_colliding_configurations(index, messageText);
  return 0;
}

}  // namespace gzd
