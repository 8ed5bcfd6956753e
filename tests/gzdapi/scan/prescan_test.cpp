// Limits of the scan: what it cannot read, and an index that is too large.
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

}  // namespace
