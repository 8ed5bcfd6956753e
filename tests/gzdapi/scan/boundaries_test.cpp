#include "scan/boundaries.h"

#include <gtest/gtest.h>

using namespace gzd;

namespace {

FEVENT record(int type, UINT32 time) {
  FEVENT e{};
  e.type = static_cast<INT16>(type);
  e.sttime = time;
  e.entime = type == GZD_START_EVENTS ? 65'536'000 : time;  // events starts keep the rate there
  return e;
}

class Blocks {
 public:
  Index index;
  StreamState state;

  Blocks() { state.sam_per_sec = 250.0f; }
  // A boundary record; the tolerance is 500 stamps, a quarter of a second.
  Blocks& add(int type, UINT32 time, byte positionType = 0) {
    FEVENT e = record(type, time);
    e.parsedby = positionType;
    if (type == GZD_START_SAMPLES) e.flags = SMP_RIGHT | SMP_GAZE;
    if (type == GZD_START_EVENTS) e.flags = 0x1234;
    pairing.add(index, make_boundary(e, state, index), 500);
    return *this;
  }
  // "[1000/3" is a start at 1000 ms of record type 3, "]2000/1" an end.
  [[nodiscard]] std::string describe() const {
    std::string line;
    for (const GZDItem item : index.gzdItemList) {
      const Recording& block = *item.getRecording();
      if (!line.empty()) line += ' ';
      line += block.isStart() ? '[' : ']';
      line += std::to_string(block.time) + "/" + std::to_string(block.record_type);
      EXPECT_EQ(block.timestamp, 2 * UINT64{block.time});
    }
    EXPECT_EQ(index.allRecordings.size(), index.gzdItemList.size());
    return line;
  }

 private:
  BoundaryPairing pairing;
};

constexpr int SS = GZD_START_SAMPLES, SE = GZD_START_EVENTS;
constexpr int ES = GZD_END_SAMPLES, EE = GZD_END_EVENTS;

TEST(Boundaries, StartsTakeTheEarlierTimeEndsTheLater) {
  EXPECT_EQ(Blocks().add(SE, 1000).add(SS, 1001).add(ES, 2000).add(EE, 2003).describe(),
            "[1000/3 ]2003/3");
  EXPECT_EQ(Blocks().add(SS, 1001).add(SE, 1000).add(EE, 2003).add(ES, 2000).describe(),
            "[1000/3 ]2003/3");
}

TEST(Boundaries, TheToleranceIsStrict) {
  EXPECT_EQ(Blocks().add(SE, 1000).add(SS, 1249).describe(), "[1000/3");
  EXPECT_EQ(Blocks().add(SE, 1000).add(SS, 1250).describe(), "[1000/2 [1250/1");
  EXPECT_EQ(Blocks().add(SS, 1250).add(SE, 1000).describe(), "[1250/1 [1000/2");
}

TEST(Boundaries, APairIsClosed) {
  EXPECT_EQ(Blocks().add(SE, 1000).add(SS, 1000).add(SE, 1001).add(SS, 1002).describe(),
            "[1000/3 [1001/3");
  EXPECT_EQ(Blocks().add(SE, 1000).add(SS, 1000).add(SS, 1001).describe(), "[1000/3 [1001/1");
}

TEST(Boundaries, TheLastOfEachKindWaits) {
  EXPECT_EQ(Blocks().add(SS, 1000).add(SS, 5000).add(SE, 1001).describe(),
            "[1000/1 [5000/1 [1001/2");
  EXPECT_EQ(Blocks().add(SS, 1000).add(SE, 5000).add(SS, 5001).describe(), "[1000/1 [5000/3");
}

TEST(Boundaries, StartsAndEndsPairSeparately) {
  EXPECT_EQ(Blocks().add(SS, 1000).add(ES, 1010).add(SE, 1001).add(EE, 1011).describe(),
            "[1000/3 ]1011/3");
}

TEST(Boundaries, FieldsOfASamplesStart) {
  Blocks blocks;
  blocks.state.crmode = 9;
  blocks.state.ffilter = 2;
  blocks.state.sam_per_sec = 1000.0f;
  blocks.state.parameters.gaze_prescale = 10.0f;
  blocks.add(SS, 1000, 192);
  const Recording& block = *blocks.index.allRecordings[0];
  EXPECT_EQ(block.state, 1);
  EXPECT_EQ(block.sample_rate, 1000.0f);
  EXPECT_EQ(block.sflags, SMP_RIGHT | SMP_GAZE);
  EXPECT_EQ(block.eflags, 0);
  EXPECT_EQ(block.pupil_type, 1);
  EXPECT_EQ(block.recording_mode, 1);
  EXPECT_EQ(block.filter_type, 2);
  EXPECT_EQ(block.pos_type, 192);
  EXPECT_EQ(block.eye, GZD_BLOCK_RIGHT);
  EXPECT_EQ(block.gaze_prescaler, 10.0f);
  EXPECT_EQ(block.window_height, 190);
  EXPECT_EQ(block.window_width, 176);
  EXPECT_FALSE(block.timeCollisionDetected());
}

TEST(Boundaries, TheKeptOneFillsWhatItLacks) {
  Blocks eventsFirst;
  eventsFirst.state.parameters.gaze_prescale = 10.0f;
  eventsFirst.add(SE, 1000).add(SS, 1000, 192);
  const Recording& merged = *eventsFirst.index.allRecordings[0];
  EXPECT_EQ(merged.pos_type, 192);
  EXPECT_EQ(merged.sflags, SMP_RIGHT | SMP_GAZE);
  EXPECT_EQ(merged.eflags, 0x1234);
  EXPECT_EQ(merged.gaze_prescaler, 10.0f);
  EXPECT_EQ(merged.eye, GZD_BLOCK_RIGHT);
  Blocks samplesFirst;
  samplesFirst.add(SS, 1000, 64).add(SE, 1000, 128);
  EXPECT_EQ(samplesFirst.index.allRecordings[0]->pos_type, 64);
  EXPECT_EQ(samplesFirst.index.allRecordings[0]->eflags, 0x1234);
}

TEST(Boundaries, EyesOfSamplesAndOfEvents) {
  const StreamState state;
  const Index index;
  const struct {
    UINT16 word;
    int samples, events;
  } cases[] = {{0x8000, 1, 2}, {0x4000, 2, 1}, {0xC000, 3, 3}, {0x3FFF, 0, 0}};
  for (const auto& c : cases) {
    FEVENT samples = record(SS, 1);
    samples.flags = c.word;
    EXPECT_EQ(make_boundary(samples, state, index)->eye, c.samples);
    FEVENT events = record(SE, 1);
    events.input = c.word;
    EXPECT_EQ(make_boundary(events, state, index)->eye, c.events);
  }
}

TEST(Boundaries, EndsTakeTheEyeOfTheNewestBoundary) {
  Blocks blocks;
  blocks.add(ES, 500).add(SS, 1000).add(ES, 9000);
  EXPECT_EQ(blocks.index.allRecordings[0]->eye, GZD_BLOCK_NO_EYE);
  EXPECT_EQ(blocks.index.allRecordings[2]->eye, GZD_BLOCK_RIGHT);
}

TEST(Boundaries, PupilTypeIsAreaForOne) {
  FEVENT e = record(SS, 1);
  for (const auto& [word, type] : {std::pair{1.0f, 0}, {0.0f, 1}, {2.0f, 1}, {-32768.0f, 1}}) {
    e.eupd_y = word;
    EXPECT_EQ(make_boundary(e, StreamState(), Index())->pupil_type, type);
  }
}

}  // namespace
