#include "samples/sample_columns.h"

#include <cstring>

#include "support/sample_fixture.h"

using namespace gzdconv;

namespace {

const std::string none = "\t   .";
const std::string no_pair = none + none;

class SampleColumnsTest : public SampleLinesTest {
 protected:
  SampleColumnsTest() { block.eye = GZD_BLOCK_LEFT; }

  // Columns behind those of the left eye.
  std::string extra(const FSAMPLE& sample) { return columns_from(4, sample); }
};

TEST_F(SampleColumnsTest, PositionsByType) {
  FSAMPLE sample = make_sample();
  sample.hx[0] = -1200.0f;
  sample.hy[0] = 2450.0f;
  sample.px[0] = -7000.0f;
  sample.py[0] = 31000.0f;
  options.sample_type_in_use = GZD_POSITION_HREF;
  EXPECT_EQ(line_of(sample), "1000\t-1200.0\t 2450.0\t  900.0\n");
  options.sample_type_in_use = GZD_POSITION_PUPIL;
  EXPECT_EQ(line_of(sample), "1000\t-7000.0\t31000.0\t  900.0\n");
}

TEST_F(SampleColumnsTest, LostAndAbsentPositionsAreMissing) {
  FSAMPLE sample = make_sample();
  sample.pa[0] = 0.0f;
  EXPECT_EQ(line_of(sample), "1000" + no_pair + "\t    0.0\n");
  options.no_pupil_area_check = 1;
  EXPECT_EQ(line_of(sample), "1000\t  512.0\t  384.0\t    0.0\n");
  sample.gx[0] = MISSING_DATA;
  sample.gy[0] = NOT_RECORDED;
  sample.pa[0] = NOT_RECORDED;
  // The block is ordinary by now: a negative size is no sign of raw data in it.
  EXPECT_EQ(write_sample(handle, block, sample), 0);
  EXPECT_EQ(asc(), "1000" + no_pair + none + "\n");
  std::strcpy(missing_string, "    NaN");
  EXPECT_EQ(write_sample(handle, block, sample), 0);
  EXPECT_EQ(asc(), "1000\t    NaN\t    NaN\t    NaN\n");
}

TEST_F(SampleColumnsTest, GazeGoesThroughTheDisplayMapping) {
  options.gaze_map = 1;
  parseDisplayCoords("DISPLAY_COORDS 0 0 1000 500");
  parseDisplayAreaCoords("DISPLAY_AREA_COORDS 0 0 1900 950");
  const FSAMPLE sample = make_sample();
  const EyeData gaze = get_sample_data(sample, GZD_LEFT_EYE, GZD_POSITION_GAZE);
  EXPECT_EQ(gaze.x, getMappedX(512.0f));
  EXPECT_EQ(gaze.y, getMappedY(384.0f));
  EXPECT_NEAR(gaze.x, 512.0 / 1000 * 2100 - 100, 1e-3);
  EXPECT_EQ(get_sample_data(sample, GZD_LEFT_EYE, GZD_POSITION_HREF).x, NOT_RECORDED);
  parseDisplayCoords("");
  parseDisplayAreaCoords("");
}

TEST_F(SampleColumnsTest, VelocityByTypeAndSpeed) {
  options.output_velocity = 1;
  FSAMPLE sample = make_sample();
  float value = 1.0f;
  for (float* const velocity :
       {sample.gxvel, sample.gyvel, sample.hxvel, sample.hyvel, sample.rxvel, sample.ryvel,
        sample.fgxvel, sample.fgyvel, sample.fhxvel, sample.fhyvel, sample.frxvel, sample.fryvel}) {
    velocity[0] = value++;
  }
  sample.hx[0] = sample.hy[0] = sample.px[0] = sample.py[0] = 1.0f;
  EXPECT_EQ(extra(sample), "\t    1.0\t    2.0\n");
  options.sample_type_in_use = GZD_POSITION_HREF;
  EXPECT_EQ(extra(sample), "\t    3.0\t    4.0\n");
  options.sample_type_in_use = GZD_POSITION_PUPIL;
  EXPECT_EQ(extra(sample), "\t    5.0\t    6.0\n");
  options.fast_velocity = 1;
  EXPECT_EQ(extra(sample), "\t   11.0\t   12.0\n");
  options.sample_type_in_use = GZD_POSITION_HREF;
  EXPECT_EQ(extra(sample), "\t    9.0\t   10.0\n");
  options.sample_type_in_use = GZD_POSITION_GAZE;
  EXPECT_EQ(extra(sample), "\t    7.0\t    8.0\n");
  sample.fgyvel[0] = NOT_RECORDED;
  EXPECT_EQ(extra(sample), "\t    7.0" + none + "\n");
  sample.gy[0] = MISSING_DATA;
  EXPECT_EQ(extra(sample), no_pair + "\n");
}

TEST_F(SampleColumnsTest, ResolutionOwnDefaultOrFixed) {
  options.output_resolution = 1;
  options.default_res_x = 40.0f;
  options.default_res_y = 41.5f;
  FSAMPLE sample = make_sample();
  sample.flags |= SMP_RESOLUTION;
  const auto with = [&sample](float rx, float ry) {
    sample.rx = rx;
    sample.ry = ry;
    return sample;
  };
  const std::string fallback = "\t  40.00\t  41.50\n";
  EXPECT_EQ(extra(with(30.25f, 31.0f)), "\t  30.25\t  31.00\n");
  EXPECT_EQ(extra(with(0.0f, 31.0f)), fallback);
  EXPECT_EQ(extra(with(10000.0f, 31.0f)), fallback);
  EXPECT_EQ(extra(with(30.0f, MISSING_DATA)), "\t  30.00" + none + "\n");
  options.fixed_resolution = 1;
  EXPECT_EQ(extra(with(30.0f, 31.0f)), fallback);
  options.default_res_x = options.default_res_y = MISSING_DATA;
  EXPECT_EQ(extra(with(30.0f, 31.0f)), no_pair + "\n");
}

TEST_F(SampleColumnsTest, InputAndButtonsAreUnsignedWords) {
  options.output_input = options.output_buttons = 1;
  FSAMPLE sample = make_sample();
  sample.buttons = 0xFFFF;
  EXPECT_EQ(extra(sample), none + "\t65535.0\n");
  sample.input = 0x8001;
  sample.buttons = 0;
  EXPECT_EQ(extra(sample), "\t32769.0\t    0.0\n");
}

TEST_F(SampleColumnsTest, StatusCharacters) {
  block.eye = GZD_BLOCK_BOTH;
  FSAMPLE sample = make_sample();
  sample.flags |= SMP_STATUS;
  const auto status = [&](UINT16 errors) {
    sample.errors = errors;
    return columns_from(7, sample);
  };
  EXPECT_EQ(status(0x1000), "\tI....\n");
  EXPECT_EQ(status(0x0100), "\t.C...\n");
  EXPECT_EQ(status(0x0400), "\t..R..\n");
  EXPECT_EQ(status(0x0200), "\t...C.\n");
  EXPECT_EQ(status(0x0802), "\t....R\n");
  options.left_eye = 0;
  EXPECT_EQ(columns_from(4, sample), "\t..R\n");
  options.left_eye = 1;
  options.sfhmf = 1;
  EXPECT_EQ(status(0x1F0A), "\tICRCR error: 1f0a\n");
  options.sfhmf = 0;
  printPoseFlags = true;
  EXPECT_EQ(status(0x0002), "\t.W....\n");
  EXPECT_EQ(status(0x0000), "\t......\n");
  printPoseFlags = false;
  options.tracker_revision = 0;
  EXPECT_EQ(status(0x1000), "\n");
  options.tracker_revision = 2;
  options.output_flags = 0;
  EXPECT_EQ(status(0x1000), "\n");
}

TEST_F(SampleColumnsTest, AverageOfBothEyes) {
  block.eye = GZD_BLOCK_BOTH;
  options.output_average = 1;
  FSAMPLE sample = make_sample();
  const auto average = [&] { return columns_from(7, sample); };
  EXPECT_EQ(average(), "\t  513.2\t  383.2\n");
  sample.pa[0] = 14.9f;
  EXPECT_EQ(average(), no_pair + "\n");
  options.no_pupil_area_check = 1;
  EXPECT_EQ(average(), "\t  513.2\t  383.2\n");
  options.no_pupil_area_check = 0;
  sample.pa[0] = 15.0f;
  sample.pa[1] = 0.0f;
  EXPECT_EQ(average(), no_pair + "\n");
  sample.pa[1] = 3.0f;
  EXPECT_EQ(average(), "\t  513.2\t  383.2\n");
  sample.gy[0] = MISSING_DATA;
  EXPECT_EQ(average(), no_pair + "\n");
  sample.gy[0] = 384.0f;
  sample.flags &= static_cast<UINT16>(~SMP_GAZE);
  EXPECT_EQ(average(), no_pair + "\n");
  options.sample_type_in_use = GZD_POSITION_HREF;
  EXPECT_EQ(average(), "\n");
}

// Both eyes must be present; which of them are printed does not count.
TEST_F(SampleColumnsTest, AverageNeedsBothEyesPresent) {
  block.eye = GZD_BLOCK_BOTH;
  options.output_average = 1;
  options.right_eye = 0;
  EXPECT_EQ(columns_from(4, make_sample()), "\t  513.2\t  383.2\n");
  FSAMPLE left_only = make_sample();
  left_only.flags &= static_cast<UINT16>(~SMP_RIGHT);
  EXPECT_EQ(columns_from(4, left_only), "\n");
}

TEST_F(SampleColumnsTest, HeadMarkers) {
  options.head_data_mode = 1;
  FSAMPLE sample = make_sample();
  std::string missing;
  for (int i = 0; i < 8; ++i) missing += none;
  EXPECT_EQ(extra(sample), missing + "\n");
  sample.flags |= SMP_HEAD_DATA;
  for (INT16 i = 0; i < 8; ++i) sample.hdata[i] = static_cast<INT16>(i * 100 - 300);
  EXPECT_EQ(extra(sample),
            "\t   -300\t   -200\t   -100\t      0\t    100\t    200\t    300\t    400\n");
}

class TargetColumnsTest : public SampleColumnsTest {
 protected:
  TargetColumnsTest() {
    options.head_data_mode = 2;
    sample.flags |= SMP_HEAD_DATA;
    sample.htype = 182;
    const INT16 words[] = {1234, -20, 6543};
    std::copy(std::begin(words), std::end(words), sample.hdata);
  }

  // The characters behind the distance.
  std::string flags() {
    const std::string line = line_of(sample);
    return line.substr(line.rfind('\t') + 8);
  }

  FSAMPLE sample = make_sample();
};

TEST_F(TargetColumnsTest, BlanksBeforePositionAndFlags) {
  const std::string target = " \t 1234.0\t  -20.0\t  654.3";
  const std::string start = "1000\t  512.0\t  384.0\t  900.0";
  EXPECT_EQ(line_of(sample), start + target + " .............\n");
  options.output_flags = 0;
  EXPECT_EQ(line_of(sample), start + target + "\n");
  options.tabs_only = 1;
  options.output_flags = 1;
  EXPECT_EQ(line_of(sample), "1000\t512.0\t384.0\t900.0 \t1234.0\t-20.0\t654.3 .............\n");
  options.tabs_only = 0;
  sample.hdata[0] = sample.hdata[1] = sample.hdata[2] = INT16_MIN;
  EXPECT_EQ(line_of(sample), start + " " + no_pair + none + " .............\n");
}

TEST_F(TargetColumnsTest, EveryWordPrintsAsPrintfPrintsIt) {
  options.output_flags = 0;
  for (const int extra_decimals : {0, 3}) {
    options.extra_decimals = extra_decimals;
    for (int word = INT16_MIN + 1; word <= INT16_MAX; word += 1 + extra_decimals) {
      std::fill_n(sample.hdata, 3, static_cast<INT16>(word));
      char expected[64];
      const int decimals = 1 + extra_decimals;
      std::snprintf(expected, sizeof expected, " \t%7.*f\t%7.*f\t%7.*f\n", decimals, 1.0 * word,
                    decimals, 1.0 * word, decimals, word / 10.0);
      const std::string line = line_of(sample);
      ASSERT_EQ(line.substr(line.find(" \t")), expected);
    }
  }
}

TEST_F(TargetColumnsTest, OneCharacterABit) {
  const std::string letters = "MANCFTBLRTBLR";
  const int bits[] = {14, 13, 12, 11, 10, 7, 6, 5, 4, 3, 2, 1, 0};
  for (std::size_t i = 0; i < letters.size(); ++i) {
    std::string expected(letters.size(), '.');
    expected[i] = letters[i];
    sample.hdata[3] = static_cast<INT16>(1 << bits[i]);
    EXPECT_EQ(flags(), " " + expected + "\n");
  }
  sample.hdata[3] = -1;
  EXPECT_EQ(flags(), " MANCFTBLRTBLR\n");
}

TEST_F(TargetColumnsTest, SecondEyeOfABinocularBlock) {
  sample.hdata[6] = 0x0A;
  sample.htype = 183;
  EXPECT_EQ(flags(), " .............\n");
  block.eye = GZD_BLOCK_BOTH;
  EXPECT_EQ(flags(), " .............T.L.\n");
  sample.htype = 182;
  EXPECT_EQ(flags(), " .............\n");
}

TEST_F(TargetColumnsTest, OnlyTargetDataOfAnAllowedKind) {
  sample.htype = 184;
  EXPECT_EQ(extra(sample), "\n");
  sample.htype = 182;
  options.output_target = 0;
  EXPECT_EQ(extra(sample), "\n");
  options.output_target = 1;
  options.head_data_mode = 3;
  EXPECT_EQ(extra(sample), "\n");
}

class HeadPoseColumnsTest : public SampleColumnsTest {
 protected:
  HeadPoseColumnsTest() {
    block.eye = GZD_BLOCK_BOTH;
    sample.flags |= SMP_EXTENDED;
    sample.headMarkerFlags = 0x8000000A;
    float value = 0.0f;
    const auto number = [&value](float* values, int count) {
      for (int i = 0; i < count; ++i) values[i] = value++;
    };
    number(sample.headRotation, 3);
    number(sample.headPosition, 3);
    number(sample.unused_headInSpaceX, 2);  // 6, 7
    number(&sample.headInSpaceX, 1);
    number(sample.unused_headInSpaceY, 2);
    number(&sample.headInSpaceY, 1);
    number(sample.eyeInHeadX, 3);  // 12 to 14
    number(sample.eyeInHeadY, 3);
    for (float* const single : {&sample.hrgx, &sample.hrgy, &sample.ergx, &sample.ergy}) {
      number(single, 1);  // 18 to 21
    }
    for (int eye = 0; eye < 2; ++eye) {
      for (float* const of : {sample.ex, sample.ey, sample.emajor, sample.eminor, sample.eangle}) {
        number(of + eye, 1);  // 22 to 26, 27 to 31
      }
    }
  }

  // "\t  6.000\t  7.000" and so on.
  static std::string values(std::initializer_list<int> numbers) {
    std::string text;
    for (const int number : numbers) {
      char column[16];
      std::snprintf(column, sizeof column, "\t%7.3f", static_cast<double>(number));
      text += column;
    }
    return text;
  }

  FSAMPLE sample = make_sample();
  const std::string tracking = values({0, 1, 2, 3, 4, 5});
  const std::string extended = values({6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17});
};

TEST_F(HeadPoseColumnsTest, OptionsDropAndAddGroups) {
  const auto pose = [&] { return columns_from(7, sample); };
  EXPECT_EQ(pose(), tracking + "\tX.X." + extended + "\n");
  options.no_head_tracking = 1;
  EXPECT_EQ(pose(), "\tX.X." + extended + "\n");
  options.head_resolution = 1;
  EXPECT_EQ(pose(), "\tX.X." + extended + values({18, 19, 20, 21}) + "\n");
  options.pupil_ellipse = 1;
  EXPECT_EQ(pose(), "\tX.X." + extended + values({18, 19, 20, 21}) +
                        values({22, 23, 24, 25, 26, 27, 28, 29, 30, 31}) + "\n");
  options.no_extended_data = 1;
  EXPECT_EQ(pose(), "\tX.X.\n");
  options.sfhmf = 1;
  EXPECT_EQ(pose(), "\tX.X.\t10000000000000000000000000001010\n");
  sample.flags &= static_cast<UINT16>(~SMP_EXTENDED);
  EXPECT_EQ(pose(), "\n");
}

TEST_F(HeadPoseColumnsTest, EyesThatAreNotPrintedLoseTheirValues) {
  options.no_head_tracking = 1;
  options.pupil_ellipse = 1;
  options.left_eye = 0;
  EXPECT_EQ(columns_from(4, sample), "\tX.X." + values({7, 8, 10, 11, 13, 14, 16, 17}) +
                                         values({27, 28, 29, 30, 31}) + "\n");
  options.left_eye = 1;
  sample.flags &= static_cast<UINT16>(~SMP_RIGHT);
  EXPECT_EQ(columns_from(4, sample),
            "\tX.X." + values({6, 8, 9, 11, 12, 14, 15, 17}) + values({22, 23, 24, 25, 26}) + "\n");
}

TEST_F(HeadPoseColumnsTest, AbsentPoseIsMissing) {
  options.no_extended_data = 1;
  FSAMPLE absent = make_sample();
  absent.flags |= SMP_EXTENDED;
  std::string missing;
  for (int i = 0; i < 6; ++i) missing += none;
  EXPECT_EQ(columns_from(7, absent), missing + "\t....\n");
}

}  // namespace
