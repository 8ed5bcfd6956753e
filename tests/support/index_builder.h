// A small vocabulary for indices made by hand, and for what became of them.
#ifndef TESTS_SUPPORT_INDEX_BUILDER_H
#define TESTS_SUPPORT_INDEX_BUILDER_H

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/log.h"
#include "gzd_data.h"
#include "index/index.h"

using namespace gzd;

// Makes entries in the order of the calls; each has a file position of its own, by which its text
// or value is found.
class IndexBuilder {
 public:
  Index index;

  IndexBuilder& start(UINT32 time) { return boundary(time, GZD_BLOCK_START); }
  IndexBuilder& end(UINT32 time) { return boundary(time, GZD_BLOCK_END); }
  IndexBuilder& sample(UINT32 time) { return add(GZD_SAMPLE, SIDE_NONE, time); }
  IndexBuilder& event(int type, UINT32 time, ItemSide side = SIDE_LEFT) {
    return add(type, side, time);
  }
  IndexBuilder& message(UINT32 time, const std::string& text) {
    texts[nextPos] = text;
    return add(GZD_MESSAGE, SIDE_NONE, time);
  }
  IndexBuilder& input(UINT32 time, UINT16 value) {
    values[nextPos] = value;
    return add(GZD_INPUT, SIDE_NONE, time);
  }

  [[nodiscard]] std::string_view textAt(UINT32 itemIndex) const {
    const auto found = texts.find(index.gzdItemList[itemIndex].getFilePos());
    return found == texts.end() ? std::string_view() : std::string_view(found->second);
  }
  [[nodiscard]] UINT16 valueAt(UINT32 itemIndex) const {
    const auto found = values.find(index.gzdItemList[itemIndex].getFilePos());
    return found == values.end() ? UINT16{0} : found->second;
  }

  // The list in one line. "[1000" and "]2000" are boundaries, "s" samples ("+" half a millisecond
  // later, "l" and "r" inside a blink, "d" in front for dummies), "m" messages, "i" inputs,
  // "SBL" ... "EFR" eye events ("!" re-timed, "*" merged).
  [[nodiscard]] std::string describe() const {
    std::string line;
    for (const GZDItem item : index.gzdItemList) {
      if (!line.empty()) line += ' ';
      line += describe(item);
    }
    return line;
  }

 private:
  IndexBuilder& add(int type, UINT16 side, UINT32 time) {
    index.gzdItemList.push_back({nextPos, type, side, UINT16{0}, stamp_of_time(time)});
    nextPos += 10;
    return *this;
  }

  IndexBuilder& boundary(UINT32 time, byte state) {
    auto block = std::make_unique<Recording>();
    block->state = state;
    block->sample_rate = 1000.0f;
    block->updateTime(stamp_of_time(time));
    index.gzdItemList.push_back(GZDItem(block.get()));
    index.allRecordings.push_back(std::move(block));
    return *this;
  }

  static std::string describe(const GZDItem& item) {
    const std::string time = std::to_string(time_of_stamp(item.getTimeStamp()));
    if (item.isRecording()) return (item.isRecordingStart() ? "[" : "]") + time;
    if (item.isSample()) return describeSample(item, time);
    if (item.getItemType() == GZD_MESSAGE) return "m" + time;
    if (item.getItemType() == GZD_INPUT) return "i" + time;
    std::string text = item.isDummy() ? "d" : "";
    text += item.isStartEvent() ? 'S' : 'E';
    text += "BSF"[(item.getItemType() - GZD_START_BLINK) / 2];
    text += item.getEye() == GZD_RIGHT_EYE ? 'R' : 'L';
    text += time;
    if (item.isTimeChanged()) text += '!';
    if (item.isBlinkMerged()) text += '*';
    return text;
  }

  static std::string describeSample(const GZDItem& item, const std::string& time) {
    std::string text = item.isDummy() ? "ds" : "s";
    text += time;
    if (item.getTimeStamp() % 2 == 1) text += '+';
    if (item.isSampleInsideBlink(GZD_LEFT_EYE)) text += 'l';
    if (item.isSampleInsideBlink(GZD_RIGHT_EYE)) text += 'r';
    return text;
  }

  INT64 nextPos = 10;
  std::map<INT64, std::string> texts;
  std::map<INT64, UINT16> values;
};

// Collects what the library logs while it lives.
class LogCapture {
 public:
  LogCapture() {
    lines().clear();
    set_log_function(&take);
  }
  ~LogCapture() { set_log_function(nullptr); }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  [[nodiscard]] static std::string text() {
    std::string all;
    for (const std::string& line : lines()) all += line;
    return all;
  }
  static std::vector<std::string>& lines() {
    static std::vector<std::string> captured;
    return captured;
  }

 private:
  static void take(const char* message) { lines().emplace_back(message); }
};

#endif
