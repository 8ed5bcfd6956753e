#include "walk/trials.h"

#include <gtest/gtest.h>

#include <random>

#include "support/log_file.h"

using namespace gzd;

namespace {

char* text(const char* s) {
  return const_cast<char*>(s);
}

struct Fixture {
  explicit Fixture(const std::string& logLines = "") : file(logLines) {
    if (!logLines.empty()) file.openIn(log);
  }

  // "start-end@starttime-endtime/duration", "?" behind one without a block.
  std::string describe() {
    std::string all;
    for (const GZDTrial& t : trials.list()) {
      if (!all.empty()) all += ' ';
      all += std::to_string(t.getStarting()) + "-" + std::to_string(t.getEnding()) + "@" +
             std::to_string(t.starttime) + "-" + std::to_string(t.endtime) + "/" +
             std::to_string(t.duration) + (t.rec == nullptr ? "?" : "");
    }
    return all;
  }
  std::string collected() {
    trials.collectTrials();
    return describe();
  }
  std::string cutBy(const char* start, const char* end) {
    trials.setTrialIdentifier(text(start), text(end));
    return describe();
  }

  IndexBuilder b;
  LogFile file;
  MessageLog log;
  Walk walk;
  LogMerge merge{b.index, walk, log, [this](UINT32 i) { return b.textAt(i); }};
  Trials trials{b.index, walk, merge, log, [this](UINT32 i) { return read(i); }};

 private:
  const ALLF_DATA* read(UINT32 i) {
    record = {};
    message.clear();
    const std::string_view words = b.textAt(i);
    std::copy(words.begin(), words.end(), message.text.begin());
    record.fe.message = message.asLString();
    record.fe.input = b.valueAt(i);
    return &record;
  }

  ALLF_DATA record{};
  MessageText message;
};

// ---- by blocks ---------------------------------------------------------------------------------

TEST(TrialsByBlocks, EachBlockIsOne) {
  Fixture f;
  f.b.message(5, "x").start(10).sample(11).end(20).message(25, "y").start(30).sample(31).end(40);
  EXPECT_EQ(f.collected(), "1-4@10-20/10 5-8@30-40/10");
  EXPECT_EQ(f.trials.list()[1].rec, f.b.index.allRecordings[2].get());
  EXPECT_EQ(f.walk.currentData, 0u);
}

TEST(TrialsByBlocks, ABlockAtTheVeryBeginningCountsAsWell) {
  Fixture f;
  f.b.start(10).end(20).start(30).end(40);
  EXPECT_EQ(f.collected(), "0-2@10-20/10 2-4@30-40/10");
}

TEST(TrialsByBlocks, ASecondStartInsideATrialOnlyChangesTheBlock) {
  Fixture f;
  f.b.start(10).start(15).end(20).end(21);
  EXPECT_EQ(f.collected(), "0-3@10-20/10");
  EXPECT_EQ(f.trials.list()[0].rec, f.b.index.allRecordings[1].get());
}

TEST(TrialsByBlocks, AnOpenTrialAtTheEndIsRemoved) {
  Fixture f;
  f.b.message(5, "x").start(10).end(20).start(30).sample(31);
  const LogCapture log;
  EXPECT_EQ(f.collected(), "1-3@10-20/10");
  EXPECT_EQ(log.text(), "removed last trial\n");
  EXPECT_EQ(f.walk.currentData, 0u);
}

TEST(TrialsByBlocks, AnEmptyIndexHasNone) {
  Fixture f;
  EXPECT_EQ(f.collected(), "");
  EXPECT_TRUE(f.trials.areCollected());
}

// ---- by messages -------------------------------------------------------------------------------

TEST(TrialsByMessages, StartAndEndCut) {
  Fixture f;
  f.b.message(1, "x").start(10).message(12, "TRIALID 1").sample(13).message(18, "TRIAL_END");
  f.b.message(22, "TRIALID 2").message(28, "TRIAL_END").end(30);
  // The block opens a trial of its own, which the first message closes.
  EXPECT_EQ(f.cutBy("TRIALID", "TRIAL_END"), "1-2@10-12/2 2-5@12-18/6 5-7@22-28/6");
  EXPECT_EQ(f.walk.currentData, 0u);
}

TEST(TrialsByMessages, AStartInsideATrialClosesItThere) {
  Fixture f;
  f.b.message(1, "x")
      .start(10)
      .message(12, "TRIALID 1")
      .sample(13)
      .message(18, "TRIALID 2")
      .end(30);
  EXPECT_EQ(f.cutBy("TRIALID", nullptr), "1-2@10-12/2 2-4@12-18/6 4-6@18-30/0");
}

TEST(TrialsByMessages, ATrialThatOnlyTheLastBlockEndClosesLeavesTheWalkAtTheEnd) {
  Fixture f;
  f.b.message(1, "x").start(10).message(12, "TRIALID 1").sample(13).end(30);
  EXPECT_EQ(f.cutBy("TRIALID", nullptr), "1-2@10-12/2 2-5@12-30/0");
  EXPECT_EQ(f.walk.currentData, 5u);
}

TEST(TrialsByMessages, ATrialThatStartsWithTheBlocksEndIsRemoved) {
  Fixture f;
  f.b.message(1, "x").start(10).message(20, "TRIALID 1").end(20);
  const LogCapture log;
  EXPECT_EQ(f.cutBy("TRIALID", nullptr), "1-2@10-20/10");
  EXPECT_EQ(log.lines().back(), "removed last trial\n");
  EXPECT_EQ(f.walk.currentData, 0u);
}

TEST(TrialsByMessages, ALaterBlockStartClosesAtTheBlockEndBefore) {
  Fixture f;
  f.b.message(1, "x").start(10).message(12, "TRIALID 1").end(20).start(30).end(40);
  EXPECT_EQ(f.cutBy("TRIALID", nullptr), "1-2@10-12/2 2-4@12-20/0 4-6@30-40/0");
}

TEST(TrialsByMessages, DrawingMessagesDoNeither) {
  Fixture f;
  f.b.message(1, "x").start(10).message(12, "!V TRIALID 1").message(15, "!V END").end(20);
  f.b.start(30).message(31, "TRIALID").message(35, "x !V END").message(36, "END").end(40);
  EXPECT_EQ(f.cutBy("TRIALID", "END"), "1-5@10-20/0 5-6@30-31/1 6-9@31-36/5");
}

TEST(TrialsByMessages, AMarkBeforeAnyBlockWaitsForItsBlock) {
  Fixture f;
  f.b.message(5, "TRIALID 1").message(6, "TRIALID 1b").start(10).message(18, "END").end(20);
  EXPECT_EQ(f.cutBy("TRIALID", "END"), "0-4@5-18/13");
}

TEST(TrialsByMessages, WithAnEndIdentifierBlockStartsAreWeak) {
  // The trial that the block opens does not count as started: an end mark leaves it alone.
  Fixture f;
  f.b.message(1, "x").start(10).message(12, "END").message(14, "GO").message(16, "END").end(20);
  EXPECT_EQ(f.cutBy("GO", "END"), "1-3@10-14/4 3-5@14-16/2");
}

TEST(TrialsByMessages, AnEndIdentifierAloneKeepsBlocksFromClosing) {
  Fixture f;
  f.b.message(1, "x").start(10).message(12, "END").end(20).start(30).message(32, "END").end(40);
  const LogCapture log;
  EXPECT_EQ(f.cutBy(nullptr, "END"), "1-4@10-20/0 4-7@30-40/0");
  EXPECT_EQ(log.text(), "");
  EXPECT_EQ(f.walk.currentData, 7u);
}

TEST(TrialsByMessages, ABlockAtTheVeryBeginningCannotCloseAMessageTrial) {
  // After the first mark the block is looked up by its place, and place 0 does not count.
  Fixture f;
  f.b.start(10).message(12, "GO").message(16, "END").end(20);
  const LogCapture log;
  EXPECT_EQ(f.cutBy("GO", "END"), "0-1@10-12/2");
  EXPECT_EQ(log.text(), "removed last trial\n");
}

TEST(TrialsByMessages, IdentifiersAreKept) {
  Fixture f;
  char go[] = "GO";
  f.trials.setTrialIdentifier(go, nullptr);
  EXPECT_EQ(f.trials.getTrialIdentifier(), go);
  EXPECT_EQ(f.trials.getEndTrialIdentifier(), nullptr);
  f.trials.setTrialIdentifier(nullptr, go);
  EXPECT_EQ(f.trials.getTrialIdentifier(), nullptr);
  EXPECT_EQ(f.trials.getEndTrialIdentifier(), go);
}

TEST(TrialsByBlocks, AMessageLogChangesNothing) {
  Fixture f("0 TRACKER_TIME 1 5000\n120 GO\n999 Quit logger\n");
  f.b.start(5100).sample(5110).end(5200).start(5300);
  EXPECT_EQ(f.collected(), "0-3@5100-5200/100");
  EXPECT_EQ(f.walk.lastRecording, nullptr) << "back at the beginning";
  EXPECT_EQ(f.merge.getNextDataMergeWithLog(), GZD_MESSAGE);
  EXPECT_TRUE(f.merge.isFromLog());
}

TEST(TrialsByBlocks, ABlockOutOfOrderThatStaysOpenLeavesTheWalkAtTheEnd) {
  Fixture f("0 TRACKER_TIME 1 5000\n120 GO\n999 Quit logger\n");
  f.b.start(5100).end(5500).start(5200);
  EXPECT_EQ(f.collected(), "0-2@5100-5500/400 2-2@5200-5500/0");
  EXPECT_EQ(f.walk.currentData, 3u);
  EXPECT_EQ(f.merge.getNextDataMergeWithLog(), GZD_END_OF_DATA);
}

TEST(TrialMoves, AJumpSkipsTheLogBeforeTheTrial) {
  Fixture f("0 TRACKER_TIME 1 5000\n120 a\n320 b\n999 Quit logger\n");
  f.b.start(5100).sample(5110).end(5200).start(5300).sample(5310).sample(5330).end(5400);
  ASSERT_EQ(f.trials.jumpToTrial(1), 0);
  EXPECT_EQ(f.merge.getNextDataMergeWithLog(), GZD_RECORDING);
  EXPECT_EQ(f.merge.getNextDataMergeWithLog(), GZD_SAMPLE);
  EXPECT_EQ(f.merge.getNextDataMergeWithLog(), GZD_MESSAGE);
  EXPECT_EQ(f.merge.logRecord().fe.sttime, 5320u);
}

TEST(TrialsByMessages, MessagesOfTheLogCutAsWell) {
  Fixture f("0 TRACKER_TIME 1 5000\n120 GO\n180 END\n999 Quit logger\n");
  f.b.message(4000, "x").start(5100).sample(5110).sample(5150).sample(5190).end(5200);
  EXPECT_EQ(f.cutBy("GO", "END"), "1-3@5100-5120/20 3-5@5120-5180/60");
  EXPECT_EQ(f.walk.currentData, 0u);
  EXPECT_EQ(f.merge.getNextDataMergeWithLog(), GZD_MESSAGE);
  EXPECT_FALSE(f.merge.isFromLog());
}

// ---- by input values ---------------------------------------------------------------------------

TEST(TrialsByInput, ValuesCut) {
  Fixture f;
  f.b.message(1, "12").start(10).input(11, 12).message(12, "15").input(14, 15).input(16, 12);
  f.b.input(17, 3).input(18, 15).end(20);
  const LogCapture log;
  EXPECT_EQ(f.cutBy("inPut_type_12", "15"), "1-2@10-11/1 2-5@11-14/3 5-8@16-18/2");
  EXPECT_EQ(log.text(),
            "Input Split option found :inPut_type_12  12\n"
            "Start Input: 12\n End Input: 15\n");
}

TEST(TrialsByInput, NumbersAreShortAndThePrefixMayStandAnywhere) {
  Fixture f;
  const LogCapture log;
  f.cutBy("inPut_type_1234", nullptr);
  EXPECT_EQ(log.text(),
            "Set TrialEndMesage Empty\n"
            "Input Split option found :inPut_type_1234  1234\n"
            "Start Input: 0\n End Input: 0\n");
  f.cutBy("ab inPut_type_7", "999");
  EXPECT_EQ(log.lines().back(), "Start Input: 0\n End Input: 999\n");  // "pe_7"
}

TEST(TrialsByInput, EachCallDecidesAnewHowTrialsAreCut) {
  Fixture f;
  f.b.start(10).input(11, 12).message(12, "GO").input(13, 15).end(20);
  const LogCapture log;
  Fixture fresh;
  fresh.b.start(10).input(11, 12).message(12, "GO").input(13, 15).end(20);
  EXPECT_EQ(f.cutBy("inPut_type_12", "15"), "0-1@10-11/1");
  EXPECT_EQ(f.cutBy("GO", nullptr), fresh.cutBy("GO", nullptr));
  EXPECT_EQ(f.cutBy(nullptr, nullptr), "0-5@10-20/10");
}

// ---- moving ------------------------------------------------------------------------------------

TEST(TrialMoves, JumpNextPreviousAndByTime) {
  Fixture f;
  f.b.message(5, "x").start(10).end(20).start(30).end(40).start(50).end(60);
  EXPECT_EQ(f.trials.gotoPreviousTrial(), -1);
  EXPECT_EQ(f.trials.gotoNextTrial(), 0);
  EXPECT_EQ(f.walk.currentTrial, 0u);
  EXPECT_EQ(f.walk.currentData, 1u);
  EXPECT_EQ(f.trials.gotoPreviousTrial(), -1);
  EXPECT_EQ(f.trials.jumpToTrial(2), 0);
  EXPECT_EQ(f.trials.gotoNextTrial(), -1);
  EXPECT_EQ(f.trials.jumpToTrial(3), -1);
  EXPECT_EQ(f.trials.jumpToTrial(-1), -1);
  EXPECT_EQ(f.trials.count(), 3);
  EXPECT_EQ(f.walk.currentData, 5u);
  EXPECT_EQ(f.trials.gotoPreviousTrial(), 0);
  EXPECT_EQ(f.walk.currentTrial, 1u);
  EXPECT_EQ(f.trials.gotoTrialWithStartTime(10), 0);
  EXPECT_EQ(f.walk.currentTrial, 0u);
  EXPECT_EQ(f.trials.gotoTrialWithEndTime(60), 0);
  EXPECT_EQ(f.walk.currentTrial, 2u);
  EXPECT_EQ(f.trials.gotoTrialWithStartTime(11), -1);
  EXPECT_EQ(f.trials.gotoTrialWithEndTime(10), -1);
  EXPECT_EQ(f.walk.currentTrial, 2u);
}

TEST(TrialMoves, Headers) {
  Fixture f;
  f.b.start(10).end(20);
  TRIAL header{};
  EXPECT_EQ(f.trials.getTrialHeaders(nullptr), -1);
  EXPECT_EQ(f.trials.getTrialHeaders(&header), -1);
  EXPECT_EQ(f.trials.getTrialHeaders(), nullptr);
  f.trials.jumpToTrial(0);
  EXPECT_EQ(f.trials.getTrialHeaders(&header), 0);
  EXPECT_EQ(header.rec, f.b.index.allRecordings[0].get());
  EXPECT_EQ(header.starttime, 10u);
  EXPECT_EQ(header.endtime, 20u);
  EXPECT_EQ(header.duration, 10u);
}

// ---- by time -----------------------------------------------------------------------------------

TEST(TrialLookUp, GivesThePrescalerAndWindowAndLeavesTheWalk) {
  Fixture f;
  f.b.start(10).sample(11).end(20).start(30).end(40);
  f.b.index.allRecordings[0]->gaze_prescaler = 5.0f;
  f.b.index.allRecordings[0]->window_width = 7;
  f.merge.getNextDataMergeWithLog();
  f.merge.getNextDataMergeWithLog();
  int width = 1, height = 2;
  EXPECT_EQ(f.trials.getGazePrescaler(20), 5.0f);
  EXPECT_EQ(f.trials.getGazePrescaler(21), 0.0f);
  EXPECT_EQ(f.trials.getWindowSize(25, &width, &height), 0);
  EXPECT_EQ(width, 1);
  EXPECT_EQ(f.trials.getWindowSize(10, &width, &height), 0);
  EXPECT_EQ(width, 7);
  EXPECT_EQ(height, 190);
  EXPECT_EQ(f.walk.currentData, 2u);
  EXPECT_EQ(f.walk.lastRecording, f.b.index.allRecordings[0].get());
}

TEST(TrialTimes, EqualsASearchFromTheLastIntervalToTheFirst) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    std::vector<TrialTimes::Interval> intervals(random() % 12);
    for (auto& i : intervals) i = {UINT32(random() % 40), UINT32(random() % 40)};
    if (round % 3 == 0) intervals.push_back({5, 0xFFFFFFFFu});
    TrialTimes times;
    times.build(intervals);
    for (UINT32 time = 0; time < 45; ++time) {
      UINT32 expected = TrialTimes::NOWHERE;
      for (UINT32 i = 0; i < intervals.size(); ++i) {
        if (intervals[i].start <= time && time <= intervals[i].end) expected = i;
      }
      ASSERT_EQ(times.at(time), expected) << round << " " << time;
    }
  }
}

}  // namespace
