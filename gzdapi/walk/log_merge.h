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
      : index(items), walk(position), log(messageLog), textOf(std::move(reader)) {}

  // Steps to the next element in time order and returns its code: GZD_MESSAGE for a message of the
  // log, GZD_END_OF_DATA at the end.
  int getNextDataMergeWithLog() {
    if (!log.isLoaded()) return deliver(walk.currentData);
    readLogId = -1;
    return getNextDataWLogInternal();
  }

  // Steps to the next element when it is a sample and no log is merged; else does nothing. Returns
  // whether it has.
  bool stepToSample() noexcept {
    const UINT32 next = walk.currentData;
    if (log.isLoaded() || next >= index.size() || !index.gzdItemList.isPlainAt(next)) return false;
    walk.currentData = next + 1;
    return true;
  }

  // True when the element just announced is a message of the log.
  [[nodiscard]] bool isFromLog() const { return isFromLogFile; }
  // Its record; only while isFromLog(). It stays until the next step.
  [[nodiscard]] const ALLF_DATA& logRecord();

  // Back to the first message of the log.
  void rewind() { placeLog(0, readLogId); }
  // Behind the last message of the log.
  void skipLog() { placeLog(static_cast<int>(log.messages().size()), readLogId); }
  // Moves the walk to the element at `place`: its block is that of the walk, and the log goes on at
  // its time.
  void moveTo(UINT32 place) {
    walk.currentData = place;
    walk.lastRecording = index.blockAt(place);
    placeLog(-1, -1);
  }
  // As before the first step.
  void startAnew() {
    rewind();
    readLogId = -1;
    examinedElement = no_element;
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
    return {logIdx, readLogId, isFromLogFile, examinedElement, examinedIsSync};
  }
  void restore(const Position& place) {
    placeLog(place.logIdx, place.readLogId);
    isFromLogFile = place.isFromLogFile;
    examinedElement = place.examinedElement;
    examinedIsSync = place.examinedIsSync;
  }

 private:
  // Announces the element at index i.
  int deliver(UINT32 i) {
    if (i >= index.size()) return GZD_END_OF_DATA;
    walk.currentData = i + 1;
    const GZDItem item = index.gzdItemList[i];
    if (!item.isRecording()) return item.getItemType();
    walk.lastRecording = item.isRecordingStart() ? item.getRecording() : nullptr;
    return GZD_RECORDING;
  }

  void placeLog(int next, int read) {
    logIdx = next;
    readLogId = read;
    isFromLogFile = false;
    examinedElement = no_element;
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

  const Index& index;
  Walk& walk;
  MessageLog& log;
  TextReader textOf;

  int logIdx = 0;      // the message of the log that comes next; negative: to be found
  int readLogId = -1;  // `logIdx` behind the message that was read for the element just announced
  bool isFromLogFile = false;
  static constexpr UINT32 no_element = 0xFFFFFFFFu;
  UINT32 examinedElement = no_element;  // the element last asked whether it is a sync message
  bool examinedIsSync = false;
};

}  // namespace gzd

#endif
