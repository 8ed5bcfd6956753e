#include "read/time_shift.h"

#include <gtest/gtest.h>

#include "support/recording_fixture.h"

using namespace gzd;

namespace {

constexpr UINT32 LARGE = 0x3FFFFFFF;

ALLF_DATA sample_at(UINT32 time) {
  ALLF_DATA d{};
  d.fs.time = time;
  return d;
}

ALLF_DATA event_at(UINT32 start, UINT32 end, UINT32 time = 0) {
  ALLF_DATA d{};
  d.fe.time = time;
  d.fe.sttime = start;
  d.fe.entime = end;
  return d;
}

TEST(TimeShift, TheLargestTimeDecides) {
  for (const UINT32 maxTime : {LARGE - 1, LARGE}) {
    CapturedLog log;
    TimeShift shift(false);
    ALLF_DATA d = sample_at(LARGE - 5);
    shift.adjustTimes(d, GZD_SAMPLE, LARGE - 9, maxTime);
    EXPECT_EQ(d.fs.time, maxTime == LARGE ? 4u : LARGE - 5);
    EXPECT_EQ(log.take(), maxTime == LARGE ? "Enabling time offset fixup\n" : "");
    EXPECT_EQ(shift.recordedTime(d.fs.time, LARGE - 9), LARGE - 5);
    // Decided once.
    ALLF_DATA later = sample_at(LARGE - 4);
    shift.adjustTimes(later, GZD_SAMPLE, LARGE - 9, LARGE);
    EXPECT_EQ(later.fs.time, maxTime == LARGE ? 5u : LARGE - 4);
    EXPECT_EQ(log.take(), "");
  }
}

TEST(TimeShift, EventsMoveAllTheirTimes) {
  CapturedLog log;
  TimeShift shift(false);
  ALLF_DATA d = event_at(LARGE + 10, LARGE + 20);
  shift.adjustTimes(d, GZD_MESSAGE, LARGE, LARGE + 50);
  EXPECT_EQ(log.take(), "Enabling time offset fixup \n");
  EXPECT_EQ(d.fe.sttime, 10u);
  EXPECT_EQ(d.fe.entime, 20u);
  EXPECT_EQ(d.fe.time, 0u - LARGE);
}

TEST(TimeShift, BoundariesMoveByTheFirstTimeHandedOut) {
  CapturedLog log;
  TimeShift shift(false);
  ALLF_DATA first = event_at(LARGE + 30, LARGE + 90, LARGE + 20);
  shift.adjustTimes(first, GZD_END_FIXATION, LARGE, LARGE + 50);
  ALLF_DATA block{};
  block.rec.time = LARGE + 50;
  shift.adjustTimes(block, GZD_RECORDING, LARGE, LARGE + 50);
  EXPECT_EQ(block.rec.time, 30u);  // less the smaller of `sttime` and `time`
  TimeShift other(false);
  block.rec.time = LARGE + 50;
  other.adjustTimes(block, GZD_RECORDING, LARGE, LARGE + 50);
  EXPECT_EQ(block.rec.time, 0u);
}

TEST(TimeShift, UnknownTypesAreNamed) {
  CapturedLog log;
  TimeShift shift(false);
  ALLF_DATA d = event_at(LARGE, LARGE);
  for (const int type : {0, 11, 14, 19, 23, 26, 27, 29, 31, 63}) {
    shift.adjustTimes(d, type, 5, LARGE);
    EXPECT_EQ(log.take(), "Unknown type " + std::to_string(type) + "\n");
  }
  EXPECT_EQ(d.fe.sttime, LARGE);
}

TEST(TimeShift, CanBeSwitchedOff) {
  CapturedLog log;
  TimeShift shift(true);
  ALLF_DATA d = sample_at(LARGE);
  shift.adjustTimes(d, GZD_SAMPLE, 5, LARGE);
  shift.adjustTimes(d, 0, 5, LARGE);
  EXPECT_EQ(d.fs.time, LARGE);
  EXPECT_EQ(log.take(), "");
  EXPECT_EQ(shift.recordedTime(7, 5), 7u);
}

TEST(TimeShift, OfAWholeRecording) {
  gzdsynth::GzdWriter w;
  w.message(LARGE + 10, "m").startBlock({.time = LARGE + 20});
  w.gazeSample(LARGE + 20, 1, 1, 900).endBlock(LARGE + 30);
  CapturedLog log;
  EXPECT_EQ(OpenRecording(w).describe(), "24:0 [10 s10 ]20");
  EXPECT_EQ(log.take(), "Enabling time offset fixup \n");
  EXPECT_EQ(OpenRecording(w, GZD_OPEN_NO_TIME_SHIFT).describe(),
            "24:1073741833 [1073741843 s1073741843 ]1073741853");
}

}  // namespace
