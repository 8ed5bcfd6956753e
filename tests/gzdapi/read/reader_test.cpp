// A recording that shrinks while it is read.
#include "read/reader.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
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

// One sample as the walk hands it out, or as a row of the columns.
using Row = std::array<double, 7>;

Row row_of(const FSAMPLE& s) {
  const bool isHalf = (s.flags & SMP_HALF_MS) != 0;
  return {s.time + (isHalf ? 0.5 : 0), s.gx[0], s.gx[1], s.gy[0], s.gy[1], s.pa[0], s.pa[1]};
}

// At most `most` samples at a time in columns, and one by one where there are none; those in
// columns are counted.
std::vector<Row> samples_of(GZDFILE* file, unsigned most, std::size_t& inColumns) {
  std::vector<double> times(most + 1);
  std::vector<float> values(6 * (most + 1));
  const auto column = [&](std::size_t number) { return values.data() + number * (most + 1); };
  const GZD_GAZE_COLUMNS columns{
      times.data(), {column(0), column(1)}, {column(2), column(3)}, {column(4), column(5)}};
  std::vector<Row> rows;
  for (;;) {
    const unsigned count = gzd_get_gaze(file, most, &columns);
    for (unsigned i = 0; i < count; ++i)
      rows.push_back({times[i], column(0)[i], column(1)[i], column(2)[i], column(3)[i],
                      column(4)[i], column(5)[i]});
    inColumns += count;
    if (count != 0) continue;
    const int code = gzd_get_next_data(file);
    if (code == GZD_END_OF_DATA) return rows;
    if (code == GZD_SAMPLE) rows.push_back(row_of(gzd_get_float_data(file)->fs));
  }
}

// Of several windows, rates and layouts, with late messages and gaps between.
TEST(Reader, GazeInColumnsIsThatOfTheWalk) {
  GzdWriter w(3);
  add_block(w, 1000, 30'000, 1000, common_flags, 10, SMP_INPUT);
  add_block(w, 40'000, 3'000, 1000, common_flags, 7);
  add_block(w, 50'000, 2'000, 250, all_positions, 10);
  add_block(w, 60'000, 3'000, 2000, SMP_RIGHT | SMP_GAZE | SMP_PUPIL_SIZE, 3);
  add_block(w, 70'000, 300, 500, SMP_LEFT | SMP_RIGHT | SMP_GAZE | SMP_RESOLUTION, 10);
  const ScratchDirectory scratch;
  const std::string path = scratch.save("recording.gzd", w.bytes());
  const CapturedLog quiet;
  int rv = 0;
  GZDFILE* const file = gzd_open_file(path.c_str(), GZD_CONSISTENCY_REPAIR, 1, 1, &rv);
  ASSERT_NE(file, nullptr);
  for (const unsigned kinds : {GZD_VELOCITY_ALL, GZD_VELOCITY_NONE}) {
    gzd_set_velocity_kinds(file, kinds);
    gzd_rewind(file);
    std::size_t inColumns = 0;
    const std::vector<Row> expected = samples_of(file, 0, inColumns);
    EXPECT_EQ(inColumns, 0u);
    EXPECT_GT(expected.size(), 38'000u);
    for (const unsigned most : {1u, 3u, 1000u}) {
      gzd_rewind(file);
      inColumns = 0;
      EXPECT_TRUE(samples_of(file, most, inColumns) == expected) << most;
      EXPECT_GT(inColumns, expected.size() / 4);
    }
  }
  gzd_close_file(file);
}

}  // namespace
