// collectTrials walks the index once, with the message log merged in, and hands what may cut a
// trial to a TrialWalk:
// - boundaries of recording blocks, always;
// - messages, when identifiers are set and trials are not cut by input values: the start identifier
//   in a text starts a trial, the end identifier ends it, a text with "!V" does neither;
// - inputs, when trials are cut by input values.
// Without a log, or when only blocks cut, the index is scanned directly.

#include "walk/trials.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/log.h"

namespace gzd {

namespace {

constexpr std::string_view input_form_text = "inPut_type_";
constexpr std::string_view no_trial_mark = "!V";
constexpr std::size_t input_number_limit = 4;  // characters

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

UINT16 input_value(const char* text) {
  if (text == nullptr) return 0;
  const std::size_t length = std::strlen(text);
  if (length == 0 || length >= input_number_limit) return 0;
  return static_cast<UINT16>(std::strtol(text, nullptr, 10));
}

// Puts walk and log back to where they were.
class PlaceKeeper {
 public:
  PlaceKeeper(Walk& position, LogMerge& log)
      : walk_(position), merge_(log), walkBefore_(position), logBefore_(log.position()) {}
  PlaceKeeper(const PlaceKeeper&) = delete;
  PlaceKeeper& operator=(const PlaceKeeper&) = delete;
  ~PlaceKeeper() {
    walk_ = walkBefore_;
    merge_.restore(logBefore_);
  }

 private:
  Walk& walk_;
  LogMerge& merge_;
  const Walk walkBefore_;
  const LogMerge::Position logBefore_;
};

// Tells, while it lives, that the walk is only for the trials.
class CollectingMark {
 public:
  explicit CollectingMark(Walk& position) : walk_(position) { walk_.collectsTrials = true; }
  ~CollectingMark() { walk_.collectsTrials = false; }
  CollectingMark(const CollectingMark&) = delete;
  CollectingMark& operator=(const CollectingMark&) = delete;

 private:
  Walk& walk_;
};

}  // namespace

// ---- identifiers --------------------------------------------------------------------------------

void Trials::setTrialIdentifier(char* start, char* end) {
  std::fflush(nullptr);
  endTrialID_ = end;
  const bool inputForm = start != nullptr && contains(start, input_form_text);
  if (end == nullptr) print_log("Set TrialEndMesage Empty\n");
  segmentationType_ = inputForm ? cut_by_input : 0;
  trialID_ = inputForm ? start + input_form_text.size() : start;
  if (inputForm) log_clipped("Input Split option found :%s  %s\n", start, trialID_);
  ignoreRecordStart_ = end != nullptr || inputForm ? 1 : 0;
  collectTrials();
}

void Trials::takeInputValues() {
  startInput_ = input_value(trialID_);
  endInput_ = input_value(endTrialID_);
  print_log("Start Input: %d\n End Input: %d\n", startInput_, endInput_);
}

// ---- collecting ---------------------------------------------------------------------------------

// The trials count as collected at the end only: when memory runs out on the way there are none.
int Trials::collectTrials() {
  const CollectingMark mark(walk_);
  trialsCollected_ = false;
  trials_.clear();
  backToBeginning();
  if (cutsByInput()) takeInputValues();
  TrialWalk cut(index_, trials_, ignoreRecordStart_ == 1);
  if (log_.isLoaded() && !cutsByBlocksOnly()) {
    stepThroughMerge(cut);
  } else {
    stepThroughIndex(cut);
  }
  if (cut.finish()) backToBeginning();
  rebuildTimes();
  trialsCollected_ = true;
  return 0;
}

void Trials::collectIfNeeded() {
  if (!trialsCollected_) collectTrials();
}

// Collects without moving the walk, also when memory runs out.
void Trials::collectInPlace() {
  if (trialsCollected_) return;
  const PlaceKeeper keeper(walk_, merge_);
  collectTrials();
}

void Trials::backToBeginning() {
  merge_.rewind();
  walk_.currentData = 0;
  walk_.lastRecording = nullptr;
}

bool Trials::cutsByBlocksOnly() const {
  return trialID_ == nullptr && endTrialID_ == nullptr && !cutsByInput();
}

void Trials::stepThroughIndex(TrialWalk& cut) {
  for (const Landmark mark : index_.landmarks()) {
    const GZDItem& item = index_.gzdItemList[mark];
    if (item.isRecording())
      walk_.lastRecording = item.isRecordingStart() ? item.getRecording() : nullptr;
    examine(cut, item.getItemType(), mark.place);
  }
  walk_.currentData = index_.size();
  merge_.skipLog();
}

void Trials::stepThroughMerge(TrialWalk& cut) {
  for (;;) {
    const int type = merge_.getNextDataMergeWithLog();
    if (type == GZD_END_OF_DATA) return;
    if (merge_.isFromLog()) {
      if (cutsByInput()) continue;
      const FEVENT& message = merge_.logRecord().fe;
      examineText(cut, text_of(message.message), walk_.currentData, message.sttime);
    } else {
      examine(cut, type, walk_.currentData - 1);
    }
  }
}

// The element of the recording at `place`.
void Trials::examine(TrialWalk& cut, int type, UINT32 place) {
  if (type == GZD_RECORDING) {
    examineBoundary(cut, place);
  } else if (type == GZD_INPUT && cutsByInput()) {
    examineInput(cut, place);
  } else if (type == GZD_MESSAGE && !cutsByInput()) {
    examineMessage(cut, place);
  }
}

void Trials::examineBoundary(TrialWalk& cut, UINT32 place) const {
  if (index_.gzdItemList[place].isRecordingStart()) {
    cut.blockStart(place);
  } else {
    cut.blockEnd(place, trialID_ == nullptr && endTrialID_ == nullptr);
  }
}

void Trials::examineInput(TrialWalk& cut, UINT32 place) {
  const ALLF_DATA* record = readRecord_(place);
  if (record == nullptr) return;
  const UINT32 time = time_of_stamp(index_.gzdItemList[place].getTimeStamp());
  if (record->fe.input == startInput_) {
    cut.startMark(place, time);
  } else if (record->fe.input == endInput_) {
    cut.endMark(place, time);
  }
}

void Trials::examineMessage(TrialWalk& cut, UINT32 place) {
  if (trialID_ == nullptr && endTrialID_ == nullptr) return;
  const ALLF_DATA* record = readRecord_(place);
  if (record == nullptr) return;
  examineText(cut, text_of(record->fe.message), place,
              time_of_stamp(index_.gzdItemList[place].getTimeStamp()));
}

void Trials::examineText(TrialWalk& cut, std::string_view text, UINT32 place, UINT32 time) const {
  if (contains(text, no_trial_mark)) return;
  if (trialID_ != nullptr && contains(text, trialID_)) {
    cut.startMark(place, time);
  } else if (endTrialID_ != nullptr && contains(text, endTrialID_)) {
    cut.endMark(place, time);
  }
}

void Trials::rebuildTimes() {
  std::vector<TrialTimes::Interval> intervals;
  intervals.reserve(trials_.size());
  for (const GZDTrial& trial : trials_) intervals.push_back({trial.starttime, trial.endtime});
  times_.build(intervals);
}

// ---- moving -------------------------------------------------------------------------------------

int Trials::jumpToTrial(int n) {
  collectIfNeeded();
  if (n < 0 || static_cast<std::size_t>(n) >= trials_.size()) return -1;
  walk_.currentTrial = static_cast<UINT32>(n);
  merge_.moveTo(static_cast<UINT32>(trials_[walk_.currentTrial].start));
  return 0;
}

int Trials::gotoNextTrial() {
  return jumpToTrial(static_cast<int>(walk_.currentTrial + 1));
}

int Trials::gotoPreviousTrial() {
  return jumpToTrial(static_cast<int>(walk_.currentTrial - 1));
}

int Trials::gotoTrialWithStartTime(UINT32 time) {
  collectIfNeeded();
  const auto found = std::find_if(trials_.begin(), trials_.end(),
                                  [time](const GZDTrial& t) { return t.starttime == time; });
  return found == trials_.end() ? -1 : jumpToTrial(static_cast<int>(found - trials_.begin()));
}

int Trials::gotoTrialWithEndTime(UINT32 time) {
  collectIfNeeded();
  const auto found = std::find_if(trials_.begin(), trials_.end(),
                                  [time](const GZDTrial& t) { return t.endtime == time; });
  return found == trials_.end() ? -1 : jumpToTrial(static_cast<int>(found - trials_.begin()));
}

GZDTrial* Trials::getTrialHeaders() {
  collectIfNeeded();
  return walk_.currentTrial < trials_.size() ? &trials_[walk_.currentTrial] : nullptr;
}

int Trials::getTrialHeaders(TRIAL* trial) {
  if (trial == nullptr) return -1;
  const GZDTrial* current = getTrialHeaders();
  if (current == nullptr) return -1;
  *trial = *current;
  return 0;
}

UINT32 Trials::firstTrialStartingAt(int itemIndex) const {
  const auto found =
      std::lower_bound(trials_.begin(), trials_.end(), itemIndex,
                       [](const GZDTrial& trial, int wanted) { return trial.start < wanted; });
  return found != trials_.end() && found->start == itemIndex
             ? static_cast<UINT32>(found - trials_.begin())
             : no_trial;
}

// ---- looking up by time -------------------------------------------------------------------------

const GZDTrial* Trials::trialAtTime(UINT32 time) {
  collectInPlace();
  const UINT32 place = times_.at(time);
  return place == TrialTimes::nowhere ? nullptr : &trials_[place];
}

const Recording* Trials::blockAtTime(UINT32 time) {
  const GZDTrial* trial = trialAtTime(time);
  return trial != nullptr ? trial->getRecording() : nullptr;
}

}  // namespace gzd
