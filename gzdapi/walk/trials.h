// Cuts the walk into trials, and moves it among them.
#ifndef GZDAPI_TRIALS_H
#define GZDAPI_TRIALS_H

#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "index/index.h"
#include "walk/log_merge.h"
#include "walk/trial_times.h"
#include "walk/trial_walk.h"
#include "walk/walk.h"

namespace gzd {

// Functions that need trials collect them first. Moving functions return 0, or -1 when there is no
// such trial.
class Trials {
 public:
  // Reads the element at an index as a record, null when it cannot be read; valid until the next
  // call.
  using RecordReader = std::function<const ALLF_DATA*(UINT32 itemIndex)>;

  // All are borrowed and must outlive this.
  Trials(const Index& items, Walk& position, LogMerge& logMerge, const MessageLog& messageLog,
         RecordReader reader)
      : index_(items),
        walk_(position),
        merge_(logMerge),
        log_(messageLog),
        readRecord_(std::move(reader)) {}

  // Sets the texts that cut trials, which are borrowed, and collects anew.
  void setTrialIdentifier(char* start, char* end);
  [[nodiscard]] char* getTrialIdentifier() const { return trialID_; }
  [[nodiscard]] char* getEndTrialIdentifier() const { return endTrialID_; }

  // Collects the trials anew and puts the walk back to its beginning (at its end when a trial was
  // still open at the end of the index and its block's end closed it). Returns 0.
  int collectTrials();
  [[nodiscard]] bool areCollected() const { return trialsCollected_; }
  // The trials collected so far.
  [[nodiscard]] const std::vector<GZDTrial>& list() const { return trials_; }

  // Number of trials.
  int count() {
    collectIfNeeded();
    return static_cast<int>(trials_.size());
  }
  int jumpToTrial(int n);
  int gotoNextTrial();
  int gotoPreviousTrial();
  int gotoTrialWithStartTime(UINT32 time);
  int gotoTrialWithEndTime(UINT32 time);
  int getTrialHeaders(TRIAL* trial);
  // The current trial, or null.
  GZDTrial* getTrialHeaders();

  // The last trial whose time, start and end included, contains `time` (ms); null without one.
  // Logarithmic in the number of trials, and quick for times of one trial in a row. The walk stays
  // where it is.
  const GZDTrial* trialAtTime(UINT32 time);
  // That trial's block, or null.
  const Recording* blockAtTime(UINT32 time);

  // The first collected trial that starts at an item, or no_trial.
  [[nodiscard]] UINT32 firstTrialStartingAt(int itemIndex) const;

 private:
  void collectIfNeeded();
  void collectInPlace();
  void backToBeginning();
  [[nodiscard]] bool cutsByBlocksOnly() const;
  void takeInputValues();
  void stepThroughIndex(TrialWalk& cut);
  void stepThroughMerge(TrialWalk& cut);
  void examine(TrialWalk& cut, int type, UINT32 place);
  void examineBoundary(TrialWalk& cut, UINT32 place) const;
  void examineInput(TrialWalk& cut, UINT32 place);
  void examineMessage(TrialWalk& cut, UINT32 place);
  void examineText(TrialWalk& cut, std::string_view text, UINT32 place, UINT32 time) const;
  void rebuildTimes();
  [[nodiscard]] bool cutsByInput() const { return segmentationType_ == cut_by_input; }

  static constexpr UINT32 cut_by_input = 1;

  const Index& index_;
  Walk& walk_;
  LogMerge& merge_;
  const MessageLog& log_;
  RecordReader readRecord_;

  std::vector<GZDTrial> trials_;
  TrialTimes times_;
  char* trialID_ = nullptr;
  char* endTrialID_ = nullptr;
  UINT32 segmentationType_ = 0;
  int ignoreRecordStart_ = 0;
  UINT16 startInput_ = 0;
  UINT16 endInput_ = 0;
  bool trialsCollected_ = false;
};

}  // namespace gzd

#endif
