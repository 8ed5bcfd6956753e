// A recording that shrinks while it is read.
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

constexpr UINT32 block_start = 1000;

// A block of samples that move, one a period. With further flags every fifth has those as well, and
// a message after it that is late.
void add_block(GzdWriter& w, UINT32 start, int count, double rate, unsigned flags, int prescale,
               unsigned furtherFlags = 0) {
  w.start_block({.time = start,
                 .rate = rate,
                 .sample_flags = static_cast<int>(flags),
                 .gaze_prescale = prescale});
  for (int i = 0; i < count; ++i) {
    SampleRecord s{.flags = flags | SMP_TIME_ABSOLUTE | (i % 5 == 4 ? furtherFlags : 0)};
    s.time = start + static_cast<UINT32>(i * 1000.0 / rate);
    s.px = {i * 7 % 300, i * 5 % 300};
    s.py = {i * 3 % 300, i * 11 % 300};
    s.hx = s.px;
    s.hy = s.py;
    s.gx = {3000 + i % 500 * (i % 500) % 500, 2000 + i};
    s.gy = {1000 - i, 500 + i * 13 % 90};
    s.rx = 300;
    s.ry = 310;
    s.pa = {900 + i, 800};
    w.sample(s);
    if (furtherFlags != 0 && i % 5 == 4) w.message(s.time - 4, "late");
  }
  w.end_block(start + static_cast<UINT32>(count * 1000.0 / rate));
}

constexpr unsigned all_positions =
    SMP_LEFT | SMP_RIGHT | SMP_PUPIL_POS | SMP_HREF | SMP_GAZE | SMP_RESOLUTION | SMP_PUPIL_SIZE;

constexpr unsigned common_flags = SMP_LEFT | SMP_RIGHT | SMP_GAZE | SMP_RESOLUTION | SMP_PUPIL_SIZE;

// What cannot be read again is told once and ends the walk; a walk that tried each of the others
// would take time without bound.
TEST(Reader, ARecordingThatShrinksFailsOnce) {
  GzdWriter w(3);
  add_block(w, block_start, 60'000, 1000, all_positions, 10);
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

// A recording of several windows, read with a fresh start for each sample, and in runs that other
// reads and a passing wish for velocities break.
}  // namespace
