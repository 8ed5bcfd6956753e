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
  isFromLogFile = false;
  for (;;) {
    if (logExhausted()) return deliver(walk.currentData);
    const UINT64 time = elementTime();
    if (logIdx < 0 && !findLogPosition(time)) return deliver(walk.currentData);
    const UINT64 log_time = nextLogTime();
    if (time + time_tolerance < log_time) return deliver(walk.currentData);
    if (log_time + time_tolerance < time) return deliverLogMessage();
    const bool atLast = walk.currentData + 1 == index.size();
    const int code = atLast ? mergeAtLastElement() : mergeSimultaneous(time);
    if (code != merge_goes_on) return code;
  }
}

bool LogMerge::logExhausted() const {
  return logIdx >= 0 && static_cast<std::size_t>(logIdx) >= log.messages().size();
}

UINT64 LogMerge::elementTime() const {
  if (walk.currentData >= index.size()) return time_behind_all;
  return index.gzdItemList[walk.currentData].getTimeStamp() >> 1;
}

UINT64 LogMerge::nextLogTime() const {
  return log.messages()[static_cast<std::size_t>(logIdx)].time;
}

// Positions the log at the first message that does not lie before `time`; earlier ones are skipped
// for good. False when the element is to be delivered without looking at the log.
bool LogMerge::findLogPosition(UINT64 time) {
  const auto& messages = log.messages();
  const auto found =
      std::lower_bound(messages.begin(), messages.end(), LogMsg{time, 0}, tq_log_msg_comparator);
  if (found == messages.end()) return false;
  logIdx = static_cast<int>(found - messages.begin());
  return logIdx > 0;
}

int LogMerge::deliverLogMessage() {
  ++logIdx;
  isFromLogFile = true;
  return GZD_MESSAGE;
}

int LogMerge::mergeAtLastElement() {
  const std::string_view text = readLogText();
  const bool isSameSync = is_sync(text) && elementIsSync();
  if (!text.empty() && !isSameSync) return deliverLogMessage();
  ++logIdx;
  return deliver(walk.currentData);
}

int LogMerge::mergeSimultaneous(UINT64 time) {
  const UINT64 log_time = nextLogTime();
  const bool inRecording = elementIsSync();
  const bool inLog = is_sync(readLogText());
  if (inRecording && inLog) {
    ++logIdx;
    return deliver(walk.currentData);
  }
  const bool logFirst = log_time <= time;
  if (logFirst && inLog) {
    ++logIdx;
    return merge_goes_on;
  }
  if (!logFirst && inRecording) {
    ++walk.currentData;
    return merge_goes_on;
  }
  return logFirst ? deliverLogMessage() : deliver(walk.currentData);
}

// Many messages of the log may lie within the tolerance of one element: its text is read once.
bool LogMerge::elementIsSync() {
  if (examinedElement == walk.currentData) return examinedIsSync;
  const bool message = index.gzdItemList[walk.currentData].getItemType() == GZD_MESSAGE;
  examinedIsSync = message && is_sync(textOf(walk.currentData));
  examinedElement = walk.currentData;
  return examinedIsSync;
}

std::string_view LogMerge::readLogText() {
  readLogId = logIdx + 1;
  log.getEyeLogMsg(logIdx);
  return log.text();
}

const ALLF_DATA& LogMerge::logRecord() {
  log.getEyeLogMsg(logIdx - 1);
  readLogId = logIdx;
  return log.record();
}

}  // namespace gzd
