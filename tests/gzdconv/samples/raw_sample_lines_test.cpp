// Lines of raw samples, and the camera's measurements beside ordinary ones, with a recording open
// for what only it knows.
#include "samples/raw_sample_lines.h"

#include <unistd.h>

#include "GzdWriter.h"
#include "support/sample_fixture.h"

using namespace gzdconv;

namespace {

std::string missing(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += "\t   .";
  return text;
}

class CameraDataTest : public SampleLinesTest {
 protected:
  CameraDataTest() {
    char name[] = "/tmp/raw_sample_XXXXXX";
    close(mkstemp(name));
    gzdsynth::GzdWriter writer;
    writer.startBlock({.time = 1000, .gazePrescale = 1});
    for (UINT32 time = 1000; time < 1010; ++time) writer.gazeSample(time, 1, 1, 900);
    writer.endBlock(1010).save(name);
    int result = -1;
    handle = gzd_open_file(name, GZD_CONSISTENCY_REPAIR, GZD_LOAD_EVENTS, 1, &result);
    unlink(name);
  }
  ~CameraDataTest() override { gzd_close_file(handle); }
};

class RawSampleTest : public CameraDataTest {
 protected:
  // Packed camera data of the left eye: pupil of 1200 pixels at (150.5, 100 + 3 / 256), reflection
  // of 30 pixels at (200, 101), far away from it.
  static FSAMPLE make_raw_sample() {
    FSAMPLE s = make_bare_sample(1002);
    s.flags |= SMP_LEFT | SMP_GAZE | SMP_PUPIL_SIZE | SMP_HREF | SMP_PUPIL_POS | SMP_RESOLUTION;
    s.pa[0] = 1200.0f - 32700.0f;
    s.px[0] = 150.5f * 16 - 32700.0f;
    s.py[0] = 100.0f * 16 - 32700.0f;
    s.gx[0] = 40.0f * 256 + 3 - 32700.0f;
    s.hx[0] = 200.0f * 16 - 32700.0f;
    s.hy[0] = 101.0f * 16 - 32700.0f;
    s.gy[0] = 50.0f * 256 - 32700.0f;
    s.rx = 30.0f;
    return s;
  }

  std::string write(FSAMPLE sample) {
    EXPECT_EQ(write_sample(handle, block, sample), 0);
    return asc();
  }

  const std::string labels = "LABELS:\tLPUP.X\tLPUP.Y\tLPUP.A\tLCR.X\tLCR.Y\tLCR.A\tLPCR.X\tLPCR.Y";
  const std::string pupil = "\t150.500\t100.012\t   1200";
  const std::string left_values = pupil + "\t200.000\t101.000\t     30\t-53.500\t -3.008";
};

TEST_F(RawSampleTest, LabelsOnceABlock) {
  block.eye = GZD_BLOCK_LEFT;
  EXPECT_EQ(write(make_raw_sample()), labels + "\n1002" + left_values + "\n");
  options.float_time = 1;
  EXPECT_EQ(write(make_raw_sample()), "1002.0  " + left_values + "\n");
  new_block();
  options.float_time = 0;
  EXPECT_EQ(write(make_raw_sample()), labels + "\n1002" + left_values + "\n");
}

TEST_F(RawSampleTest, ColumnsOfAnEyeTheSampleLacksAreMissing) {
  const std::string right_labels = "\tRPUP.X\tRPUP.Y\tRPUP.A\tRCR.X\tRCR.Y\tRCR.A\tRPCR.X\tRPCR.Y";
  EXPECT_EQ(write(make_raw_sample()),
            labels + right_labels + "\n1002" + left_values + missing(8) + "\n");
  new_block();
  options.left_eye = 0;
  EXPECT_EQ(write(make_raw_sample()), "LABELS:" + right_labels + "\n1002" + missing(8) + "\n");
}

TEST_F(RawSampleTest, MissingReflectionLeavesNoDifference) {
  block.eye = GZD_BLOCK_LEFT;
  FSAMPLE sample = make_raw_sample();
  sample.rx = 0.0f;
  EXPECT_EQ(write(sample),
            labels + "\n1002" + pupil + missing(2) + "\t      0" + missing(2) + "\n");
  sample.pa[0] = NOT_RECORDED;
  EXPECT_EQ(write(sample),
            "1002" + missing(2) + "\t      0" + missing(2) + "\t      0" + missing(2) + "\n");
}

TEST_F(RawSampleTest, SecondReflectionByTheFirstSampleOfTheBlock) {
  block.eye = GZD_BLOCK_LEFT;
  FSAMPLE sample = make_raw_sample();
  sample.htype = 200;
  const INT16 words[] = {12, 34, static_cast<INT16>(0x8040), 55};
  std::copy(std::begin(words), std::end(words), sample.hdata);
  const std::string second_labels = labels + "\tLCR2.X\tLCR2.Y\tLCR2.A";
  EXPECT_EQ(write(sample),
            second_labels + "\n1002" + left_values + "\t 11.500\t 34.250\t     55\n");
  EXPECT_EQ(write(make_raw_sample()), "1002" + left_values + missing(2) + "\t      0\n");
  new_block();
  write(make_raw_sample());
  EXPECT_EQ(write(sample), "1002" + left_values + "\n");
}

TEST_F(RawSampleTest, AnOrdinarySampleEndsRawOutputOfTheBlock) {
  block.eye = GZD_BLOCK_LEFT;
  options.tracker_revision = 0;
  write(make_raw_sample());
  EXPECT_EQ(options.current_eye, 1);
  EXPECT_EQ(write(make_sample()), "1000\t  512.0\t  384.0\t  900.0\n");
  EXPECT_EQ(options.current_eye, 0);
  EXPECT_EQ(write(make_raw_sample()), "1002\t-22457.0\t-19900.0\t-31500.0\n");
}

TEST_F(RawSampleTest, OnlyThePupilsOfPresentEyesCount) {
  FSAMPLE sample = make_raw_sample();
  EXPECT_TRUE(is_raw_sample(block, sample));
  sample.pa[0] = 0.0f;
  EXPECT_FALSE(is_raw_sample(block, sample));  // the right eye is not there
  sample.flags |= SMP_RIGHT;
  EXPECT_TRUE(is_raw_sample(block, sample));
  block.eye = GZD_BLOCK_LEFT;
  EXPECT_FALSE(is_raw_sample(block, sample));
}

TEST_F(RawSampleTest, TheOrdinaryHeaderComesFirst) {
  options.suppress_column_headers = 0;
  options.sample_header_printed = 0;
  block.eye = GZD_BLOCK_LEFT;
  EXPECT_EQ(write(make_raw_sample()), "** COLUMNS\n** time\tleft-x\tleft-y\tleft-p\t\n" + labels +
                                          "\n1002" + left_values + "\n");
}

// ---- beside ordinary samples --------------------------------------------------------------------

TEST_F(CameraDataTest, UncorrectedColumnsPrintMissingValuesAsNumbers) {
  block.eye = GZD_BLOCK_LEFT;
  options.uncorrected_raw = 1;
  FSAMPLE sample = make_sample(1002);
  sample.input = 5 << 9 | 5;  // window at (20, 40), 176 by 190
  const INT16 words[] = {250, -500, 125, 0, 900, 0, 0x1E14, static_cast<INT16>(0xF805)};
  std::copy(std::begin(words), std::end(words), sample.hdata);
  float difference[2];
  gzd_get_pupil_cr(handle, &sample, GZD_LEFT_EYE, difference);
  char expected[256];
  std::snprintf(expected, sizeof expected,
                "\t%8.3f\t%8.3f\t%8.3f\t%8.3f\t%u\t%u\t%d\t%d\t%d\t%d\t%d\t%d\t%8.3f\t%8.3f\n",
                109.0, 133.0, 1e8, 1e8, 900u, 0u, 20, 30, 5, -8, 108, 135,
                static_cast<double>(difference[0]), static_cast<double>(difference[1]));
  EXPECT_EQ(columns_from(4, sample), expected);
  sample.hdata[5] = 20;
  gzd_get_pupil_cr(handle, &sample, GZD_LEFT_EYE, difference);
  std::snprintf(expected, sizeof expected,
                "\t 108.500\t 135.000\t900\t20\t20\t30\t5\t-8\t108\t135"
                "\t%8.3f\t%8.3f\n",
                static_cast<double>(difference[0]), static_cast<double>(difference[1]));
  EXPECT_EQ(columns_from(6, sample), expected);
  // Both eyes when both are present, chosen or not.
  block.eye = GZD_BLOCK_BOTH;
  options.right_eye = 0;
  const std::string both = columns_from(4, sample);
  EXPECT_EQ(std::count(both.begin(), both.end(), '\t'), 28);
}

TEST_F(CameraDataTest, ScreenResolutionOfBothEyes) {
  options.screen_setup_given = 1;
  options.right_eye = 0;
  FSAMPLE sample = make_sample();
  EXPECT_EQ(columns_from(4, sample), missing(4) + "\n");
  sample.flags |= SMP_HREF;
  for (int eye = 0; eye < 2; ++eye) sample.hx[eye] = sample.hy[eye] = 0.0f;
  sample.gx[0] = sample.gx[1] = 511.5f;
  sample.gy[0] = sample.gy[1] = 383.5f;
  const std::string printed = columns_from(4, sample);
  const auto& s = options.screen_setup;
  double rx = 0, ry = 0;
  gzd_compute_physical_setup(s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7], s[8], s[9]);
  gzd_calculate_ppd(1023, 767, &sample, GZD_LEFT_EYE, &rx, &ry);
  char expected[64];
  std::snprintf(expected, sizeof expected, "\t%7.2f\t%7.2f", rx, ry);
  EXPECT_EQ(printed, std::string(expected) + expected + "\n");
  block.eye = GZD_BLOCK_LEFT;
  EXPECT_EQ(columns_from(4, sample), "\n");
}

}  // namespace
