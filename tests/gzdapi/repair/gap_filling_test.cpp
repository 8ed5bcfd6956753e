#include "repair/gap_filling.h"

#include <gtest/gtest.h>

#include "support/recording_fixture.h"

using namespace gzd;

namespace {

// ---- gaps between samples
// ------------------------------------------------------------------------

// Samples as a scan meets them.
class Stream {
 public:
  explicit Stream(float sampleRate) : rate(sampleRate) {}

  Index index;
  DummyBudget budget;
  SampleClock clock;
  float rate;

  Stream& sample(UINT32 time) {
    const UINT64 stamp = clock.stampOf(time);
    clock.fillGap(index, stamp, rate, budget);
    index.gzdItemList.push_back({7, GZD_SAMPLE, SIDE_NONE, UINT16{1}, stamp});
    clock.advance(time);
    return *this;
  }
  Stream& samples(std::initializer_list<UINT32> times) {
    for (const UINT32 time : times) sample(time);
    return *this;
  }
  [[nodiscard]] int dummies() const {
    int count = 0;
    for (const GZDItem item : index.gzdItemList) count += item.isDummy() ? 1 : 0;
    return count;
  }
  // Stamps, those of dummies in brackets.
  [[nodiscard]] std::string describe() const {
    std::string line;
    for (const GZDItem item : index.gzdItemList) {
      const std::string stamp = std::to_string(item.getTimeStamp());
      line += (line.empty() ? "" : " ") + (item.isDummy() ? "(" + stamp + ")" : stamp);
    }
    return line;
  }
};

std::string gap_lines(int missing, UINT32 from, UINT32 to) {
  return "Missing " + std::to_string(missing) + " samples. Inserting dummy samples \nMissing (" +
         std::to_string(from) + "-" + std::to_string(to) + ") samples. Calculating speriod \n";
}

constexpr const char* TOO_MANY =
    "Missing samples are over 10000, skip it without addimg missing samples\n ";

TEST(GapFilling, TwoPeriodsAreOneDummy) {
  CapturedLog log;
  EXPECT_EQ(Stream(1000).samples({10, 11, 12, 14, 15}).describe(), "20 22 24 (26) 28 30");
  EXPECT_EQ(log.take(), gap_lines(2, 12, 14));
  EXPECT_EQ(Stream(250).samples({10, 14, 18, 30}).describe(), "20 28 36 (44) (52) 60");
}

TEST(GapFilling, TwoThousandHertzCountsHalves) {
  CapturedLog log;
  EXPECT_EQ(Stream(2000).samples({10, 10, 11, 11, 12}).describe(), "20 21 22 23 24");
  EXPECT_EQ(log.take(), "");
  EXPECT_EQ(Stream(2000).samples({10, 10, 11, 11, 13}).describe(), "20 21 22 23 (24) (25) (26) 26");
  EXPECT_EQ(log.take(), gap_lines(4, 11, 13));
}

TEST(GapFilling, NeedsTwoEarlierSamplesAtOneOrLater) {
  CapturedLog log;
  EXPECT_EQ(Stream(1000).samples({10, 15}).dummies(), 0);
  EXPECT_EQ(Stream(1000).samples({0, 1, 2, 5}).describe(), "0 2 4 (6) (8) 10");
  EXPECT_EQ(Stream(1000).samples({0, 1, 5}).dummies(), 0);
  Stream interrupted(1000);
  interrupted.samples({10, 11, 12});
  interrupted.clock.forgetTimes();
  EXPECT_EQ(interrupted.samples({20, 30}).dummies(), 0);
}

TEST(GapFilling, TheFirstStepTellsThePeriod) {
  CapturedLog log;
  // A step of 9 and more tells none; the one after it does.
  EXPECT_EQ(Stream(1000).samples({10, 11, 16, 17, 19}).describe(), "20 22 32 34 (36) 38");
  log.take();
  // The rate's period wins over the observed one.
  Stream slow(1000);
  EXPECT_EQ(slow.samples({10, 12, 14}).describe(), "20 24 (26) 28");
  EXPECT_EQ(log.take(),
            "Intersample period does not match with the sample rate given by the start recording "
            "event! Using start recording sample rate. 2 4 24 28 \n" +
                gap_lines(2, 12, 14));
  EXPECT_EQ(slow.samples({15, 17}).describe(), "20 24 (26) 28 30 (32) 34");
  log.take();
  // A rate that gives no period leaves the observed one.
  EXPECT_EQ(Stream(100).samples({10, 12, 14, 18}).describe(), "20 24 28 (32) 36");
  EXPECT_EQ(log.take(), gap_lines(2, 14, 18));
}

TEST(GapFilling, TimesThatGoBackFillNothing) {
  CapturedLog log;
  EXPECT_EQ(Stream(1000).samples({10, 11, 12, 5, 4, 3}).dummies(), 0);
  EXPECT_EQ(Stream(1000).samples({10, 11, 5, 6, 8}).describe(), "20 22 10 12 (14) 16");
}

TEST(GapFilling, GapsOfTenThousandAreTheLongest) {
  CapturedLog log;
  EXPECT_EQ(Stream(1000).samples({10, 11, 12, 10012}).dummies(), 9999);
  EXPECT_EQ(log.take(), gap_lines(10000, 12, 10012));
  EXPECT_EQ(Stream(1000).samples({10, 11, 12, 10013}).dummies(), 0);
  EXPECT_EQ(log.take(), gap_lines(10001, 12, 10013) + TOO_MANY);
  EXPECT_EQ(Stream(1000).samples({10, 11, 12, 0xFFFFFFFFu}).dummies(), 0);
}

TEST(GapFilling, AFileHasABudget) {
  CapturedLog log;
  Stream stream(1000);
  stream.budget.left = 12;
  EXPECT_EQ(stream.samples({10, 11, 12, 20}).dummies(), 7);
  EXPECT_EQ(stream.samples({21, 28}).dummies(), 7);  // six of five
  EXPECT_TRUE(log.take().ends_with(TOO_MANY));
  EXPECT_EQ(stream.samples({29, 35}).dummies(), 12);
  EXPECT_EQ(stream.budget.left, 0);
  EXPECT_EQ(DummyBudget().left, 10'000'000);
}

TEST(SampleClock, ARepeatedTimeIsHalfAMillisecondLater) {
  SampleClock clock;
  EXPECT_EQ(clock.stampOf(5), 10u);
  clock.advance(5);
  EXPECT_EQ(clock.stampOf(5), 11u);
  EXPECT_EQ(clock.stampOf(6), 12u);
  clock.forgetTimes();
  EXPECT_EQ(clock.stampOf(5), 10u);
  clock.advance(0xFFFFFFFFu);
  EXPECT_EQ(clock.stampOf(0xFFFFFFFFu), 0x1FFFFFFFFu);
}

// ---- block starts, statistics
// --------------------------------------------------------------------

class Ordered {
 public:
  Index index;

  Ordered& start(UINT32 time, float rate = 1000, UINT16 flags = SMP_LEFT) {
    return boundary(GZD_BLOCK_START, time, rate, flags);
  }
  Ordered& end(UINT32 time) { return boundary(GZD_BLOCK_END, time, 1000, 0); }
  Ordered& stamp(UINT64 at) {
    index.gzdItemList.push_back({7, GZD_SAMPLE, SIDE_NONE, UINT16{1}, at});
    return *this;
  }
  Ordered& sample(UINT32 time) { return stamp(2 * UINT64{time}); }
  Ordered& message(UINT32 time) {
    index.gzdItemList.push_back({9, GZD_MESSAGE, SIDE_NONE, UINT16{1}, 2 * UINT64{time}});
    return *this;
  }
  std::string padded() {
    DummyBudget budget;
    pad_block_starts(index, budget);
    std::string line;
    for (const GZDItem item : index.gzdItemList) {
      line += line.empty() ? "" : " ";
      line += item.isRecording() ? (item.isRecordingStart() ? "[" : "]")
              : item.isDummy()   ? "d"
                                 : "";
      line += item.getItemType() == GZD_MESSAGE ? "m" : "";
      line += std::to_string(item.getTimeStamp());
    }
    return line;
  }

 private:
  Ordered& boundary(byte state, UINT32 time, float rate, UINT16 flags) {
    auto block = std::make_unique<Recording>();
    block->state = state;
    block->sample_rate = rate;
    block->sflags = flags;
    block->updateTime(2 * UINT64{time});
    index.gzdItemList.push_back(GZDItem(block.get()));
    index.allRecordings.push_back(std::move(block));
    return *this;
  }
};

TEST(BlockStartPadding, FillsUpToTheFirstSample) {
  CapturedLog log;
  EXPECT_EQ(Ordered().start(100).message(101).sample(103).sample(104).padded(),
            "[200 m202 d200 d202 d204 206 208");
  EXPECT_EQ(log.take(),
            "Missing sample at trial start. Trial start time = 100 First sample time=103 diff=3  "
            "SampleRate=1000.0  Missing Sample count=3\n"
            "Inserting dummy sample at 1 102\nInserting dummy sample at 2 101\n"
            "Inserting dummy sample at 3 100\n");
  EXPECT_EQ(Ordered().start(100, 250).sample(109).padded(), "[200 d202 d210 218");
  EXPECT_EQ(Ordered().start(100, 2000).sample(101).padded(), "[200 d200 d201 202");
  EXPECT_EQ(Ordered().start(100, 250).sample(103).padded(), "[200 206");
}

TEST(BlockStartPadding, NeedsEyesAndALaterSample) {
  CapturedLog log;
  EXPECT_EQ(Ordered().start(100, 1000, 0x3FFF).sample(103).padded(), "[200 206");
  EXPECT_EQ(Ordered().start(100).sample(100).padded(), "[200 200");
  EXPECT_EQ(Ordered().start(100).padded(), "[200");
  EXPECT_EQ(Ordered().start(100, 1000, SMP_RIGHT).sample(101).padded(), "[200 d200 202");
  EXPECT_EQ(Ordered().end(100).sample(103).padded(), "]200 206");
}

TEST(BlockStartPadding, TwoStartsBeforeOneSample) {
  CapturedLog log;
  // The first start pads back to its own time; nothing is left for the second.
  EXPECT_EQ(Ordered().start(100).start(102).sample(104).padded(),
            "[200 [204 d200 d202 d204 d206 208");
  // At its slow rate the first start leaves room for the second.
  EXPECT_EQ(Ordered().start(100, 250).start(102).sample(107).padded(), "[200 [204 d204 d206 214");
}

TEST(BlockStartPadding, MoreThanTenThousandAreNotInserted) {
  CapturedLog log;
  Ordered most;
  most.start(100).sample(10100).padded();
  EXPECT_EQ(most.index.gzdItemList.size(), 10002u);
  log.take();
  Ordered tooMany;
  tooMany.start(100).sample(10101).padded();
  EXPECT_EQ(tooMany.index.gzdItemList.size(), 2u);
  EXPECT_EQ(log.take(),
            "Missing sample at trial start. Trial start time = 100 First sample time=10101 "
            "diff=10001  SampleRate=1000.0  Missing Sample count=10001\n");
  Ordered huge;
  EXPECT_EQ(huge.start(1, 2000).sample(0x7FFFFFFFu).padded(), "[2 4294967294");
}

std::string periods_of(const Ordered& ordered) {
  CapturedLog log;
  report_sample_periods(ordered.index);
  return log.take();
}

TEST(SamplePeriods, CountsShorterAndLongerSteps) {
  EXPECT_EQ(periods_of(Ordered().start(100).sample(100).sample(101).sample(102).end(103)), "");
  EXPECT_EQ(periods_of(Ordered().start(100).sample(100).stamp(201).stamp(202).sample(105).end(106)),
            "2 inter-sample periods were shorter than expected from the sampling rate\n"
            "1 inter-sample periods were longer than expected from the sampling rate\n");
  EXPECT_EQ(periods_of(Ordered().start(100).sample(100).end(101).start(200).sample(200)), "");
}

TEST(SamplePeriods, SamplesOutsideBlocksAreNamedByTheirStamp) {
  EXPECT_EQ(periods_of(Ordered().sample(50).start(100).sample(100).end(101).sample(105)),
            "Sample at time 100 encountered before start of next recording block\n"
            "Sample at time 210 encountered before start of next recording block\n");
}

}  // namespace
