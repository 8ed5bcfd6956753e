// How trials are cut.
#include "walk/trials.h"

#include <gtest/gtest.h>

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

  // "start-end@starttime-endtime/duration", "?" after one without a block.
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

// ---- by blocks ----------------------------------------------------------------------------------

// ---- by messages --------------------------------------------------------------------------------

TEST(TrialsByBlocks, AMessageLogChangesNothing) {
  Fixture f("0 TRACKER_TIME 1 5000\n120 GO\n999 Quit logger\n");
  f.b.start(5100).sample(5110).end(5200).start(5300);
  EXPECT_EQ(f.collected(), "0-3@5100-5200/100");
  EXPECT_EQ(f.walk.lastRecording, nullptr) << "back at the beginning";
  EXPECT_EQ(f.merge.getNextDataMergeWithLog(), GZD_MESSAGE);
  EXPECT_TRUE(f.merge.isFromLog());
}

// ---- by input values ----------------------------------------------------------------------------

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

}  // namespace
