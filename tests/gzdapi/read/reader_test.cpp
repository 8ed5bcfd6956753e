#include "read/reader.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <random>
#include <regex>

#include "record/Sample.h"
#include "support/recording_fixture.h"

using namespace gzd;

namespace {

using gzdsynth::EventRecord;
using gzdsynth::GzdWriter;
using gzdsynth::SampleRecord;

constexpr UINT32 START = 1000;

// A block of samples that move, one a period. With further flags every fifth has those as well, and
// a message behind it that is late.
void add_block(GzdWriter& w, UINT32 start, int count, double rate, unsigned flags, int prescale,
               unsigned furtherFlags = 0) {
  w.startBlock({.time = start,
                .rate = rate,
                .sampleFlags = static_cast<int>(flags),
                .gazePrescale = prescale});
  for (int i = 0; i < count; ++i) {
    SampleRecord s{.flags = flags | SMP_TIME_ABSOLUTE | (i % 5 == 4 ? furtherFlags : 0)};
    s.time = start + static_cast<UINT32>(i * 1000.0 / rate);
    s.px = {i * 7 % 300, i * 5 % 300};
    s.py = {i * 3 % 300, i * 11 % 300};
    s.hx = s.px;
    s.hy = s.py;
    s.gx = {3000 + i * i % 500, 2000 + i};
    s.gy = {1000 - i, 500 + i * 13 % 90};
    s.rx = 300;
    s.ry = 310;
    s.pa = {900 + i, 800};
    w.sample(s);
    if (furtherFlags != 0 && i % 5 == 4) w.message(s.time - 4, "late");
  }
  w.endBlock(start + static_cast<UINT32>(count * 1000.0 / rate));
}

constexpr unsigned ALL_POSITIONS =
    SMP_LEFT | SMP_RIGHT | SMP_PUPIL_POS | SMP_HREF | SMP_GAZE | SMP_RESOLUTION | SMP_PUPIL_SIZE;

constexpr unsigned COMMON = SMP_LEFT | SMP_RIGHT | SMP_GAZE | SMP_RESOLUTION | SMP_PUPIL_SIZE;

TEST(Reader, ParametersBelongToTheBlock) {
  GzdWriter w;
  for (const int prescale : {10, 20, 5}) {
    const UINT32 start = START * static_cast<UINT32>(prescale);
    w.startBlock({.time = start, .gazePrescale = prescale});
    for (UINT32 i = 1; i <= 3; ++i) w.gazeSample(start + i, 100, 50, 900);
    w.event(EventRecord(8).start(1).end(start + 4).gazeAverage(100 * prescale, 50 * prescale));
    w.endBlock(start + 5);
  }
  OpenRecording file(w);
  int samples = 0;
  while (const ALLF_DATA* record = file.nextOf(GZD_SAMPLE)) {
    EXPECT_EQ(record->fs.gx[0], 100.0f);
    ++samples;
  }
  EXPECT_EQ(samples, 9);
  for (const UINT32 time : {20'002u, 5'002u, 10'002u, 20'003u}) {
    const ALLF_DATA* record = gzd_get_sample_close_to_time(file, time);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->fs.gx[0], 100.0f);
  }
  OpenRecording again(w);
  while (const ALLF_DATA* record = again.nextOf(GZD_END_FIXATION)) {
    EXPECT_EQ(record->fe.gavx, 100.0f);
  }
}

TEST(Reader, VelocitiesSwitchedOffLeaveAllElseAsItIs) {
  for (const double rate : {250.0, 1000.0, 2000.0}) {
    GzdWriter w(3);
    add_block(w, START, 700, rate, ALL_POSITIONS, 10);
    add_block(w, 9000, 300, rate, SMP_LEFT | SMP_GAZE | SMP_PUPIL_SIZE, 20);
    add_block(w, 20000, 30, rate, SMP_RIGHT | SMP_HREF, 10);  // sizes come from the queue
    add_block(w, 30000, 300, rate, COMMON | SMP_STATUS | SMP_BUTTONS, 20);
    OpenRecording with(w);
    OpenRecording without(w);
    gzd_set_velocity_kinds(without, GZD_VELOCITY_NONE);
    const auto expected = with.samples();
    const auto plain = without.samples();
    ASSERT_EQ(plain.size(), 1330u);
    ASSERT_EQ(expected.size(), plain.size());
    int moving = 0;
    for (std::size_t i = 0; i < plain.size(); ++i) {
      moving += expected[i].gxvel[0] != MISSING_DATA && expected[i].gxvel[0] != NOT_RECORDED;
      FSAMPLE stripped = expected[i];
      for (auto* field : {stripped.gxvel, stripped.gyvel, stripped.hxvel, stripped.hyvel,
                          stripped.rxvel, stripped.ryvel, stripped.fgxvel, stripped.fgyvel,
                          stripped.fhxvel, stripped.fhyvel, stripped.frxvel, stripped.fryvel}) {
        field[0] = field[1] = NOT_RECORDED;
      }
      ASSERT_EQ(std::memcmp(&stripped, &plain[i], sizeof stripped), 0) << rate << ' ' << i;
    }
    EXPECT_GT(moving, 500);
  }
}

TEST(Reader, OddStampsCarryTheHalfMillisecond) {
  GzdWriter w;
  add_block(w, START, 4, 2000, ALL_POSITIONS, 10);
  OpenRecording file(w);
  EXPECT_EQ(file.describe(), "[1000 s1000 s1000+ s1001 s1001+ ]1002");
}

TEST(Reader, SamplesOfOneStampHandOutTheirOwnRecords) {
  GzdWriter w;
  w.startBlock({.time = START});
  for (const int x : {1, 2, 3}) w.gazeSample(START, x, 0, 900);
  w.endBlock(START + 1);
  const auto samples = OpenRecording(w).samples();
  ASSERT_EQ(samples.size(), 3u);
  std::vector<float> x = {samples[0].gx[0], samples[1].gx[0], samples[2].gx[0]};
  std::sort(x.begin(), x.end());
  EXPECT_EQ(x, (std::vector<float>{1, 2, 3}));
}

TEST(Reader, DummiesAreRecordsOfTheirNeighboursKind) {
  GzdWriter w;
  w.startBlock({.time = START});
  for (const UINT32 time : {1001u, 1002u, 1003u, 1005u}) {
    w.sample({.flags = ALL_POSITIONS | SMP_TIME_ABSOLUTE | SMP_INPUT | SMP_HEAD_DATA,
              .time = time,
              .pa = {900, 900},
              .input = 7,
              .headType = 0xB3});
  }
  w.endBlock(1006);
  CapturedLog log;
  OpenRecording file(w, GZD_CONSISTENCY_REPAIR);
  const auto samples = file.samples();
  ASSERT_EQ(samples.size(), 6u);
  for (const std::size_t i : {0u, 4u}) {
    const FSAMPLE& s = samples[i];
    EXPECT_EQ(s.time, START + i);
    EXPECT_EQ(s.flags, samples[1].flags);
    EXPECT_EQ(s.htype, 0xB3);
    EXPECT_EQ(s.gx[0], 1e8f);
    EXPECT_EQ(s.py[1], 1e8f);
    EXPECT_EQ(s.pa[1], 1e8f);
    EXPECT_EQ(s.errors, 0);
    EXPECT_EQ(s.input, 0x8000);
    EXPECT_EQ(s.hdata[0], -32768);
    EXPECT_EQ(s.hdata[3], 0);
    EXPECT_EQ(s.gxvel[0], 1e8f);
  }
}

TEST(Reader, SamplesOutsideBlocksAreWarnedOf) {
  GzdWriter w;
  w.gazeSample(500, 1, 2, 900).startBlock({.time = START}).gazeSample(START, 1, 2, 900);
  w.endBlock(START + 1).gazeSample(3000, 3, 4, 900);
  CapturedLog log;
  OpenRecording file(w);
  EXPECT_EQ(file.samples().size(), 3u);
  EXPECT_EQ(log.take(),
            "WARNING: GZD FILE MAY BE CORRUPTED. Samples 500 found without start recording \n"
            "WARNING: GZD FILE MAY BE CORRUPTED. Samples 3000 found without start recording \n");
}

// What cannot be read again is told once and ends the walk; a walk that tried each of the others
// would take time without bound.
TEST(Reader, ARecordingThatShrinksFailsOnce) {
  GzdWriter w(3);
  add_block(w, START, 60'000, 1000, ALL_POSITIONS, 10);
  const ScratchDirectory scratch;
  const std::string path = scratch.save("recording.gzd", w.bytes());
  for (const unsigned kinds : {GZD_VELOCITY_ALL, GZD_VELOCITY_NONE}) {
    (void)scratch.save("recording.gzd", w.bytes());
    int rv = 0;
    GZDFILE* const file = gzd_open_file(path.c_str(), 0, 1, 1, &rv);
    ASSERT_NE(file, nullptr);
    gzd_set_velocity_kinds(file, kinds);
    std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
    CapturedLog log;
    int missing = 0;
    while (gzd_get_next_data(file) != GZD_END_OF_DATA) {
      missing += gzd_get_float_data(file) == nullptr ? 1 : 0;
    }
    EXPECT_EQ(missing, 1);
    EXPECT_EQ(gzd_get_system_error(file), ENODATA);
    EXPECT_EQ(gzd_get_failed_place(file), nullptr);
    EXPECT_EQ(gzd_jump_to_trial(file, 0), 0);
    EXPECT_EQ(gzd_get_next_data(file), GZD_END_OF_DATA);
    EXPECT_TRUE(std::regex_match(
        log.take(), std::regex("error reading gzd file [^\n]*\nError End of file Exception \n")));
    gzd_close_file(file);
  }
}

TEST(Reader, TypesThatCannotBeFetchedAreAnnounced) {
  GzdWriter w;
  w.event(EventRecord(11).start(5)).event(EventRecord(40).start(6)).message(7, "x");
  CapturedLog log;
  EXPECT_EQ(OpenRecording(w).describe(), "?11 ?40 24:7");
  EXPECT_EQ(log.take(), "Read error \nRead error \n");
}

TEST(Reader, AReplacedTextStaysReplaced) {
  GzdWriter w;
  w.message(3000, "12 hello").message(3100, "-5 more");
  OpenRecording file(w, GZD_OPEN_MESSAGE_OFFSETS);
  const ALLF_DATA* record = file.nextOf(GZD_MESSAGE);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->fe.sttime, 2988u);
  EXPECT_STREQ(&record->fe.message->c, " hello");
  EXPECT_EQ(gzd_get_float_data(file)->fe.sttime, 2988u);
  EXPECT_EQ(file.describe(), "24:3105");
}

TEST(Reader, RandomAccessGivesWhatTheWalkGave) {
  GzdWriter w(4);
  add_block(w, START, 900, 1000, ALL_POSITIONS, 10);
  add_block(w, 9000, 400, 500, SMP_LEFT | SMP_GAZE | SMP_PUPIL_SIZE, 30);
  OpenRecording walked(w);
  const auto expected = walked.samples();
  OpenRecording file(w);
  std::mt19937 random(2);
  for (int round = 0; round < 2000; ++round) {
    const FSAMPLE& wanted = expected[random() % expected.size()];
    const ALLF_DATA* record = gzd_get_sample_close_to_time(file, wanted.time);
    ASSERT_NE(record, nullptr) << wanted.time;
    ASSERT_EQ(std::memcmp(&record->fs, &wanted, sizeof wanted), 0) << wanted.time;
  }
}

// A recording of several windows, read with a fresh start for each sample, and in runs that other
// reads and a passing wish for velocities break.
TEST(Reader, WhatIsReadInBetweenDoesNotShow) {
  GzdWriter w(4);
  add_block(w, START, 24000, 1000, COMMON, 10, SMP_STATUS);
  add_block(w, 30000, 400, 1000, COMMON | SMP_INPUT, 30);
  add_block(w, 40000, 400, 1000, SMP_LEFT | SMP_GAZE | SMP_PUPIL_SIZE, 20);
  add_block(w, 50000, 400, 1000, COMMON, 10);
  add_block(w, 60000, 400, 1000, SMP_RIGHT | SMP_HREF, 10);  // never in a run
  OpenRecording fresh(w);
  OpenRecording disturbed(w);
  gzd_set_velocity_kinds(disturbed, GZD_VELOCITY_NONE);
  std::mt19937 random(4);
  for (int i = 0; i < 25600; ++i) {
    gzd_set_velocity_kinds(fresh, GZD_VELOCITY_NONE);
    const FSAMPLE wanted = fresh.nextOf(GZD_SAMPLE)->fs;
    while (gzd_get_next_data(disturbed) != GZD_SAMPLE) gzd_get_float_data(disturbed);
    if (random() % 16 == 0) {
      gzd_get_sample_close_to_time(disturbed, static_cast<UINT32>(START + random() % 60000));
    } else if (random() % 16 == 0) {
      gzd_set_velocity_kinds(disturbed, GZD_VELOCITY_GAZE);
      const FSAMPLE& moving = gzd_get_float_data(disturbed)->fs;
      ASSERT_EQ(moving.gxvel[0] != NOT_RECORDED, (moving.flags & SMP_LEFT) != 0) << wanted.time;
      gzd_set_velocity_kinds(disturbed, GZD_VELOCITY_NONE);
    }
    const ALLF_DATA* record = gzd_get_float_data(disturbed);
    ASSERT_NE(record, nullptr) << wanted.time;
    ASSERT_EQ(std::memcmp(&record->fs, &wanted, sizeof wanted), 0) << wanted.time;
  }
}

TEST(Reader, AFilledGapIsWalkedInTimeOrder) {
  GzdWriter w;
  w.startBlock({.time = START});
  for (UINT32 i = 0; i < 300; ++i) {
    if (i % 50 < 40 || i < 20) w.gazeSample(START + i, 5, 5, 900);
  }
  w.endBlock(START + 300);
  CapturedLog log;
  UINT32 time = START;
  for (const FSAMPLE& s : OpenRecording(w, GZD_CONSISTENCY_REPAIR).samples()) {
    EXPECT_EQ(s.time, time);
    EXPECT_EQ(s.gx[0] == 5.0f, (s.time - START) % 50 < 40);
    ++time;
  }
  EXPECT_EQ(time, START + 290);
}

}  // namespace
