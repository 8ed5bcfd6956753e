// A small recording with every kind of record, cut at every byte and with every byte flipped: it
// opens or is refused, in every mode, and whatever opens can be walked and fetched to its end.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/recording_fixture.h"

namespace {

using gzdsynth::Bytes;
using gzdsynth::EventRecord;
using gzdsynth::GzdWriter;
using gzdsynth::SampleRecord;

GzdWriter small_recording() {
  GzdWriter w(4);
  w.message(990, "-5 TRIALID 1");
  w.start_block({.time = 1000, .rate = 2000, .sample_flags = 0xFFFC, .pupilPrescale = 2});
  w.event(EventRecord(GZD_START_FIXATION).start(1000))
      .event(EventRecord(GZD_START_BLINK).start(1001));
  SampleRecord s{.flags = 0xFFFC, .time = 1000, .pa = {900, 900}};
  s.blocks = {gzdsynth::head_pose_block({}), gzdsynth::ellipse_block72({}),
              gzdsynth::head_target_block({})};
  s.skipped = {gzdsynth::unknown_block(1, Bytes(3, 9))};
  w.sample(s);
  for (int i = 1; i < 8; ++i) {
    w.sample({.flags = SMP_LEFT | SMP_GAZE | SMP_HREF | SMP_PUPIL_SIZE,
              .step = i % 2 == 0 ? 1u : 0u,
              .pa = {900, 0}});
  }
  w.event(EventRecord(GZD_END_BLINK).start(1001).end(1003));
  w.event(EventRecord(GZD_END_FIXATION).start(1000).end(1004).gaze_average(5, 6).head_pose({}));
  w.long_message(1005, 1, "a text in three pieces", 8).button(1006, 0x0101).input(1006, 3);
  w.end_block(1007);
  return w;
}

constexpr int all_flags = GZD_OPEN_FAILSAFE | GZD_OPEN_MESSAGE_OFFSETS;

// Opens, walks and fetches; returns the number of elements, or -1 for a file that is refused.
int use_all(const std::string& path, int consistency, int events, int samples) {
  int rv = 77;
  GZDFILE* file = gzd_open_file(path.c_str(), consistency, events, samples, &rv);
  EXPECT_EQ(rv, file != nullptr ? 0 : -1);
  if (file == nullptr) return -1;
  int count = 0;
  while (gzd_get_next_data(file) != GZD_END_OF_DATA && count < 100'000) {
    ALLF_DATA* record = gzd_get_float_data(file);
    if (record != nullptr) {
      gzd_get_sample_close_to_time(file, record->fs.time);
      const FEVENT* event = gzd_get_event_data(file);
      if (event != nullptr && event->message != nullptr) {
        EXPECT_LT(std::strlen(&event->message->c), 500u);
      }
    }
    ++count;
  }
  EXPECT_EQ(count, static_cast<int>(gzd_get_element_count(file)));
  gzd_get_trial_count(file);
  gzd_close_file(file);
  return count;
}

// Elements found by the plainest strict and the plainest fail-safe open.
struct Found {
  int strict;
  int failsafe;
};

Found use_in_all_modes(const ScratchDirectory& scratch, const Bytes& bytes) {
  const std::string path = scratch.save("damaged", bytes);
  for (const int level : {GZD_CONSISTENCY_CHECK, GZD_CONSISTENCY_REPAIR}) {
    use_all(path, level, 1, 1);
    use_all(path, level | all_flags, 1, 1);
  }
  use_all(path, GZD_CONSISTENCY_REPAIR | all_flags, 0, 1);
  use_all(path, GZD_OPEN_FAILSAFE, 1, 0);
  return {use_all(path, GZD_CONSISTENCY_NONE, 1, 1), use_all(path, GZD_OPEN_FAILSAFE, 1, 1)};
}

TEST(Damage, CutAtEveryByte) {
  const ScratchDirectory scratch;
  const Bytes whole = small_recording().bytes();
  const std::size_t head = small_recording().header().size();
  CapturedLog log;
  standard_output_of([&] {
    int before = 0;
    for (std::size_t cut = 0; cut < whole.size(); ++cut) {
      const Found found = use_in_all_modes(scratch, gzdsynth::cut_at(whole, cut));
      EXPECT_EQ(found.strict, -1) << cut;
      EXPECT_EQ(found.failsafe >= 0, cut >= head) << cut;
      EXPECT_GE(found.failsafe, cut >= head ? before : -1) << "a longer file holds no less";
      before = std::max(before, found.failsafe);
    }
    const Found found = use_in_all_modes(scratch, whole);
    EXPECT_EQ(found.strict, before);
    EXPECT_EQ(found.failsafe, before);
    EXPECT_GT(before, 15);
  });
}

TEST(Damage, EveryByteFlipped) {
  const ScratchDirectory scratch;
  const Bytes whole = small_recording().bytes();
  CapturedLog log;
  standard_output_of([&] {
    for (std::size_t at = 0; at < whole.size(); ++at) {
      const unsigned mask = at % 3 == 0 ? 0xFFu : at % 3 == 1 ? 0x01u : 0x80u;
      use_in_all_modes(scratch, gzdsynth::flipped(whole, at, mask));
      const std::string path = scratch.save("flipped", gzdsynth::flipped(whole, at, mask ^ 0x55u));
      use_all(path, GZD_CONSISTENCY_REPAIR | all_flags, 1, 1);
    }
  });
}

TEST(Damage, EveryByteOfACompressedBodyFlipped) {
  const ScratchDirectory scratch;
  GzdWriter w = small_recording();
  const Bytes whole = w.magic(gzdsynth::Magic::OspZip).bytes();
  CapturedLog log;
  standard_output_of([&] {
    for (std::size_t at = 0; at < whole.size(); ++at) {
      const std::string path = scratch.save("damaged", gzdsynth::flipped(whole, at));
      use_all(path, GZD_CONSISTENCY_REPAIR, 1, 1);
      use_all(path, GZD_CONSISTENCY_REPAIR | all_flags, 1, 1);
    }
  });
}

}  // namespace
