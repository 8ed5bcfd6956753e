// Which goes first, element or message of the log, at the ends and after moves.
#include "walk/log_merge.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "support/log_file.h"

using namespace gzd;

namespace {

// A recording and a log whose clock runs 5000 ms after the tracker's.
struct Fixture {
  explicit Fixture(const std::string& logLines)
      : file("0 TRACKER_TIME 1 5000\n" + logLines + "9999 Quit logger\n") {
    file.openIn(log);
  }

  // What a walk delivers: elements as in IndexBuilder::describe, log messages as "L:" and the text.
  std::string walkAll() {
    std::string result;
    while (const int code = merge.getNextDataMergeWithLog()) {
      if (!result.empty()) result += ' ';
      result += merge.isFromLog() ? fromLog(code) : fromRecording(code);
    }
    EXPECT_FALSE(merge.isFromLog());
    return result;
  }

  IndexBuilder b;
  LogFile file;
  MessageLog log;
  Walk walk;
  LogMerge merge{b.index, walk, log, [this](UINT32 i) { return b.textAt(i); }};

 private:
  std::string fromLog(int code) {
    EXPECT_EQ(code, GZD_MESSAGE);
    const FEVENT& record = merge.logRecord().fe;
    const std::string text(text_of(record.message));
    return text.find(sync_mark) != std::string::npos ? "L:sync" : "L:" + text.substr(1);
  }
  std::string fromRecording(int code) {
    const GZDItem item = b.index.gzdItemList[walk.currentData - 1];
    EXPECT_EQ(code, item.getItemType());
    std::string text(b.textAt(walk.currentData - 1));
    if (!text.empty()) return text;
    return std::to_string(time_of_stamp(item.getTimeStamp()));
  }
};

TEST(LogMerge, AtTheLastElementTheLogGoesFirst) {
  Fixture later("102 a\n");
  later.b.sample(5100);
  EXPECT_EQ(later.walkAll(), "L:sync L:a 5100");
  Fixture sync("");
  sync.b.message(5001, "TRACKER_TIME");
  EXPECT_EQ(sync.walkAll(), "TRACKER_TIME") << "the same in both streams";
}

TEST(LogMerge, AfterAMoveTheLogIsPositionedAnew) {
  Fixture f("100 a\n200 b\n300 c\n");
  f.b.sample(5110).sample(5210).sample(5298).sample(5400);
  EXPECT_EQ(f.walkAll(), "L:sync L:a 5110 L:b 5210 5298 L:c 5400");
  f.merge.moveTo(2);
  EXPECT_EQ(f.walkAll(), "5298 L:c 5400");
  // Past the last message there is none to find.
  f.merge.moveTo(3);
  EXPECT_EQ(f.walkAll(), "5400");
  f.walk.currentData = 0;
  f.merge.rewind();
  EXPECT_EQ(f.walkAll(), "L:sync L:a 5110 L:b 5210 5298 L:c 5400");
}

TEST(LogMerge, AtTheFirstMessageTheElementGoesFirstAfterAMove) {
  Fixture f("100 a\n");
  f.b.sample(5001).sample(5200);
  f.merge.moveTo(0);
  EXPECT_EQ(f.walkAll(), "5001 L:sync L:a 5200");
}

}  // namespace
