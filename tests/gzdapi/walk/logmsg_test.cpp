#include "walk/logmsg.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "base/GZDException.h"
#include "support/log_file.h"

using namespace gzd;

namespace {

constexpr const char* SYNC = "100.0 TRACKER_TIME 1 5000.0\n";
constexpr const char* QUIT = "999 Quit logger\n";

// "time|text" of every message of a log with these lines.
std::vector<std::string> messagesOf(const std::string& lines, bool* loaded = nullptr) {
  const LogFile file(lines);
  MessageLog log;
  const int count = file.openIn(log);
  if (loaded != nullptr) *loaded = log.isLoaded();
  std::vector<std::string> result;
  for (int i = 0; i < count; ++i) {
    log.getEyeLogMsg(i);
    result.push_back(std::to_string(log.messages()[static_cast<std::size_t>(i)].time) + "|" +
                     std::string(log.text()));
  }
  return result;
}

using Lines = std::vector<std::string>;

TEST(MessageLog, TimesMoveToTheTrackersClock) {
  bool loaded = false;
  EXPECT_EQ(messagesOf(std::string("1 before\n") + SYNC + "150.4 a b\n150.5 c\n90 early\n" + QUIT,
                       &loaded),
            (Lines{"5000| TRACKER_TIME 1 5000.0", "5050| a b", "5051| c", "4990| early"}));
  EXPECT_TRUE(loaded);
}

TEST(MessageLog, EachSyncSetsTheClockAnew) {
  const LogFile file(std::string(SYNC) + "110 a\n200 TRACKER_TIME 2 6000.7\n210 b\n" + QUIT);
  MessageLog log;
  EXPECT_EQ(file.openIn(log), 4);
  ASSERT_EQ(log.syncs().size(), 2u);
  EXPECT_EQ(log.syncs()[1].startIdx, 2);
  EXPECT_EQ(log.syncs()[1].order, 2);
  EXPECT_EQ(log.messages()[2].time, 6001u);  // rounded
  EXPECT_EQ(log.messages()[3].time, 6010u);  // cut
}

TEST(MessageLog, WithoutTheClosingLineMessagesCountButAreNotMerged) {
  bool loaded = true;
  EXPECT_EQ(messagesOf(std::string(SYNC) + "110 a\n", &loaded).size(), 2u);
  EXPECT_FALSE(loaded);
}

TEST(MessageLog, WithoutASyncThereAreNoMessages) {
  bool loaded = true;
  EXPECT_EQ(messagesOf(std::string("1 a\n2 b\n") + QUIT, &loaded), Lines{});
  EXPECT_FALSE(loaded);
  EXPECT_EQ(messagesOf(""), Lines{});
}

TEST(MessageLog, MalformedSyncsAreSkippedWithALine) {
  for (const char* bad : {"100.0 TRACKER_TIME 1\n", "TRACKER_TIME 1 5000\n",
                          "100 TRACKER_TIME one 5000\n", "100 TRACKER_TIME 1 inf\n"}) {
    testing::internal::CaptureStdout();
    const Lines lines = messagesOf(std::string(bad) + "110 a\n" + SYNC + "120 b\n" + QUIT);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ERROR: incorrect TRACKER_TIME format\n");
    EXPECT_EQ(lines, (Lines{"5000| TRACKER_TIME 1 5000.0", "5020| b"})) << bad;
  }
}

TEST(MessageLog, OnlyFiniteDecimalNumbersAreTimes) {
  EXPECT_EQ(messagesOf(
                std::string(SYNC) + "no number\n\nnan x\ninf x\n1e999 x\n" + std::string(400, '9') +
                " x\n-9000 neg\n1.5e2x\n +120 plus\n. x\n-1e-999 tiny\n0." + std::string(400, '0') +
                "1e9 tinier\n4294962395 last\n4294962396 far\n" + "1e300 further\n" + QUIT),
            (Lines{"5000| TRACKER_TIME 1 5000.0", "0| neg", "5050|x", "5020| plus", "4900| tiny",
                   "4900| tinier", "4294967295| last", "4294967295| far", "4294967295| further"}));
}

TEST(MessageLog, LineEndsFallAway) {
  EXPECT_EQ(messagesOf(std::string(SYNC) + "110 a\r\n120\n130 b\r"),
            (Lines{"5000| TRACKER_TIME 1 5000.0", "5010| a", "5020|", "5030| b\r"}));
}

TEST(MessageLog, TheRecordHolds260Characters) {
  const std::string text(300, 'x');
  const LogFile file(std::string(SYNC) + "110" + text + "\n" + QUIT);
  MessageLog log;
  file.openIn(log);
  EXPECT_EQ(log.getEyeLogMsg(1), "5010" + text + "\n");
  const FEVENT& record = log.record().fe;
  EXPECT_EQ(record.type, GZD_MESSAGE);
  EXPECT_EQ(record.sttime, 5010u);
  EXPECT_EQ(record.entime, 0u);
  EXPECT_EQ(record.message->len, 260);
  EXPECT_EQ(text_of(record.message), text.substr(0, 260));
  log.getEyeLogMsg(0);
  EXPECT_EQ(text_of(record.message), " TRACKER_TIME 1 5000.0");
}

TEST(MessageLog, LinesLongerThanTheBufferGoOnAsLinesOfTheirOwn) {
  const Lines lines = messagesOf(std::string(SYNC) + "110 " + std::string(5000, 'x') + "\n120 b\n");
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[1].size(), std::string("5010|").size() + 4095);
  EXPECT_EQ(lines[2], "5020| b");
}

// A message that is now cut, or gone, is none that was empty.
TEST(MessageLog, ALogThatShrinksIsAnError) {
  const std::string head = std::string(SYNC) + "110 a\n120 b";
  for (const std::size_t left : {head.size() + 1, head.size(), head.size() - 2, std::size_t{0}}) {
    const LogFile file(head + "\n" + std::string(9000, ' ') + "\n" + QUIT);
    MessageLog log;
    ASSERT_EQ(file.openIn(log), 3);
    ASSERT_EQ(truncate(file.path.c_str(), static_cast<off_t>(left)), 0);
    if (left > head.size()) {
      EXPECT_STREQ(log.getEyeLogMsg(2), "5020 b\n");
    } else {
      EXPECT_THROW(log.getEyeLogMsg(2), GZDException) << left;
    }
  }
}

TEST(MessageLog, AnythingButARegularFileIsNoLog) {
  MessageLog log;
  const LogCapture capture;
  log.setEyeLogFileName("");
  EXPECT_EQ(capture.text(), "");
  log.setEyeLogFileName("/nonexistent/tq.log");
  EXPECT_EQ(capture.text(), "Log file name /nonexistent/tq.log \n");
  EXPECT_EQ(log.openEyeLogFile(), -1);
  EXPECT_EQ(log.getNumOfLogMsg(), 0);
  const std::string fifo = testing::TempDir() + "fifo" + std::to_string(getpid());
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  log.setEyeLogFileName(fifo.c_str());
  EXPECT_EQ(log.openEyeLogFile(), -1);
  std::remove(fifo.c_str());
}

TEST(MessageLog, TheComparatorToleratesLessThanTwoMilliseconds) {
  EXPECT_TRUE(tq_log_msg_comparator({10, 0}, {12, 0}));
  EXPECT_FALSE(tq_log_msg_comparator({10, 0}, {11, 0}));
  EXPECT_FALSE(tq_log_msg_comparator({12, 0}, {10, 0}));
}

}  // namespace
