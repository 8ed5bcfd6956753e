// What the queue holds, and the velocities of its windows.
#include "read/SampleQueue.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <random>

#include "base/GZDException.h"
#include "derived/velocity.h"

using namespace gzd;

namespace {

constexpr UINT16 all_fields = SMP_LEFT | SMP_GAZE | SMP_HREF | SMP_PUPIL_POS | SMP_PUPIL_SIZE;

// Samples whose positions are functions of their stamp. Counts what is read.
class Track : public SampleSource {
 public:
  Index index;
  int period = 2;
  int reads = 0;
  UINT16 tag = all_fields;
  UINT32 unreadable = ~0u;
  UINT64 lostEvery = 1'000'000;  // stamps from one lost pupil to the next

  Track& block() {
    blocks.push_back(std::make_unique<Recording>());
    blocks.back()->state = GZD_BLOCK_START;
    index.gzdItemList.push_back(GZDItem(blocks.back().get()));
    return *this;
  }
  Track& sample(UINT64 stamp, INT64 position = 50) {
    index.gzdItemList.push_back({position, GZD_SAMPLE, SIDE_NONE, all_fields, stamp});
    return *this;
  }
  Track& run(UINT64 first, int count) {
    for (int i = 0; i < count; ++i) sample(first + static_cast<UINT64>(i * period));
    return *this;
  }
  Track& message(UINT64 stamp) {
    index.gzdItemList.push_back({60, GZD_MESSAGE, SIDE_NONE, UINT16{0}, stamp});
    return *this;
  }

  static float place(UINT64 stamp) {
    const double t = static_cast<double>(stamp);
    return static_cast<float>(500.0 + 100.0 * std::sin(t / 7.0) + t * 0.03);
  }

  void readQueueSample(UINT32 entry, Sample& s) override {
    ++reads;
    if (entry == unreadable) throw GZDException("unreadable");
    s = sampleAt(entry);
  }
  [[nodiscard]] Sample sampleAt(UINT32 entry) const {
    Sample s;
    const UINT64 stamp = index.gzdItemList[entry].getTimeStamp();
    s.updateTimeStamp(stamp);
    s.flags = tag;
    s.pa[0] = s.pa[1] = stamp % lostEvery == 0 ? 14.0f : 900.0f;
    s.gx[0] = s.hx[0] = s.px[0] = place(stamp);
    s.gy[0] = s.hy[0] = s.py[0] = -place(stamp);
    if ((tag & SMP_RIGHT) != 0) s.gx[1] = s.gy[1] = s.px[1] = place(stamp + 9);
    s.rx = 30.0f;
    s.ry = 20.0f;
    s.input = static_cast<UINT16>(entry);
    return s;
  }
  int stampsPerSampleAt(UINT32) override { return period; }

 private:
  std::vector<std::unique_ptr<Recording>> blocks;
};

Sample sample_at(UINT64 stamp, UINT16 flags = all_fields, float pupil = 900.0f) {
  Sample s;
  s.updateTimeStamp(stamp);
  s.flags = flags;
  s.pa[0] = s.pa[1] = pupil;
  return s;
}

void fill(SampleQueue& queue, std::initializer_list<UINT64> stamps) {
  queue.clear();
  UINT32 entry = 0;
  for (const UINT64 stamp : stamps) queue.addSample(sample_at(stamp), entry++);
}

// ---- contents and look-up -----------------------------------------------------------------------

TEST(SampleQueue, TakesRisingStampsOnly) {
  Track track;
  SampleQueue queue(track.index, track);
  fill(queue, {10, 12, 12, 11, 14});
  EXPECT_EQ(queue.size(), 3);
  EXPECT_EQ(queue.stampAt(2), 14u);
}

TEST(SampleQueue, CarriesPupilSizesForward) {
  Track track;
  SampleQueue queue(track.index, track);
  const UINT16 without = all_fields & ~SMP_PUPIL_SIZE;
  queue.addSample(sample_at(2, without, 5.0f), 0);
  queue.addSample(sample_at(4, all_fields, 700.0f), 1);
  queue.addSample(sample_at(6, without, 5.0f), 2);
  EXPECT_EQ(queue.pupilSizes(0)[0], 1000.0f);
  EXPECT_EQ(queue.pupilSizes(1)[1], 700.0f);
  EXPECT_EQ(queue.pupilSizes(2)[1], 700.0f);
  queue.clear();
  queue.addSample(sample_at(8, without, 5.0f), 3);
  EXPECT_EQ(queue.pupilSizes(0)[0], 1000.0f);
}

TEST(SampleQueue, ShiftDropsTheOldest128) {
  Track track;
  SampleQueue queue(track.index, track);
  for (UINT32 i = 0; i < 600; ++i) queue.addSample(sample_at(2 * i), i);
  EXPECT_EQ(queue.size(), 512);
  queue.shiftQueue();
  EXPECT_EQ(queue.size(), 384);
  EXPECT_EQ(queue.stampAt(0), 256u);
  for (int i = 0; i < 4; ++i) queue.shiftQueue();
  EXPECT_EQ(queue.size(), 0);
  EXPECT_EQ(queue.getOldSample(256), -1);
}

TEST(SampleQueue, FindsEverySampleOfARegularRun) {
  Track track;
  SampleQueue queue(track.index, track);
  for (const UINT64 step : {1u, 2u, 4u, 8u}) {
    queue.clear();
    for (UINT32 i = 0; i < 500; ++i) queue.addSample(sample_at(1000 + i * step), i);
    for (int i = 0; i < 500; ++i) {
      EXPECT_EQ(queue.getOldSample(1000 + static_cast<UINT64>(i) * step), i);
    }
    EXPECT_EQ(queue.getOldSample(999), -1);
    EXPECT_EQ(queue.getOldSample(1000 + 500 * step), -1);
    EXPECT_EQ(queue.getOldSample(1001), step == 1 ? 1 : -1);
  }
}

TEST(SampleQueue, LookUpIsArithmetic) {
  Track track;
  SampleQueue queue(track.index, track);
  EXPECT_EQ(queue.getOldSample(0), -1);
  fill(queue, {10, 14});
  EXPECT_EQ(queue.getOldSample(10), 0);
  EXPECT_EQ(queue.getOldSample(14), 1);
  EXPECT_EQ(queue.getOldSample(12), -1);
  // A lost sample: before it guesses from the front are right, after it those from the back.
  fill(queue, {10, 12, 16, 18, 20});
  EXPECT_EQ(queue.getOldSample(12), 1);
  EXPECT_EQ(queue.getOldSample(14), -1);
  EXPECT_EQ(queue.getOldSample(16), 2);
  EXPECT_EQ(queue.getOldSample(18), 3);
  // Two lost: what lies between is not found.
  fill(queue, {10, 12, 16, 18, 22, 24});
  EXPECT_EQ(queue.getOldSample(16), -1);
  EXPECT_EQ(queue.getOldSample(18), -1);
  EXPECT_EQ(queue.getOldSample(22), 4);
  // The front gap is too wide: the last one is the step.
  fill(queue, {10, 100, 102, 104});
  EXPECT_EQ(queue.getOldSample(100), 1);
  EXPECT_EQ(queue.getOldSample(102), 2);
  // A step that no rate has.
  fill(queue, {10, 13, 16, 19});
  EXPECT_EQ(queue.getOldSample(13), -1);
  EXPECT_EQ(queue.getOldSample(19), 3);
  // Both gaps too wide.
  fill(queue, {10, 100, 102, 200});
  EXPECT_EQ(queue.getOldSample(100), -1);
}

// ---- reading ahead ------------------------------------------------------------------------------

// The entry whose sample the queue gives for another; the largest number for none.
UINT32 entry_for(SampleQueue& queue, UINT32 wanted) {
  const int slot = queue.getSample(wanted);
  return slot >= 0 ? queue.entry(slot) : ~0u;
}

// The sample of an entry, with the velocities that the queue gives it.
Sample velocity_of(SampleQueue& queue, Track& track, UINT32 entry,
                   const VelocitySettings& settings) {
  const int slot = queue.getSample(entry);
  EXPECT_GE(slot, 0) << entry;
  if (slot < 0) return {};
  EXPECT_EQ(queue.entry(slot), entry);
  Sample s = track.sampleAt(entry);
  queue.setVelocity(s, s.getTimeStamp(), slot, settings);
  return s;
}

// Arithmetic finds no sample between two steps that are too short: none there makes the queue read
// on, the first one after them does.
TEST(SampleQueue, OnlyWhatArithmeticFindsNearTheEndReadsOn) {
  Track track;
  track.period = 4;
  track.block().run(100, 441).run(100 + 441 * 4 - 2, 60).run(100 + 501 * 4 - 4, 400);
  SampleQueue queue(track.index, track);
  for (UINT32 i = 1; i <= 501; ++i) ASSERT_EQ(entry_for(queue, i), i);
  EXPECT_EQ(track.reads, 512);
  EXPECT_EQ(entry_for(queue, 502), 502u);
  EXPECT_EQ(track.reads, 512 + 128);
}

// Positions of a run around a stamp, missing where the run does not reach.
std::vector<float> series_around(UINT64 stamp, int period, UINT64 first, UINT64 last, float sign) {
  std::vector<float> x;
  for (int k = -19; k <= 19; ++k) {
    const INT64 at = static_cast<INT64>(stamp) + k * period;
    const bool inside = at >= static_cast<INT64>(first) && at <= static_cast<INT64>(last);
    x.push_back(inside ? sign * Track::place(static_cast<UINT64>(at)) : MISSING_DATA);
  }
  return x;
}

TEST(SampleQueue, WindowsEndAtGapsAndBoundaries) {
  for (const int revision : {1, 2, 3, 4}) {
    Track track;
    track.block().run(100, 50).run(300, 50);
    track.block().run(402, 50).message(450);
    const VelocitySettings settings{.sampleRate = 1000, .ovilo_revision = revision};
    SampleQueue queue(track.index, track);
    const auto model = revision < 3 ? calcVelocity_non_falcon : calcVelocity_falcon;
    struct Run {
      UINT32 entry;
      UINT64 first, last;
    };
    for (const Run& run : {Run{1, 100, 198}, Run{51, 300, 398}, Run{102, 402, 500}}) {
      for (UINT32 i = 0; i < 50; ++i) {
        const Sample s = velocity_of(queue, track, run.entry + i, settings);
        const auto x = series_around(run.first + 2 * i, 2, run.first, run.last, 1.0f);
        const auto y = series_around(run.first + 2 * i, 2, run.first, run.last, -1.0f);
        ASSERT_EQ(s.gxvel[0], model(false, x.data(), 39, 30.0f, 1000.0f)) << run.entry + i;
        ASSERT_EQ(s.gyvel[0], model(false, y.data(), 39, 20.0f, 1000.0f));
        ASSERT_EQ(s.rxvel[0], s.gxvel[0]);
        ASSERT_EQ(s.frxvel[0], model(true, x.data(), 39, 30.0f, 1000.0f));
        ASSERT_EQ(s.fgyvel[0], model(true, y.data(), 39, 20.0f, 1000.0f));
        ASSERT_EQ(s.gxvel[1], 0.0f) << "an eye that the sample lacks is not touched";
      }
    }
  }
}

TEST(SampleQueue, ShortSeriesHaveOtherVelocitiesOrNone) {
  std::array<float, 64> x{};
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = static_cast<float>(i * i * i);
  struct Rate {
    float rate;
    int reach;
  };
  for (const Rate& r : {Rate{250, 2}, Rate{500, 4}, Rate{1000, 9}, Rate{2000, 19}}) {
    EXPECT_EQ(calcVelocity_falcon(false, x.data(), 2 * r.reach, 30, r.rate), MISSING_DATA);
    EXPECT_NE(calcVelocity_falcon(false, x.data(), 2 * r.reach + 1, 30, r.rate), MISSING_DATA);
  }
  EXPECT_EQ(calcVelocity_falcon(false, nullptr, 39, 30, 1000), MISSING_DATA);
  // Two intervals about the middle; four points from six on.
  EXPECT_EQ(calcVelocity_non_falcon(false, x.data(), 5, 1, 1), (27 - 1) / 2.0f);
  EXPECT_EQ(calcVelocity_non_falcon(false, x.data(), 6, 1, 1), (64 + 125 - 1 - 8) / 6.0f);
  EXPECT_EQ(calcVelocity_non_falcon(true, x.data(), 6, 1, 1), (64 - 8) / 2.0f);
}

TEST(SampleQueue, OfOneStampARecordedSampleGoesBeforeADummy) {
  Track track;
  track.block().run(100, 5);
  track.sample(110, -1).sample(110, 50).sample(110, 51).sample(110, -1).run(112, 5);
  SampleQueue queue(track.index, track);
  for (const UINT32 asked : {6u, 7u, 8u, 9u}) EXPECT_EQ(entry_for(queue, asked), 7u);
  EXPECT_EQ(queue.size(), 11);
}

TEST(SampleQueue, AnUnreadableSampleIsAnErrorToWhoeverReadsOn) {
  Track track;
  track.block().run(100, 20);
  track.unreadable = 10;
  SampleQueue queue(track.index, track);
  EXPECT_THROW(queue.getSample(1), GZDException);
}

// ---- resolutions and kinds ----------------------------------------------------------------------

class Velocities : public testing::Test {
 protected:
  Velocities() : queue((track.block().run(100, 100), track.index), track) {}

  // The middle sample, some of its fields changed.
  template <class Change>
  Sample of(Change change, VelocitySettings settings) {
    queue.getSample(50);
    Sample s = track.sampleAt(50);
    change(s);
    settings.sampleRate = 1000;
    queue.setVelocity(s, s.getTimeStamp(), -1, settings);
    return s;
  }

  Track track;
  SampleQueue queue;
};

constexpr auto unchanged_stamp = [](Sample&) {};

TEST_F(Velocities, OfKindsLeftOutStayAsTheyWere) {
  std::vector<Sample> single;
  for (unsigned kind = 1; kind <= GZD_VELOCITY_FAST_RAW; kind <<= 1)
    single.push_back(of(unchanged_stamp, {.kinds = kind}));
  const Sample all = of(unchanged_stamp, {});
  unsigned kind = 1;
  for (const Sample& s : single) {
    EXPECT_EQ(s.gxvel[0], kind == GZD_VELOCITY_GAZE ? all.gxvel[0] : 0.0f);
    EXPECT_EQ(s.hyvel[0], kind == GZD_VELOCITY_HREF ? all.hyvel[0] : 0.0f);
    EXPECT_EQ(s.rxvel[0], kind == GZD_VELOCITY_RAW ? all.rxvel[0] : 0.0f);
    EXPECT_EQ(s.fgyvel[0], kind == GZD_VELOCITY_FAST_GAZE ? all.fgyvel[0] : 0.0f);
    EXPECT_EQ(s.fhxvel[0], kind == GZD_VELOCITY_FAST_HREF ? all.fhxvel[0] : 0.0f);
    EXPECT_EQ(s.fryvel[0], kind == GZD_VELOCITY_FAST_RAW ? all.fryvel[0] : 0.0f);
    kind <<= 1;
  }
}

}  // namespace
