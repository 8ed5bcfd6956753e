#include "scan/prescan.h"

#include <gtest/gtest.h>

#include "support/memory_stream.h"
#include "support/recording_fixture.h"

using namespace gzd;

namespace {

using gzdsynth::Bytes;
using gzdsynth::EventRecord;
using gzdsynth::GzdWriter;

// One scan of the records that a writer holds.
class Scanned {
 public:
  Index index;
  StreamState state;
  std::string log;
  std::string out;
  std::string error;

  explicit Scanned(const GzdWriter& writer, ScanOptions options = {})
      : Scanned(records_of(writer), options) {}
  explicit Scanned(const Bytes& records, ScanOptions options = {}) {
    CapturedLog captured;
    MemoryStream in(records);
    state.revision = 1;
    out = standard_output_of([&] {
      try {
        preScan(in, state, options, index);
      } catch (const GZDException& failure) {
        error = failure.getMessage();
      }
    });
    log = captured.take();
  }

  static Bytes records_of(const GzdWriter& writer) {
    const Bytes file = writer.bytes();
    return {file.begin() + static_cast<std::ptrdiff_t>(writer.header().size()), file.end()};
  }

  // "[1000" and "]2000" boundaries, "type:stamp" others with "L" or "R" behind, "d" before dummies.
  [[nodiscard]] std::string describe() const {
    std::string line;
    for (const GZDItem item : index.gzdItemList) {
      line += line.empty() ? "" : " ";
      if (item.isRecording()) {
        line += (item.isRecordingStart() ? "[" : "]") + std::to_string(item.getTimeStamp() / 2);
        continue;
      }
      line += (item.isDummy() ? "d" : "") + std::to_string(item.getItemType()) + ":" +
              std::to_string(item.getTimeStamp());
      line += item.getSide() == SIDE_LEFT ? "L" : item.getSide() == SIDE_RIGHT ? "R" : "";
    }
    return line;
  }
};

constexpr ScanOptions FIX{.fixConsistency = true};
constexpr ScanOptions FAILSAFE{.failsafe = true};

GzdWriter block_of_samples(std::initializer_list<UINT32> times) {
  GzdWriter w;
  w.startBlock({.time = *times.begin()});
  for (const UINT32 time : times) w.gazeSample(time, 1, 1, 900);
  w.endBlock(*(times.end() - 1) + 1);
  return w;
}

TEST(Scan, EveryTypeOfEvent) {
  for (unsigned type = 0; type < 64; ++type) {
    if (type >= 15 && type <= 18) continue;
    GzdWriter w;
    w.event(EventRecord(type, GZD_RIGHT_EYE).start(100).end(150));
    const std::string name = std::to_string(type) + ":";
    std::string expected;
    if (type == 3 || type == 5 || type == 7) expected = name + "200R";
    if (type == 4 || type == 6 || type == 8) expected = name + "300R";
    if (type >= 9 && type != 30) expected = name + "200";
    EXPECT_EQ(Scanned(w).describe(), expected);
    EXPECT_EQ(Scanned(w).index.inputType, type == 28 ? 1 : 0);
    EXPECT_EQ(Scanned(w, {.loadEvents = false}).describe(), "");
  }
  GzdWriter left;
  left.event(EventRecord(8, GZD_LEFT_EYE).start(100).end(150));
  EXPECT_EQ(Scanned(left).describe(), "8:300L");
}

TEST(Scan, EntriesKnowPlaceAndTag) {
  GzdWriter w;
  w.message(5, "ab").button(6, 1);
  const Index& index = Scanned(w).index;
  const GZDItem message = index.gzdItemList[0];
  EXPECT_EQ(message.getFilePos(), 2);
  EXPECT_EQ(message.getLastTag(), 0x1800);
}

TEST(Scan, BlocksSamplesAndTheirOrder) {
  const GzdWriter w = block_of_samples({1000, 1001, 1002});
  EXPECT_EQ(Scanned(w).describe(), "[1000 200:2000 200:2002 200:2004 ]1003");
  EXPECT_EQ(Scanned(w, {.loadSamples = false}).describe(), "[1000 ]1003");
  EXPECT_EQ(Scanned(w, {.loadSamples = false}).index.allRecordings[0]->record_type, 2);
  EXPECT_EQ(Scanned(w, {.loadEvents = false}).index.allRecordings[0]->record_type, 1);
  EXPECT_EQ(Scanned(w, {.loadEvents = false, .loadSamples = false}).describe(), "");
  GzdWriter late = block_of_samples({1000, 1001});
  late.message(999, "late").event(EventRecord(8).start(1000).end(1000));
  EXPECT_EQ(Scanned(late).describe(), "24:1998 [1000 200:2000 8:2000L 200:2002 ]1002");
}

TEST(Scan, RepeatedTimesAreHalfAMillisecondApart) {
  EXPECT_EQ(Scanned(block_of_samples({1000, 1000, 1001, 1001})).describe(),
            "[1000 200:2000 200:2001 200:2002 200:2003 ]1002");
  for (const UINT32 count : {40u, 41u}) {
    GzdWriter regular;
    regular.startBlock({.time = 1000, .rate = 2000});
    for (UINT32 i = 0; i < count; ++i) regular.gazeSample(1000 + i / 2, 1, 1, 900);
    EXPECT_EQ(Scanned(regular.endBlock(1021), FIX).index.gzdItemList.size(), count + 2);
  }
}

TEST(Scan, FirstAndLargestTime) {
  GzdWriter w;
  w.event(EventRecord(8).start(500).end(900)).message(300, "x");
  EXPECT_EQ(Scanned(w).index.minTime, 500u);
  EXPECT_EQ(Scanned(w).index.maxTime, 900u);
  GzdWriter sampleFirst;
  sampleFirst.gazeSample(70, 1, 1, 900).message(20, "x");
  EXPECT_EQ(Scanned(sampleFirst).index.minTime, 70u);
  EXPECT_EQ(Scanned(sampleFirst).index.maxTime, 70u);

  GzdWriter falling;
  for (const UINT32 time : {10u, 12u, 14u, 900u}) falling.gazeSample(time, 1, 1, 9);
  for (UINT32 time = 16; time < 36; time += 2) falling.gazeSample(time, 1, 1, 9);
  for (const bool loadSamples : {true, false}) {
    EXPECT_EQ(Scanned(falling, {.loadSamples = loadSamples}).index.maxTime, 900u);
  }
}

TEST(Scan, InputsInSamples) {
  GzdWriter w;
  w.sample({.flags = SMP_LEFT | SMP_INPUT, .input = 0x8000});
  EXPECT_EQ(Scanned(w).index.inputType, 0);
  w.sample({.flags = SMP_LEFT | SMP_INPUT, .input = 5}).input(7, 1);
  EXPECT_EQ(Scanned(w).index.inputType, 3);
}

TEST(Scan, GapsAndBlockStartsAreFilledOnRequest) {
  GzdWriter w;
  w.startBlock({.time = 1000});
  for (const UINT32 time : {1002u, 1003u, 1004u, 1006u}) w.gazeSample(time, 1, 1, 900);
  w.endBlock(1007);
  const Scanned plain(w);
  EXPECT_EQ(plain.describe(), "[1000 200:2004 200:2006 200:2008 200:2012 ]1007");
  EXPECT_EQ(plain.log, "");
  const Scanned fixed(w, FIX);
  EXPECT_EQ(fixed.describe(),
            "[1000 d200:2000 d200:2002 200:2004 200:2006 200:2008 d200:2010 200:2012 ]1007");
  EXPECT_NE(fixed.log.find("Missing 2 samples."), std::string::npos);
  EXPECT_EQ(fixed.log.find("inter-sample periods"), std::string::npos);
}

TEST(Scan, RawSamplesKeepBlockStartsUnfilled) {
  for (const int pupil : {900, -5}) {
    GzdWriter w;
    w.startBlock({.time = 1000}).gazeSample(1001, 1, 1, pupil).endBlock(1002);
    EXPECT_EQ(Scanned(w, FIX).describe(),
              pupil < 0 ? "[1000 200:2002 ]1002" : "[1000 d200:2000 200:2002 ]1002");
  }
}

TEST(Scan, OneSampleAmongRegularOnesTellsOfRawDataAndInput) {
  for (const int different : {-1, 0, 1, 2}) {  // none, pupil of the left or right eye, input
    GzdWriter w;
    w.startBlock({.time = 1000});
    for (UINT32 i = 1; i <= 20; ++i) {
      gzdsynth::SampleRecord s{.flags = SMP_LEFT | SMP_RIGHT | SMP_GAZE | SMP_PUPIL_SIZE |
                                        SMP_INPUT | SMP_TIME_ABSOLUTE};
      s.time = 1000 + i;
      s.pa = {900, 900};
      s.input = i == 8 && different == 2 ? 5 : 0x8000;
      if (i == 8 && (different == 0 || different == 1)) s.pa[static_cast<unsigned>(different)] = -5;
      w.sample(s);
    }
    const Scanned scanned(w.endBlock(1021), FIX);
    const bool raw = different == 0 || different == 1;
    EXPECT_EQ(scanned.index.gzdItemList.size(), raw ? 22u : 23u) << different;
    EXPECT_EQ(scanned.index.inputType, different == 2 ? 2 : 0) << different;
  }
}

TEST(Scan, ABoundaryEndsWhatIsKnownOfTheSamples) {
  GzdWriter w;
  w.startBlock({.time = 1000, .rate = 1000});
  for (const UINT32 time : {1000u, 1001u, 1002u}) w.gazeSample(time, 1, 1, 900);
  w.endBlock(1003).startBlock({.time = 2000, .rate = 500});
  for (const UINT32 time : {2000u, 2002u, 2004u, 2008u}) w.gazeSample(time, 1, 1, 900);
  w.endBlock(2010);
  EXPECT_EQ(Scanned(w, FIX).describe(),
            "[1000 200:2000 200:2002 200:2004 ]1003 [2000 200:4000 200:4004 200:4008 d200:4012 "
            "200:4016 ]2010");
}

TEST(Scan, FixationsAreMendedOnRequestAndReportedAnyway) {
  GzdWriter w;
  w.startBlock({.time = 1000});
  w.event(EventRecord(7).start(1500)).event(EventRecord(8).start(1200).end(1300)).endBlock(2000);
  const Scanned plain(w);
  EXPECT_EQ(plain.describe(), "[1000 8:2600L 7:3000L ]2000");
  EXPECT_TRUE(plain.out.starts_with("ORIGINAL SFIX time is later"));
  EXPECT_EQ(Scanned(w, FIX).describe(), "[1000 7:2400L 8:2600L ]2000");
}

TEST(Scan, ParametersAreKnownByPlace) {
  GzdWriter w;
  w.startBlock({.time = 1000, .gazePrescale = 10}).endBlock(1001);
  const INT64 second = static_cast<INT64>(w.bodySize());
  w.startBlock({.time = 2000, .gazePrescale = 10}).endBlock(2001);
  const INT64 third = static_cast<INT64>(w.bodySize());
  w.startBlock({.time = 3000, .gazePrescale = 20}).endBlock(3001);
  const Index& index = Scanned(w).index;
  ASSERT_EQ(index.parameterEpochs.size(), 3u);
  EXPECT_EQ(index.parameterEpochs[0].filePos, 0);
  EXPECT_LT(index.parameterEpochs[1].filePos, second);
  EXPECT_EQ(index.parameterEpochs[1].parameters.gaze_prescale, 10.0f);
  EXPECT_EQ(index.parameterEpochs[2].filePos, third + 2);
  EXPECT_EQ(index.parameterEpochs[2].parameters.gaze_prescale, 20.0f);
}

// The sample flags of a block whose last sample has this head type.
UINT16 flags_of_block(unsigned headType, int blockFlags, unsigned sampleFlags) {
  GzdWriter w;
  w.startBlock({.time = 1000, .sampleFlags = blockFlags});
  w.sample({.flags = sampleFlags, .time = 1000, .headType = headType});
  w.endBlock(1001);
  return Scanned(w).index.allRecordings[0]->sflags;
}

TEST(Scan, TheLastSampleTellsWhatHeadDataABlockHas) {
  constexpr unsigned HEAD = SMP_LEFT | SMP_TIME_ABSOLUTE | SMP_HEAD_DATA;
  constexpr int BLOCK = SMP_LEFT | SMP_HEAD_DATA;
  EXPECT_EQ(flags_of_block(0xF3, BLOCK, HEAD), SMP_LEFT);
  EXPECT_EQ(flags_of_block(0xB3, BLOCK, HEAD), BLOCK);
  EXPECT_EQ(flags_of_block(0xB8, BLOCK, HEAD), BLOCK | 1);
  EXPECT_EQ(flags_of_block(0xF8, BLOCK, HEAD), BLOCK | 1);
  EXPECT_EQ(flags_of_block(0xB8, BLOCK, SMP_LEFT | SMP_TIME_ABSOLUTE), BLOCK);
  EXPECT_EQ(flags_of_block(0xF3, 0, HEAD), 0);
}

// ---- damage
// --------------------------------------------------------------------------------------

TEST(Scan, AStreamWithoutItsEndTag) {
  GzdWriter w;
  w.message(5, "x").endTag(false);
  const Scanned strict(w);
  EXPECT_EQ(strict.error, "End of file Exception");
  EXPECT_EQ(strict.log, "error reading gzd file 7a r = 0 \n");
  const Scanned safe(w, FAILSAFE);
  EXPECT_EQ(safe.error, "");
  EXPECT_EQ(safe.describe(), "24:10");
  EXPECT_EQ(safe.log,
            "error reading gzd file 7a r = 0 \nError reading items End of file Exception \n");
}

TEST(Scan, FailsafeAsksAgainBehindAZeroTag) {
  GzdWriter w;
  w.message(5, "x").raw({0, 0}).message(6, "y").raw({0, 0, 0, 0}).message(7, "z");
  EXPECT_EQ(Scanned(w).describe(), "24:10");
  EXPECT_EQ(Scanned(w, FAILSAFE).describe(), "24:10 24:12");
}

TEST(Scan, ACutEvent) {
  GzdWriter w;
  w.message(5, "x");
  const Bytes whole = Scanned::records_of(w.message(6, "a longer message"));
  const Bytes cut(whole.begin(), whole.end() - 6);
  EXPECT_EQ(Scanned(cut).error, "End of file Exception");
  const Scanned safe(cut, FAILSAFE);
  EXPECT_EQ(safe.describe(), "24:10");
  EXPECT_EQ(safe.log,
            "error reading gzd file 12\nError End of file Exception \nerror reading gzd file 1\n"
            "Unexpected file read error while reading event; simulating end reached. \n");
}

TEST(Scan, ACutSample) {
  const Bytes whole = Scanned::records_of(GzdWriter().message(5, "x").gazeSample(6, 1, 1, 9));
  const Bytes cut(whole.begin(), whole.end() - 3);
  EXPECT_EQ(Scanned(cut).error, "End of file Exception");
  const Scanned safe(cut, FAILSAFE);
  EXPECT_EQ(safe.describe(), "24:10");
  EXPECT_EQ(safe.log,
            "error reading gzd file 7a r = 1 \nError End of file Exception \n"
            "error reading gzd file 2\n"
            "Unexpected file read error while reading sample; simulating end reached. \n");
}

// What an unreadable record holds says nothing of the file's times.
TEST(Scan, FailsafeTakesNoTimesFromWhatCannotBeRead) {
  GzdWriter message;
  GzdWriter sample;
  message.message(4'000'000'000, "a longer message");
  sample.gazeSample(4'000'000'000, 1, 1, 9);
  for (const GzdWriter* last : {&message, &sample}) {
    const Bytes alone = Scanned::records_of(*last);
    Bytes cut = Scanned::records_of(GzdWriter().message(5, "x").endTag(false));
    cut.insert(cut.end(), alone.begin(), alone.end() - 4);
    EXPECT_EQ(Scanned(cut, FAILSAFE).index.maxTime, 5u);
    EXPECT_EQ(Scanned(Bytes(alone.begin(), alone.end() - 4), FAILSAFE).index.minTime, 0u);
  }
}

TEST(Scan, AMessageThatIsTooLong) {
  GzdWriter w;
  w.event(EventRecord(24).start(1).text("x", 499));
  const Scanned strict(w);
  EXPECT_EQ(strict.error, "Error reading event - type(preScan)");
  EXPECT_EQ(strict.log, "error reading gzd file 1\n");
  EXPECT_EQ(Scanned(w, FAILSAFE).error, "");
}

TEST(Scan, FailsafeSkipsEventsThatCannotBe) {
  GzdWriter w;
  // A tag of type 0 that is not 0: its eye bits are set.
  w.event(EventRecord(0, GZD_RIGHT_EYE).start(5)).event(EventRecord(1)).event(EventRecord(7));
  w.event(EventRecord(8)).event(EventRecord(24)).event(EventRecord(5).start(1));
  EXPECT_EQ(Scanned(w).describe(), "7:0L 8:0L 24:0 5:2L");
  const Scanned safe(w, FAILSAFE);
  EXPECT_EQ(safe.describe(), "8:0L 24:0 5:2L");
  const std::string skipped = "Unexpected time stamp 0. Skipping event \n";
  EXPECT_TRUE(safe.log.starts_with("Unexpected event type tag 0. Skipping event \n" + skipped +
                                   skipped + "error reading gzd file 7a"));
}

TEST(Scan, ManyDummiesBeforeALongFileDoNotAskForMoreMemoryThanThereIs) {
  GzdWriter w;
  w.startBlock({.time = 1000});
  for (const UINT32 time : {1000u, 1001u, 1002u, 10'000u, 19'000u, 28'000u}) {
    w.gazeSample(time, 1, 1, 900);
  }
  for (UINT32 i = 1; i < 20'000; ++i) w.message(28'000 + i, std::string(400, 'm'));
  const Scanned scanned(w, FIX);
  EXPECT_EQ(scanned.error, "");
  EXPECT_LT(scanned.index.gzdItemList.capacity(), 2'000'000u);
}

}  // namespace
