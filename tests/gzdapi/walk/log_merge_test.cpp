#include "walk/log_merge.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "support/log_file.h"

using namespace gzd;

namespace {

// A recording and a log whose clock runs 5000 ms behind the tracker's.
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
    return text.find(SYNC_MARK) != std::string::npos ? "L:sync" : "L:" + text.substr(1);
  }
  std::string fromRecording(int code) {
    const GZDItem item = b.index.gzdItemList[walk.currentData - 1];
    EXPECT_EQ(code, item.getItemType());
    std::string text(b.textAt(walk.currentData - 1));
    if (!text.empty()) return text;
    return std::to_string(time_of_stamp(item.getTimeStamp()));
  }
};

TEST(LogMerge, WithoutALogElementsPassThrough) {
  IndexBuilder b;
  b.start(10).sample(11).message(12, "m").end(13);
  MessageLog log;
  Walk walk;
  LogMerge merge(b.index, walk, log, [](UINT32) { return std::string_view(); });
  EXPECT_EQ(merge.getNextDataMergeWithLog(), GZD_RECORDING);
  EXPECT_EQ(walk.lastRecording, b.index.allRecordings[0].get());
  EXPECT_EQ(merge.getNextDataMergeWithLog(), GZD_SAMPLE);
  EXPECT_EQ(merge.getNextDataMergeWithLog(), GZD_MESSAGE);
  EXPECT_EQ(merge.getNextDataMergeWithLog(), GZD_RECORDING);
  EXPECT_EQ(walk.lastRecording, nullptr);
  EXPECT_EQ(merge.getNextDataMergeWithLog(), GZD_END_OF_DATA);
  EXPECT_EQ(walk.currentData, 4u);
  EXPECT_FALSE(merge.isFromLog());
}

TEST(LogMerge, MessagesGoByTime) {
  Fixture f("100 a\n200 b\n300 c\n");
  f.b.start(5050).sample(5150).end(5250);
  EXPECT_EQ(f.walkAll(), "L:sync 5050 L:a 5150 L:b 5250 L:c");
}

TEST(LogMerge, WithinTwoMillisecondsTheLogGoesFirstUnlessItIsLater) {
  // A log message that lies this many milliseconds behind the element.
  for (int behind = -4; behind <= 4; ++behind) {
    Fixture f(std::to_string(100 + behind) + " a\n");
    f.b.sample(5100).sample(5200);
    EXPECT_EQ(f.walkAll(), behind <= 0 ? "L:sync L:a 5100 5200" : "L:sync 5100 L:a 5200") << behind;
  }
}

TEST(LogMerge, TheSameSyncInBothStreamsIsDeliveredOnce) {
  for (const UINT32 time : {4998u, 5000u, 5002u}) {
    Fixture f("100 a\n");
    f.b.message(time, "!TRACKER_TIME").sample(5050).sample(5200);
    EXPECT_EQ(f.walkAll(), "!TRACKER_TIME 5050 L:a 5200") << time;
  }
}

TEST(LogMerge, ASyncOfTheRecordingOnlyIsDroppedBehindASimultaneousMessage) {
  Fixture f("101 a\n");
  f.b.message(5100, "TRACKER_TIME x").sample(5200);
  EXPECT_EQ(f.walkAll(), "L:sync L:a 5200");
}

TEST(LogMerge, ASyncOfTheRecordingOnlyStaysBehindAnEarlierMessage) {
  Fixture f("100 a\n");
  f.b.message(5100, "TRACKER_TIME x").sample(5200);
  EXPECT_EQ(f.walkAll(), "L:sync L:a TRACKER_TIME x 5200");
}

TEST(LogMerge, ASyncOfTheLogOnlyIsDroppedUnlessItIsLater) {
  Fixture first("");
  first.b.sample(5000).sample(5200);
  EXPECT_EQ(first.walkAll(), "5000 5200");
  Fixture later("");
  later.b.sample(4999).sample(5200);
  EXPECT_EQ(later.walkAll(), "4999 L:sync 5200");
}

TEST(LogMerge, AtTheLastElementTheLogGoesFirst) {
  Fixture later("102 a\n");
  later.b.sample(5100);
  EXPECT_EQ(later.walkAll(), "L:sync L:a 5100");
  Fixture sync("");
  sync.b.message(5001, "TRACKER_TIME");
  EXPECT_EQ(sync.walkAll(), "TRACKER_TIME") << "the same in both streams";
}

TEST(LogMerge, AnEmptyMessageAtTheLastElementIsDropped) {
  Fixture f("101\n105 b\n");
  f.b.sample(5100);
  EXPECT_EQ(f.walkAll(), "L:sync 5100 L:b");
}

TEST(LogMerge, AfterAMoveTheLogIsPositionedAnew) {
  Fixture f("100 a\n200 b\n300 c\n");
  f.b.sample(5110).sample(5210).sample(5298).sample(5400);
  EXPECT_EQ(f.walkAll(), "L:sync L:a 5110 L:b 5210 5298 L:c 5400");
  f.merge.moveTo(2);
  EXPECT_EQ(f.walkAll(), "5298 L:c 5400");
  // Behind the last message there is none to find.
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

TEST(LogMerge, APlaceCanBeRestored) {
  Fixture f("100 a\n");
  f.b.sample(5050).sample(5200);
  f.merge.getNextDataMergeWithLog();
  const Walk walk = f.walk;
  const LogMerge::Position place = f.merge.position();
  EXPECT_EQ(f.walkAll(), "5050 L:a 5200");
  f.walk = walk;
  f.merge.restore(place);
  EXPECT_TRUE(f.merge.isFromLog());
  EXPECT_EQ(f.walkAll(), "5050 L:a 5200");
}

TEST(LogMerge, WithoutSyncsEverythingIsDeliveredOnceAndNearlyInOrder) {
  std::mt19937 random(11);
  for (int round = 0; round < 200; ++round) {
    std::string lines;
    int messages = 1, now = 10;
    for (; messages < 30; ++messages) {
      now += static_cast<int>(random() % 5);
      lines += std::to_string(now) + " m\n";
    }
    Fixture f(lines);
    UINT32 time = 5008;
    const UINT32 elements = static_cast<UINT32>(random() % 40);
    for (UINT32 i = 0; i < elements; ++i)
      f.b.message(time += static_cast<UINT32>(random() % 4), "e");
    UINT32 fromRecording = 0, newest = 0;
    int fromLog = 0;
    while (f.merge.getNextDataMergeWithLog() != GZD_END_OF_DATA) {
      UINT32 at = 0;
      if (f.merge.isFromLog()) {
        at = static_cast<UINT32>(f.log.messages()[static_cast<std::size_t>(fromLog++)].time);
        ASSERT_EQ(f.merge.logRecord().fe.sttime, at);
      } else {
        ASSERT_EQ(f.walk.currentData, ++fromRecording);
        at = time_of_stamp(f.b.index.gzdItemList[fromRecording - 1].getTimeStamp());
      }
      ASSERT_GE(at + 2, newest);
      newest = std::max(newest, at);
    }
    ASSERT_EQ(fromLog, messages);
    ASSERT_EQ(fromRecording, elements);
  }
}

TEST(LogMerge, BlocksUseTheirOwnTimes) {
  Fixture f("103 a\n");
  f.b.start(5100).sample(5200);
  EXPECT_EQ(f.walkAll(), "L:sync 5100 L:a 5200");
  Fixture shifted("103 a\n");
  shifted.b.start(5100).sample(5200);
  shifted.b.index.allRecordings[0]->time_collision_detected = true;
  EXPECT_EQ(shifted.walkAll(), "L:sync 5101 L:a 5200");
}

TEST(LogMerge, AnEmptyRecordingDeliversTheLog) {
  Fixture f("100 a\n");
  EXPECT_EQ(f.walkAll(), "L:sync L:a");
}

}  // namespace
