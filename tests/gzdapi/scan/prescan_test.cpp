// Limits of the scan: what it cannot read, and an index that is too large.
#include "scan/prescan.h"

#include <gtest/gtest.h>

#include <random>

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

  [[nodiscard]] std::vector<INT64> places() const {
    std::vector<INT64> found;
    for (const GZDItem item : index.gzdItemList) found.push_back(item.getFilePos());
    return found;
  }
  static Bytes records_of(const GzdWriter& writer) {
    const Bytes file = writer.bytes();
    return {file.begin() + static_cast<std::ptrdiff_t>(writer.header().size()), file.end()};
  }

  // "[1000" and "]2000" boundaries, "type:stamp" others with "L" or "R" after, "d" before dummies.
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

constexpr ScanOptions fix_scan{.fixConsistency = true};
constexpr ScanOptions failsafe_scan{.failsafe = true};

// ---- samples ------------------------------------------------------------------------------------

// Samples of one layout, most of which follow the one before at its distance, in every other way
// too.
Bytes mostly_regular(unsigned seed) {
  std::mt19937 random(seed);
  const auto now_and_then = [&random](unsigned each) { return random() % each == 0; };
  gzdsynth::SampleRecord sample;
  const unsigned kinds[] = {SMP_TIME_ABSOLUTE, SMP_INPUT, SMP_HEAD_DATA, SMP_EXTENDED, SMP_RIGHT};
  sample.flags = SMP_LEFT | SMP_TIME_ABSOLUTE | SMP_GAZE | SMP_PUPIL_SIZE;
  for (const unsigned kind : kinds)
    if (now_and_then(2)) sample.flags ^= kind;
  sample.step = seed % 3;
  sample.headType = 0xB2;
  sample.blocks = {gzdsynth::head_target_block({})};
  sample.time = 1000;
  GzdWriter writer;
  gzdsynth::BlockStart start;
  start.time = sample.time - 2;
  start.rate = seed % 3 == 0 ? 2000 : 500;
  start.sample_flags = static_cast<int>(sample.flags);
  writer.start_block(start);
  const unsigned usual = sample.flags;
  for (unsigned i = 0; i < 600; ++i) {
    const unsigned step = seed % 3 == 0 ? i % 2 : 2;
    sample.step = now_and_then(50) ? static_cast<unsigned>(random() % 5) : step;
    sample.time += sample.step - (now_and_then(200) ? 7 : 0);
    sample.flags = now_and_then(60) ? usual ^ SMP_INPUT : usual;
    sample.input = now_and_then(400) ? 3 : NOT_RECORDED_WORD;
    sample.pa = {now_and_then(80) ? -5 : 900, 900};
    if (now_and_then(40)) sample.headType ^= 1;
    if (now_and_then(40)) sample.blocks.push_back(gzdsynth::unknown_block(9, {1, 2}));
    if (sample.blocks.size() > 2) sample.blocks.resize(1);
    if (now_and_then(90)) writer.message(sample.time, "x");
    writer.sample(sample);
  }
  return Scanned::records_of(writer.end_block(sample.time + 2));
}

// A trace makes the scan read each sample by itself.
TEST(Scan, TakesManySamplesTogetherAsOneByOne) {
  for (unsigned seed = 0; seed < 120; ++seed) {
    SCOPED_TRACE(seed);
    ScanOptions options{.failsafe = true, .fixConsistency = seed % 2 == 0};
    const Bytes records = mostly_regular(seed);
    const Scanned together(records, options);
    options.debugFileName = "/dev/null";
    const Scanned single(records, options);
    ASSERT_EQ(together.describe(), single.describe());
    ASSERT_EQ(together.places(), single.places());
    EXPECT_EQ(together.log, single.log);
    EXPECT_EQ(together.index.inputType, single.index.inputType);
    EXPECT_EQ(together.index.minTime, single.index.minTime);
    EXPECT_EQ(together.index.maxTime, single.index.maxTime);
    EXPECT_EQ(together.index.findings.size(), single.index.findings.size());
  }
}

// ---- damage -------------------------------------------------------------------------------------

// What an unreadable record holds says nothing of the file's times.
TEST(Scan, FailsafeTakesNoTimesFromWhatCannotBeRead) {
  GzdWriter message;
  GzdWriter sample;
  message.message(4'000'000'000, "a longer message");
  sample.gaze_sample(4'000'000'000, 1, 1, 9);
  for (const GzdWriter* last : {&message, &sample}) {
    const Bytes alone = Scanned::records_of(*last);
    Bytes cut = Scanned::records_of(GzdWriter().message(5, "x").end_tag(false));
    cut.insert(cut.end(), alone.begin(), alone.end() - 4);
    EXPECT_EQ(Scanned(cut, failsafe_scan).index.maxTime, 5u);
    EXPECT_EQ(Scanned(Bytes(alone.begin(), alone.end() - 4), failsafe_scan).index.minTime, 0u);
  }
}

TEST(Scan, RefusesAnIndexThatIsTooLarge) {
  GzdWriter samples, events, pieces;
  pieces.message(1, "!V LONGMS_ST 1_x");
  for (UINT32 i = 0; i < 2000; ++i) {
    samples.gaze_sample(3 * i + i % 2, 1, 1, 900);  // regular ones would take nothing
    events.button(i, 1);
    pieces.message(1, "!V LONGMS_CONT 1_x");
  }
  for (const GzdWriter* w : {&samples, &events, &pieces}) {
    EXPECT_EQ(Scanned(*w, {.largestIndex = 100'000}).error, "");
    EXPECT_EQ(Scanned(*w, {.failsafe = true, .largestIndex = 10'000}).error,
              "The index of this recording would take more than 0 MB of memory");
  }
}

TEST(Scan, TimesToldByIncrementsWrap) {
  GzdWriter samples;
  samples.sample({.time = 0xFFFFFFE0});
  for (int i = 0; i < 20; ++i) samples.sample({.flags = SMP_LEFT | SMP_GAZE, .step = 4});
  const Scanned scanned(samples);
  const ItemList& items = scanned.index.gzdItemList;
  ASSERT_EQ(items.size(), 21u);
  EXPECT_EQ(items.stampAt(0), 0u);
  EXPECT_EQ(items.stampAt(20), 2 * UINT64{0xFFFFFFFC});
}

}  // namespace
