// checkConsistency, over the sorted index:
// 1. Eye events that spill over the end of a block go to the boundaries; sort again.
// 2. One walk over blocks: samples outside blocks are dropped (or, where a block's end and the next
//    start share their time, the two boundaries change places); starts and ends of blinks are
//    paired, and a blink whose start lies before the block gets one at the block's start.
// 3. With repairs: sort, merge blinks inside saccades, mark the samples inside blinks.
// 4. Configuration messages that fell into the block before theirs move behind its end.
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

// ---- eye events outside blocks -----------------------------------------------------------------

class OutsideEvents {
 public:
  explicit OutsideEvents(Index& list) : index(list) {}

  void run() {
    for (const Landmark mark : index.landmarks()) examine(mark.place, index.gzdItemList[mark]);
    if (changed) index.stampsChanged();
  }

 private:
  void examine(UINT32 place, const GZDItem& item) {
    if (item.isRecordingStart()) {
      startSeen = true;
      outside = false;
      releasePending(item.getTimeStamp());
    } else if (item.isRecording()) {
      outside = startSeen;
      endStamp = item.getTimeStamp();
    } else if (outside && item.isEyeEvent() && item.getTimeStamp() > endStamp) {
      examineOutside(place, item);
    }
  }

  void releasePending(UINT64 startStamp) {
    for (const UINT32 start : pending) retime(start, startStamp);
    changed |= !pending.empty();
    pending.clear();
  }

  void retime(UINT32 place, UINT64 stamp) {
    index.gzdItemList.change(place, [this, stamp](GZDItem& item) {
      const UINT64 before = item.getTimeStamp();
      item.setFixedTimeStamp(stamp);
      index.findings.add(retimed(item, before));
    });
  }

  void examineOutside(UINT32 place, const GZDItem& item) {
    if (item.isStartEvent()) {
      pending.push_back(place);
      if (item.getItemType() == GZD_START_BLINK) blinkStarted = true;
      return;
    }
    retime(place, endStamp);
    changed = true;
    if (item.getItemType() == GZD_END_BLINK && blinkStarted) {
      index.gzdItemList.change(place, [](GZDItem& end) { end.markBlinkMerged(); });
      blinkStarted = false;
    }
  }

  Index& index;
  bool changed = false;
  std::vector<UINT32> pending;  // places of starts that wait for the next block
  bool startSeen = false;
  bool outside = false;  // behind the end of a block
  UINT64 endStamp = 0;
  bool blinkStarted = false;
};

// ---- the walk over blocks ----------------------------------------------------------------------

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
  BlockWalk(Index& list, bool repairs) : index(list), items(list.gzdItemList), repair(repairs) {}

  void run() {
    UINT32 behind = 0;  // the place behind the landmark before
    for (const Landmark mark : index.landmarks()) {
      examineSamples(behind, mark.place);
      examine(mark);
      behind = mark.place + 1;
    }
    examineSamples(behind, index.size());
    if (edits.apply(items))
      index.itemsChanged();
    else if (anyRetimed)
      index.stampsChanged();
  }
  [[nodiscard]] bool boundariesChangedPlaces() const { return changedPlaces; }

 private:
  void examine(Landmark mark) {
    switch (items[mark].getItemType()) {
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
    while (place < end && !inside && straySample(place)) ++place;
    if (place > begin) noteStrays(begin, place);
  }

  [[nodiscard]] Remembered remember(UINT32 place) const { return {place, place + growth}; }

  void boundary(UINT32 place) {
    inside = items[place].isRecordingStart();
    if (inside) {
      lastStart = place;
      starts = ends = 0;
    } else {
      lastEnd = place;
    }
  }

  void noteStrays(UINT32 begin, UINT32 end) {
    index.findings.add({.kind = GZD_FINDING_SAMPLES_DROPPED,
                        .count = INT64{end} - begin,
                        .place = items[begin].getRecordPlace(),
                        .start = found_at(items.stampAt(begin)),
                        .end = found_at(items.stampAt(end - 1))});
  }

  // Returns whether the sample is dropped.
  bool straySample(UINT32 place) {
    if (lastEnd && lastStart &&
        items[*lastEnd].getTimeStamp() == items[*lastStart].getTimeStamp()) {
      moveEndBeforeStart();
      return false;
    }
    strayLine.log(static_cast<int>(time_of(items[place])));
    edits.remove(place);
    --growth;
    return true;
  }

  // The end, which is the newer of the two, goes to the start's place; all between moves up.
  void moveEndBeforeStart() {
    edits.remove(*lastEnd);
    edits.insertBefore(*lastStart, items[*lastEnd]);
    if (pending && pending->place > *lastStart && pending->place < *lastEnd) ++pending->number;
    inside = true;
    changedPlaces = true;
    Finding swap = finding_of(GZD_FINDING_BOUNDARIES_SWAPPED, items[*lastStart]);
    swap.detail = 0;
    index.findings.add(swap);
  }

  void endBlink(UINT32 place) {
    BlinkState& eye = blinks[eye_of(items[place])];
    ++ends;
    if (eye.endSeen) loneEndLine.log(time_of(items[place]));
    eye.endSeen = true;
    if (eye.startOpen) {
      eye = {};
    } else {
      pending = remember(place);
    }
  }

  void startBlink(UINT32 place) {
    BlinkState& eye = blinks[eye_of(items[place])];
    ++starts;
    if (starts > ends) {
      openBlink(eye, place);
    } else if (starts != 1 || ends != 1) {
      closeOrKeep(eye, place);
    } else if (pending && lastStart) {
      insertStart(eye, place);
      startBlink(place);  // once more, now behind the inserted start
    } else {
      eye.startOpen = true;
    }
  }

  void openBlink(BlinkState& eye, UINT32 place) {
    if (eye.startOpen) {
      loneStartLine.log(time_of(items[place]));
    }
    eye.startOpen = true;
    if (!eye.endSeen) return;
    if (repair && pending) pairWithPending(place);
    eye = {};
  }

  void pairWithPending(UINT32 place) {
    const GZDItem start = items[place];
    const GZDItem end = items[pending->place];
    print_log("matching EBLINK found for SBLINK index %d for %lu fix order %d to %lu \n",
              static_cast<int>(remember(place).number), static_cast<unsigned long>(time_of(start)),
              static_cast<int>(pending->number), static_cast<unsigned long>(time_of(end)));
    items.change(place, [&](GZDItem& item) {
      item.setFixedTimeStamp(end.getTimeStamp());
      index.findings.add(retimed(item, start.getTimeStamp()));
    });
    anyRetimed = true;
    pending.reset();
  }

  void closeOrKeep(BlinkState& eye, UINT32 place) {
    if (!eye.endSeen) return;
    if (eye.startOpen) {
      eye = {};
    } else {
      pending = remember(place);
    }
  }

  // The block begins inside a blink: its end has no start.
  void insertStart(BlinkState& eye, UINT32 place) {
    items.change(pending->place, [](GZDItem& end) { end.markBlinkMerged(); });
    const GZDItem start(position_of_dummy, GZD_START_BLINK, items[pending->place].getSide(),
                        tag_of_inserted, items[*lastStart].getTimeStamp());
    edits.insertBefore(place, start);
    index.findings.add(finding_of(GZD_FINDING_BLINK_START_INSERTED, start));
    ++growth;
    pending.reset();
    eye.endSeen = false;
    starts = ends = 1;
  }

  Index& index;
  ItemList& items;
  const bool repair;
  bool anyRetimed = false;
  NumberLine strayLine{"WARNING: GZD FILE MAY BE CORRUPTED. Sample at ",
                       " found without start recording. Skipping this sample \n"};
  NumberLine loneEndLine{"found EBLINK  with no SBLINK ", " \n"};
  NumberLine loneStartLine{"No matching EBLINK found for SBLINK  ", " \n"};
  IndexEdits edits;
  INT64 growth = 0;  // entries inserted less entries removed so far
  bool inside = false;
  bool changedPlaces = false;
  std::optional<UINT32> lastStart;
  std::optional<UINT32> lastEnd;
  // The counters serve both eyes and begin anew with each block; flags and pending end live on.
  UINT32 starts = 0;
  UINT32 ends = 0;
  std::array<BlinkState, 2> blinks;
  std::optional<Remembered> pending;  // a blink end that waits for its start
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
