// Each step compares the times of the next element and of the next log message. More than 2 ms
// apart, the earlier one goes first. Within 2 ms both texts are looked at: a sync message that both
// streams hold is delivered once, as the recording's; one that only one of them holds is dropped
// when its turn has come; anything else goes by time, the log first at equal times. Dropping goes
// on with the next pair in a loop, so that every turn uses up an element or a message.

#include "walk/log_merge.h"

#include <algorithm>
#include <limits>

namespace gzd {

namespace {

constexpr UINT64 time_tolerance = 2;  // ms
constexpr UINT64 time_behind_all = std::numeric_limits<INT64>::max();

bool is_sync(std::string_view text) {
  return text.find(sync_mark) != std::string_view::npos;
}

}  // namespace

int LogMerge::getNextDataWLogInternal() {
  isFromLogFile_ = false;
  for (;;) {
    if (logExhausted()) return deliver(walk_.currentData);
    const UINT64 time = elementTime();
    if (logIdx_ < 0 && !findLogPosition(time)) return deliver(walk_.currentData);
    const UINT64 log_time = nextLogTime();
    if (time + time_tolerance < log_time) return deliver(walk_.currentData);
    if (log_time + time_tolerance < time) return deliverLogMessage();
    const bool atLast = walk_.currentData + 1 == index_.size();
    const int code = atLast ? mergeAtLastElement() : mergeSimultaneous(time);
    if (code != merge_goes_on) return code;
  }
}

bool LogMerge::logExhausted() const {
  return logIdx_ >= 0 && static_cast<std::size_t>(logIdx_) >= log_.messages().size();
}

UINT64 LogMerge::elementTime() const {
  if (walk_.currentData >= index_.size()) return time_behind_all;
  return index_.gzdItemList[walk_.currentData].getTimeStamp() >> 1;
}

UINT64 LogMerge::nextLogTime() const {
  return log_.messages()[static_cast<std::size_t>(logIdx_)].time;
}

// Positions the log at the first message that does not lie before `time`; earlier ones are skipped
// for good. False when the element is to be delivered without looking at the log.
bool LogMerge::findLogPosition(UINT64 time) {
  const auto& messages = log_.messages();
  const auto found =
      std::lower_bound(messages.begin(), messages.end(), LogMsg{time, 0}, tq_log_msg_comparator);
  if (found == messages.end()) return false;
  logIdx_ = static_cast<int>(found - messages.begin());
  return logIdx_ > 0;
}

int LogMerge::deliverLogMessage() {
  ++logIdx_;
  isFromLogFile_ = true;
  return GZD_MESSAGE;
}

int LogMerge::mergeAtLastElement() {
  const std::string_view text = readLogText();
  const bool isSameSync = is_sync(text) && elementIsSync();
  if (!text.empty() && !isSameSync) return deliverLogMessage();
  ++logIdx_;
  return deliver(walk_.currentData);
}

int LogMerge::mergeSimultaneous(UINT64 time) {
  const UINT64 log_time = nextLogTime();
  const bool inRecording = elementIsSync();
  const bool inLog = is_sync(readLogText());
  if (inRecording && inLog) {
    ++logIdx_;
    return deliver(walk_.currentData);
  }
  const bool logFirst = log_time <= time;
  if (logFirst && inLog) {
    ++logIdx_;
    return merge_goes_on;
  }
  if (!logFirst && inRecording) {
    ++walk_.currentData;
    return merge_goes_on;
  }
  return logFirst ? deliverLogMessage() : deliver(walk_.currentData);
}

// Many messages of the log may lie within the tolerance of one element: its text is read once.
bool LogMerge::elementIsSync() {
  if (examinedElement_ == walk_.currentData) return examinedIsSync_;
  const bool message = index_.gzdItemList[walk_.currentData].getItemType() == GZD_MESSAGE;
  examinedIsSync_ = message && is_sync(textOf_(walk_.currentData));
  examinedElement_ = walk_.currentData;
  return examinedIsSync_;
}

std::string_view LogMerge::readLogText() {
  readLogId_ = logIdx_ + 1;
  log_.getEyeLogMsg(logIdx_);
  return log_.text();
}

const ALLF_DATA& LogMerge::logRecord() {
  log_.getEyeLogMsg(logIdx_ - 1);
  readLogId_ = logIdx_;
  return log_.record();
}

}  // namespace gzd
