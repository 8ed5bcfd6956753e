// Opens and closes trials by marks, by blocks, and at the end.
#include "walk/trial_walk.h"

#include "base/log.h"

namespace gzd {

// ---- the two actions ----------------------------------------------------------------------------

void TrialWalk::open(UINT32 place, UINT32 time) {
  trials_.emplace_back(static_cast<int>(place), time);
  trialEndFound_ = false;
}

void TrialWalk::setEnd(int place, UINT32 time) {
  GZDTrial& trial = trials_.back();
  trial.setEnd(place);
  trial.rec = rec_;
  trial.endtime = time;
  trial.duration = time - trial.starttime;
}

// Before a close: the block whose start was seen last. One at index 0 does not count.
void TrialWalk::findBlock() {
  if (rec_ == nullptr && lastRecInfoIndex_ > 0) rec_ = itemAt(lastRecInfoIndex_).getRecording();
}

bool TrialWalk::close(int place, UINT32 time) {
  findBlock();
  if (rec_ == nullptr || !trialIsOpen()) return false;
  setEnd(place, time);
  return true;
}

void TrialWalk::leaveTrial() {
  trialEndFound_ = true;
  trialStartFound_ = false;
  rec_ = nullptr;
}

// ---- marks --------------------------------------------------------------------------------------

void TrialWalk::startMark(UINT32 place, UINT32 time) {
  const bool closed = close(static_cast<int>(place), time);
  if (!closed && (trialStartFound_ || lastLacksBlock())) return;
  open(place, time);
  trialStartFound_ = true;
  rec_ = nullptr;
}

void TrialWalk::endMark(UINT32 place, UINT32 time) {
  if (trialStartFound_ && close(static_cast<int>(place) + 1, time)) leaveTrial();
}

// ---- blocks -------------------------------------------------------------------------------------

void TrialWalk::blockEnd(UINT32 place, bool closesTrial) {
  lastRecIndex_ = static_cast<int>(place);
  if (!closesTrial) return;
  findBlock();
  if (!trialIsOpen()) return;
  setEnd(lastRecIndex_ + 1, timeAt(lastRecIndex_));
  leaveTrial();
}

// The open trial ends with the last block, when it began before that block's end. Its duration
// stays.
bool TrialWalk::closeAtLastBlockEnd() {
  if (!trialIsOpen() || lastRecIndex_ == -1) return false;
  GZDTrial& trial = trials_.back();
  if (trial.starttime >= timeAt(lastRecIndex_)) return false;
  findBlock();
  if (rec_ == nullptr) return false;
  trial.setEnd(lastRecIndex_ + 1);
  trial.endtime = timeAt(lastRecIndex_);
  trial.rec = rec_;
  return true;
}

void TrialWalk::blockStart(UINT32 place) {
  if (closeAtLastBlockEnd()) {
    lastRecIndex_ = -1;
    openAtBlockStart(place);
  } else if (trialStartFound_ || lastLacksBlock()) {
    enterBlock(place);
  } else {
    openAtBlockStart(place);
  }
}

void TrialWalk::openAtBlockStart(UINT32 place) {
  open(place, timeAt(static_cast<int>(place)));
  trialStartFound_ = !ignoreRecordStart_;
  enterBlock(place);
}

void TrialWalk::enterBlock(UINT32 place) {
  lastRecInfoIndex_ = static_cast<int>(place);
  rec_ = itemAt(lastRecInfoIndex_).getRecording();
}

// ---- the end ------------------------------------------------------------------------------------

bool TrialWalk::finish() {
  if (!trialIsOpen()) return true;
  const bool endHasBlock = lastRecIndex_ != -1 && itemAt(lastRecIndex_).getRecording() != nullptr;
  if (endHasBlock && closeAtLastBlockEnd()) return false;
  trials_.pop_back();
  print_log("removed last trial\n");
  return true;
}

}  // namespace gzd
