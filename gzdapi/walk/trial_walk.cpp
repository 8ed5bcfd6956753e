#include "walk/trial_walk.h"

#include "base/log.h"

namespace gzd {

// ---- the two actions ---------------------------------------------------------------------------

void TrialWalk::open(UINT32 place, UINT32 time) {
  trials.emplace_back(static_cast<int>(place), time);
  trialEndFound = false;
}

void TrialWalk::setEnd(int place, UINT32 time) {
  GZDTrial& trial = trials.back();
  trial.setEnd(place);
  trial.rec = rec;
  trial.endtime = time;
  trial.duration = time - trial.starttime;
}

// Before a close: the block whose start was seen last. One at index 0 does not count.
void TrialWalk::findBlock() {
  if (rec == nullptr && lastRecInfoIndex > 0) rec = itemAt(lastRecInfoIndex).getRecording();
}

bool TrialWalk::close(int place, UINT32 time) {
  findBlock();
  if (rec == nullptr || !trialIsOpen()) return false;
  setEnd(place, time);
  return true;
}

void TrialWalk::leaveTrial() {
  trialEndFound = true;
  trialStartFound = false;
  rec = nullptr;
}

// ---- marks -------------------------------------------------------------------------------------

void TrialWalk::startMark(UINT32 place, UINT32 time) {
  const bool closed = close(static_cast<int>(place), time);
  if (!closed && (trialStartFound || lastLacksBlock())) return;
  open(place, time);
  trialStartFound = true;
  rec = nullptr;
}

void TrialWalk::endMark(UINT32 place, UINT32 time) {
  if (trialStartFound && close(static_cast<int>(place) + 1, time)) leaveTrial();
}

// ---- blocks ------------------------------------------------------------------------------------

void TrialWalk::blockEnd(UINT32 place, bool closesTrial) {
  lastRecIndex = static_cast<int>(place);
  if (!closesTrial) return;
  findBlock();
  if (!trialIsOpen()) return;
  setEnd(lastRecIndex + 1, timeAt(lastRecIndex));
  leaveTrial();
}

// The open trial ends with the last block, when it began before that block's end. Its duration
// stays.
bool TrialWalk::closeAtLastBlockEnd() {
  if (!trialIsOpen() || lastRecIndex == -1) return false;
  GZDTrial& trial = trials.back();
  if (trial.starttime >= timeAt(lastRecIndex)) return false;
  findBlock();
  if (rec == nullptr) return false;
  trial.setEnd(lastRecIndex + 1);
  trial.endtime = timeAt(lastRecIndex);
  trial.rec = rec;
  return true;
}

void TrialWalk::blockStart(UINT32 place) {
  if (closeAtLastBlockEnd()) {
    lastRecIndex = -1;
    openAtBlockStart(place);
  } else if (trialStartFound || lastLacksBlock()) {
    enterBlock(place);
  } else {
    openAtBlockStart(place);
  }
}

void TrialWalk::openAtBlockStart(UINT32 place) {
  open(place, timeAt(static_cast<int>(place)));
  trialStartFound = !ignoreRecordStart;
  enterBlock(place);
}

void TrialWalk::enterBlock(UINT32 place) {
  lastRecInfoIndex = static_cast<int>(place);
  rec = itemAt(lastRecInfoIndex).getRecording();
}

// ---- the end -----------------------------------------------------------------------------------

bool TrialWalk::finish() {
  if (!trialIsOpen()) return true;
  const bool endHasBlock = lastRecIndex != -1 && itemAt(lastRecIndex).getRecording() != nullptr;
  if (endHasBlock && closeAtLastBlockEnd()) return false;
  trials.pop_back();
  print_log("removed last trial\n");
  return true;
}

}  // namespace gzd
