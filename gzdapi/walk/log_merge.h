// The walk over a recording's elements, with the messages of the experiment's log merged in.
#ifndef GZDAPI_LOG_MERGE_H
#define GZDAPI_LOG_MERGE_H

#include <functional>
#include <string_view>
#include <utility>

#include "index/index.h"
#include "walk/logmsg.h"
#include "walk/walk.h"

namespace gzd {

class LogMerge {
 public:
  // Gives the text of the element at an index, empty when it is no message; valid until the next
  // call.
  using TextReader = std::function<std::string_view(UINT32 itemIndex)>;

  // All are borrowed and must outlive this. The log may be read after this is made; call rewind()
  // then.
  LogMerge(const Index& items, Walk& position, MessageLog& messageLog, TextReader reader)
      : index_(items), walk_(position), log_(messageLog), textOf_(std::move(reader)) {}

  // Steps to the next element in time order and returns its code: GZD_MESSAGE for a message of the
  // log, GZD_END_OF_DATA at the end.
  int getNextDataMergeWithLog() {
    if (!log_.isLoaded()) return deliver(walk_.currentData);
    readLogId_ = -1;
    return getNextDataWLogInternal();
  }

  // Steps to the next element when it is a sample like the one before and no log is merged; else
  // does nothing. Returns whether it has.
  bool stepToSample() noexcept {
    if (log_.isLoaded() || !index_.gzdItemList.isPlainNearby(walk_.currentData)) return false;
    ++walk_.currentData;
    return true;
  }

  // Steps over the samples that come next, up to before the first element that is none; over none
  // while a log is merged. Returns how many. Costs little more than a look at that element.
  UINT32 skipSamples() {
    const UINT32 first = walk_.currentData;
    if (log_.isLoaded() || first >= index_.size()) return 0;
    walk_.currentData =
        static_cast<UINT32>(index_.gzdItemList.nextLandmark(first, index_.gzdItemList.size()));
    return walk_.currentData - first;
  }

  // Whether messages of a log are merged.
  [[nodiscard]] bool hasLog() const { return log_.isLoaded(); }
  // True when the element just announced is a message of the log.
  [[nodiscard]] bool isFromLog() const { return isFromLogFile_; }
  // Its record; only while isFromLog(). It stays until the next step.
  [[nodiscard]] const ALLF_DATA& logRecord();

  // Back to the first message of the log.
  void rewind() { placeLog(0, readLogId_); }
  // Past the last message of the log.
  void skipLog() { placeLog(static_cast<int>(log_.messages().size()), readLogId_); }
  // Moves the walk to the element at `place`: its block is that of the walk, and the log goes on at
  // its time.
  void moveTo(UINT32 place) {
    walk_.currentData = place;
    walk_.lastRecording = index_.blockAt(place);
    placeLog(-1, -1);
  }
  // As before the first step.
  void startAnew() {
    rewind();
    readLogId_ = -1;
    examinedElement_ = no_element;
  }

  // The place in the log, for those who walk ahead and come back.
  struct Position {
    int logIdx;
    int readLogId;
    bool isFromLogFile;
    UINT32 examinedElement;
    bool examinedIsSync;
  };
  [[nodiscard]] Position position() const {
    return {logIdx_, readLogId_, isFromLogFile_, examinedElement_, examinedIsSync_};
  }
  void restore(const Position& place) {
    placeLog(place.logIdx, place.readLogId);
    isFromLogFile_ = place.isFromLogFile;
    examinedElement_ = place.examinedElement;
    examinedIsSync_ = place.examinedIsSync;
  }

 private:
  // Announces the element at index i.
  int deliver(UINT32 i) {
    if (i >= index_.size()) return GZD_END_OF_DATA;
    walk_.currentData = i + 1;
    const GZDItem item = index_.gzdItemList[i];
    if (!item.isRecording()) return item.getItemType();
    walk_.lastRecording = item.isRecordingStart() ? item.getRecording() : nullptr;
    return GZD_RECORDING;
  }

  void placeLog(int next, int read) {
    logIdx_ = next;
    readLogId_ = read;
    isFromLogFile_ = false;
    examinedElement_ = no_element;
  }

  int getNextDataWLogInternal();
  [[nodiscard]] bool logExhausted() const;
  [[nodiscard]] UINT64 elementTime() const;
  [[nodiscard]] UINT64 nextLogTime() const;
  bool findLogPosition(UINT64 time);
  int deliverLogMessage();
  // What a pair within the tolerance comes to: a code, or nothing delivered yet.
  static constexpr int merge_goes_on = -1;
  int mergeSimultaneous(UINT64 time);
  int mergeAtLastElement();
  [[nodiscard]] bool elementIsSync();
  std::string_view readLogText();

  const Index& index_;
  Walk& walk_;
  MessageLog& log_;
  TextReader textOf_;

  int logIdx_ = 0;      // the message of the log that comes next; negative: to be found
  int readLogId_ = -1;  // `logIdx_` after the message that was read for the element just announced
  bool isFromLogFile_ = false;
  static constexpr UINT32 no_element = 0xFFFFFFFFu;
  UINT32 examinedElement_ = no_element;  // the element last asked whether it is a sync message
  bool examinedIsSync_ = false;
};

}  // namespace gzd

#endif
