// The state of one collection of trials: what each element does to the list of trials.
#ifndef GZDAPI_TRIAL_WALK_H
#define GZDAPI_TRIAL_WALK_H

#include <vector>

#include "index/index.h"

namespace gzd {

// A trial and its place in the index.
struct GZDTrial : TRIAL {
  GZDTrial(int place, UINT32 time) : TRIAL{}, start(place), end(place) { starttime = time; }

  void setEnd(int place) { end = place; }
  [[nodiscard]] int getStarting() const { return start; }
  [[nodiscard]] int getEnding() const { return end; }
  // The block that the trial lies in, or null.
  [[nodiscard]] const Recording* getRecording() const { return static_cast<const Recording*>(rec); }

  int start;  // index of the item that opened it
  int end;    // one past its last item, or the index of the item that closed it
};

class TrialWalk {
 public:
  TrialWalk(const Index& items, std::vector<GZDTrial>& list, bool blockStartsAreWeak)
      : index_(items), trials_(list), ignoreRecordStart_(blockStartsAreWeak) {}

  // The end of a block at `place`. Without identifiers it closes the open trial.
  void blockEnd(UINT32 place, bool closesTrial);
  // The start of a block at `place`.
  void blockStart(UINT32 place);
  // A start mark: a message or an input, at `place` and `time` (ms).
  void startMark(UINT32 place, UINT32 time);
  // An end mark.
  void endMark(UINT32 place, UINT32 time);
  // The end of the walk. Returns false when the walk is to stay at its end.
  bool finish();

 private:
  [[nodiscard]] bool trialIsOpen() const { return !trialEndFound_ && !trials_.empty(); }
  [[nodiscard]] bool lastLacksBlock() const {
    return !trials_.empty() && trials_.back().rec == nullptr;
  }
  [[nodiscard]] GZDItem itemAt(int place) const {
    return index_.gzdItemList[static_cast<std::size_t>(place)];
  }
  [[nodiscard]] UINT32 timeAt(int place) const {
    return time_of_stamp(itemAt(place).getTimeStamp());
  }
  void findBlock();
  bool close(int place, UINT32 time);
  void setEnd(int place, UINT32 time);
  bool closeAtLastBlockEnd();
  void open(UINT32 place, UINT32 time);
  void openAtBlockStart(UINT32 place);
  void enterBlock(UINT32 place);
  void leaveTrial();

  const Index& index_;
  std::vector<GZDTrial>& trials_;
  const bool ignoreRecordStart_;

  bool trialEndFound_ = true;  // no trial is open
  bool trialStartFound_ = false;
  int lastRecInfoIndex_ = -1;  // the last start of a block
  int lastRecIndex_ = -1;      // the last end of a block
  Recording* rec_ = nullptr;   // the current block
};

}  // namespace gzd

#endif
