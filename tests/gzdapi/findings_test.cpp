// What a client can learn of a recording beyond its records: findings, where elements come from,
// notices; and the walk from the beginning once more.
#include "base/findings.h"

#include <fstream>

#include "record/event_fields.h"
#include "support/recording_fixture.h"

using namespace gzd;

namespace {

using gzdsynth::Bytes;
using gzdsynth::EventRecord;
using gzdsynth::GzdWriter;

// "kind eye detail count @place start-end", a line each; the place from the first record on, "-"
// without one.
std::string findings_of(const Bytes& bytes, int flags) {
  const auto header = static_cast<INT64>(GzdWriter(3).header().size());
  const CapturedLog quiet;
  std::string text;
  standard_output_of([&] {
    OpenRecording file(bytes, flags);
    GZD_FINDING f;
    for (unsigned i = 0; gzd_get_finding(file, i, &f) == 0; ++i) {
      char line[200];
      const std::string place = f.place < 0 ? "-" : std::to_string(f.place - header);
      std::snprintf(line, sizeof line, "%d %d %d %lld @%s %g-%g\n", f.kind, f.eye, f.detail,
                    static_cast<long long>(f.count), place.c_str(), f.start, f.end);
      text += line;
    }
    EXPECT_EQ(gzd_get_finding(file, gzd_get_finding_count(file), &f), -1);
  });
  return text;
}

// A block of 1000 Hz, 1000 to 1010 ms, without the samples from `from` up to `to`.
GzdWriter block(UINT32 from = 0, UINT32 to = 0, UINT32 begin = 1000, UINT32 end = 1010) {
  GzdWriter w(3);
  w.start_block({.time = begin});
  for (UINT32 time = begin; time < end; ++time) {
    if (time < from || time >= to) w.gaze_sample(time, 10, 20, 900);
  }
  return w;
}

TEST(Findings, TellWhatWasFoundWhereAndWhen) {
  constexpr int check_only = GZD_CONSISTENCY_CHECK;
  constexpr int check_and_repair = GZD_CONSISTENCY_REPAIR;
  constexpr int failsafe_open = GZD_OPEN_FAILSAFE;
  constexpr unsigned unknown_kind = 11;
  const auto event = [](unsigned type, UINT32 start, UINT32 end = 0) {
    EventRecord e(type, GZD_RIGHT_EYE);
    e.start(start);
    return end != 0 ? e.end(end) : e;
  };
  const std::size_t behind_tag = block().end_block(1010).body_size() + 2;
  const auto zipped_with_more = [] {
    Bytes bytes = block().end_block(1010).magic(gzdsynth::Magic::FalcZip).bytes();
    bytes.insert(bytes.end(), 3, 0);
    return bytes;
  };
  const auto at = [](const GzdWriter& w) { return " @" + std::to_string(w.body_size()) + " "; };
  const struct {
    const char* what;
    Bytes recording;
    int flags;
    std::string expected;
  } cases[] = {
      {"sound", block().end_block(1010).bytes(), check_and_repair, ""},
      {"sound, fail-safe", block().end_block(1010).bytes(), check_and_repair | failsafe_open, ""},
      {"cut", block().end_tag(false).bytes(), failsafe_open,
       "1 0 0 0" + at(block()) + "1009-1009\n"},
      {"cut in a record", block().raw({0x20, 0x00, FIELD_START_TIME}).end_tag(false).bytes(),
       failsafe_open, "1 0 0 3" + at(block()) + "1009-1009\n"},
      {"damage", block().raw({GZD_MESSAGE, 0x00, FIELD_MESSAGE, 0xFF, 0xFF}).bytes(), failsafe_open,
       "2 0 0 7" + at(block()) + "1009-1009\n"},
      {"unread", block().end_block(1010).raw({0, 0, 1, 2}).bytes(), 0,
       "4 0 0 4 @" + std::to_string(behind_tag) + " 1010-1010\n"},
      {"unread behind what is compressed", zipped_with_more(), 0,
       "4 0 0 3 @" + std::to_string(behind_tag - GzdWriter(3).header().size()) + " 1010-1010\n"},
      {"gap", block(1003, 1006).end_block(1010).bytes(), check_and_repair,
       "6 0 0 3 @- 1002-1006\n"},
      {"long gap", block(1003, 12000, 1000, 12010).end_block(12010).bytes(), check_and_repair,
       "7 0 0 10997 @- 1002-12000\n11 0 0 1 @- -1--1\n"},
      {"late first sample", block(1000, 1004).end_block(1010).bytes(), check_and_repair,
       "8 1 0 4 @- 1000-1004\n"},
      {"another period",
       block(1001, 1002).gaze_sample(1012, 1, 1, 900).gaze_sample(1014, 1, 1, 900).bytes(),
       check_and_repair, "6 0 0 2 @- 1009-1012\n6 0 0 1 @- 1012-1014\n11 0 0 1 @- -1--1\n"},
      {"a period that is not the rate's",
       GzdWriter(3)
           .start_block({.time = 1000})
           .gaze_sample(1000, 1, 1, 900)
           .gaze_sample(1002, 1, 1, 900)
           .gaze_sample(1004, 1, 1, 900)
           .bytes(),
       check_and_repair, "9 0 4 1 @- 1002-1004\n6 0 0 1 @- 1002-1004\n11 0 0 1 @- -1--1\n"},
      {"samples outside",
       block().end_block(1010).gaze_sample(1012, 1, 1, 1).gaze_sample(1013, 1, 1, 1).bytes(),
       check_only, "12 0 0 2" + at(block().end_block(1010)) + "1012-1013\n"},
      {"samples end early", block(1006, 1010).end_block(1010).bytes(), 0,
       "13 1 0 5 @- 1005-1010\n"},
      {"no sample at all", block(1000, 1010).end_block(1010).bytes(), 0,
       "13 1 0 10 @- 1000-1010\n"},
      {"unknown rate", GzdWriter(3).start_samples({.time = 1000, .rate = 333}).bytes(), 0,
       "15 0 333 1 @0 1000-1000\n"},
      {"events outside",
       block()
           .end_block(1010)
           .event(event(GZD_START_SACCADE, 1008))
           .event(event(GZD_END_SACCADE, 1008, 1015))
           .bytes(),
       check_only,
       "17 2 6 1" + at(block().end_block(1010).event(event(GZD_START_SACCADE, 1008))) +
           "1015-1010\n"},
      {"blink without start",
       block()
           .event(event(GZD_END_BLINK, 1002, 1004))
           .event(event(GZD_START_BLINK, 1006))
           .end_block(1010)
           .bytes(),
       check_and_repair,
       "18 2 3 1 @- 1000-1000\n20 2 3 1" + at(block().event(event(GZD_END_BLINK, 1002, 1004))) +
           "1006-1006\n"},
      {"unpaired saccade",
       block()
           .event(event(GZD_START_SACCADE, 1003))
           .event(event(GZD_START_SACCADE, 1004))
           .event(event(GZD_END_SACCADE, 1004, 1006))
           .bytes(),
       0, "20 2 5 1" + at(block()) + "1003-1003\n"},
      {"fixation that ends first",
       block()
           .event(event(GZD_START_FIXATION, 1006))
           .event(event(GZD_END_FIXATION, 1002, 1004))
           .bytes(),
       0,
       "21 2 0 1 @- 1006-1004\n20 2 8 1" + at(block().event(event(GZD_START_FIXATION, 1006))) +
           "1004-1004\n20 2 7 1" + at(block()) + "1006-1006\n"},
      {"event without time", block().event(EventRecord(GZD_START_BLINK)).bytes(), failsafe_open,
       "22 0 3 1" + at(block()) + "0-0\n"},
      {"unknown field and kind",
       block().event(EventRecord(unknown_kind).start(1005)).raw({GZD_MESSAGE, 0, 200, 0}).bytes(),
       0,
       "24 0 11 1" + at(block()) + "1005-1005\n23 0 200 1" +
           at(block().event(EventRecord(unknown_kind).start(1005))) + "0-0\n"},
      {"piece of a message", block().message(1003, "!V LONGMS_CONT 1_x").bytes(), 0,
       "25 0 24 1" + at(block()) + "1003-1003\n"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(findings_of(c.recording, c.flags), c.expected) << c.what;
  }
}

TEST(Findings, AreBounded) {
  Findings findings;
  constexpr UINT32 most_kept = Findings::most_of_a_kind;
  for (UINT32 i = 0; i < 2 * most_kept; ++i) {
    findings.add({.kind = GZD_FINDING_GAP_FILLED, .count = 2, .start = 10 * i, .end = 10 * i + 1});
  }
  findings.add({.kind = GZD_FINDING_CUT, .place = 7});
  ASSERT_EQ(findings.size(), most_kept + 1u);
  const GZD_FINDING last = findings.at(most_kept - 1);
  EXPECT_EQ(last.merged, most_kept + 1);
  EXPECT_EQ(last.count, 2 * (most_kept + 1));
  EXPECT_EQ(last.start, 5.0 * (most_kept - 1));
  EXPECT_EQ(last.end, 5.0 * (2 * most_kept - 1) + 0.5);
  EXPECT_EQ(findings.at(most_kept).place, 7);
}

// ---- the walk -----------------------------------------------------------------------------------

// A recording with its message log beside it, a gap, and a blink that gets a start.
class WholeWalk : public testing::Test {
 protected:
  void SetUp() override {
    GzdWriter w = block(1003, 1005);
    w.event(EventRecord(GZD_END_BLINK).start(1002).end(1006))
        .event(EventRecord(GZD_START_BLINK).start(1008))
        .end_block(1010);
    path = scratch.save("r.gzd", w.bytes());
    std::ofstream(scratch.file("tq_messages.log"))
        << "1 TRACKER_TIME 1 1000.0\n7 TRIAL\nQuit logger\n";
    open(GZD_LOAD_EVENTS | GZD_LOAD_MESSAGE_LOG);
  }
  void TearDown() override { gzd_close_file(file); }

  void open(int events) {
    if (file != nullptr) gzd_close_file(file);
    const CapturedLog quiet;
    int rv;
    file = gzd_open_file(path.c_str(), GZD_CONSISTENCY_REPAIR, events, 1, &rv);
    ASSERT_NE(file, nullptr);
  }

  // At most `steps` elements, each as "code/origin:time".
  std::string walk(unsigned steps) {
    std::string text;
    while (steps-- > 0) {
      const int code = gzd_get_next_data(file);
      if (code == GZD_END_OF_DATA) break;
      const ALLF_DATA* const record = gzd_get_float_data(file);
      const UINT32 time = code == GZD_SAMPLE      ? record->fs.time
                          : code == GZD_RECORDING ? record->rec.time
                                                  : record->fe.sttime;
      text += std::to_string(code) + "/" + std::to_string(gzd_get_element_origin(file)) + ":" +
              std::to_string(time) + " ";
      if (code == GZD_SAMPLE) text.append(reinterpret_cast<const char*>(record), sizeof(FSAMPLE));
    }
    return text;
  }

  ScratchDirectory scratch;
  std::string path;
  GZDFILE* file = nullptr;
};

TEST_F(WholeWalk, ElementsTellWhereTheyComeFrom) {
  EXPECT_EQ(gzd_get_element_origin(file), GZD_ORIGIN_NONE);
  gzd_set_velocity_kinds(file, GZD_VELOCITY_NONE);
  std::string origins;
  while (const int code = gzd_get_next_data(file)) {
    origins += std::to_string(code) + "/" + std::to_string(gzd_get_element_origin(file)) + " ";
  }
  EXPECT_EQ(origins,
            "30/1 3/3 200/1 200/1 200/1 200/2 200/2 200/1 24/4 200/1 4/1 200/1 3/1 200/1 200/1 "
            "30/1 ");
}

TEST_F(WholeWalk, BeginsAnewWhereverItStood) {
  const std::string whole = walk(100);
  for (unsigned steps = 0; steps < 18; ++steps) {
    gzd_rewind(file);
    EXPECT_EQ(gzd_get_element_index(file), 0u);
    EXPECT_EQ(gzd_get_float_data(file), nullptr);
    EXPECT_EQ(gzd_get_sample_per_second(file), 0.0f);
    EXPECT_TRUE(whole.starts_with(walk(steps)));
    gzd_rewind(file);
    EXPECT_EQ(walk(100), whole) << steps;
  }
  EXPECT_EQ(gzd_get_trial_count(file), 1);
  ASSERT_EQ(gzd_jump_to_trial(file, 0), 0);
  gzd_rewind(file);
  TRIAL trial;
  EXPECT_EQ(gzd_get_trial_header(file, &trial), -1);
  EXPECT_EQ(walk(100), whole);
}

// From wherever the walk stands; none while a log is merged.
TEST_F(WholeWalk, SkipsTheSamplesThatComeNext) {
  unsigned filled = 99;
  static_cast<void>(walk(2));
  EXPECT_EQ(gzd_skip_samples(file, &filled) + filled, 0u);
  open(GZD_LOAD_EVENTS);
  for (unsigned steps = 0; steps < 18; ++steps) {
    gzd_rewind(file);
    static_cast<void>(walk(steps));
    unsigned samples = 0, gaps = 0;
    while (gzd_get_next_data(file) == GZD_SAMPLE && ++samples)
      gaps += gzd_get_element_origin(file) == GZD_ORIGIN_GAP ? 1 : 0;
    const std::string rest = walk(100);
    gzd_rewind(file);
    static_cast<void>(walk(steps));
    EXPECT_EQ(gzd_skip_samples(file, &filled), samples) << steps;
    EXPECT_EQ(filled, gaps) << steps;
    EXPECT_EQ(gzd_skip_samples(file, nullptr), 0u);
    static_cast<void>(gzd_get_next_data(file));
    EXPECT_EQ(walk(100), rest) << steps;
  }
}

TEST(Rewind, TheFirstRecordDecidesAboutTimesAnew) {
  OpenRecording file(block(0, 0, 2000000000, 2000000004).end_block(2000000004));
  const CapturedLog quiet;
  const std::string whole = file.describe();
  EXPECT_EQ(whole, "[0 s0 s1 s2 s3 ]4");
  gzd_rewind(file);
  EXPECT_EQ(file.describe(), whole);
}

std::string noticed;
void receive_notice(const char* notice) {
  noticed += notice;
}

TEST(Notices, GoWhereTheClientWants) {
  const Bytes recording = block().raw({GZD_MESSAGE, 0, 200, 0}).bytes();
  const std::string notice = "ERROR: Do not know how to handle 200\n";
  EXPECT_EQ(standard_output_of([&] { OpenRecording file(recording); }), notice);
  gzd_set_notice_function(receive_notice);
  EXPECT_EQ(standard_output_of([&] { OpenRecording file(recording); }), "");
  gzd_set_notice_function(nullptr);
  EXPECT_EQ(noticed, notice);
}

}  // namespace
