#include "lines/resolution.h"

#include <cmath>

#include "support/capture.h"

using namespace gzdconv;

namespace {

class ResolutionTest : public AscTest {
 protected:
  ResolutionTest() {
    clear_resolution_sums();
    parseDisplayCoords("");
    parseDisplayAreaCoords("");
  }

  static FSAMPLE binocular(float left_x, float left_y, float right_x, float right_y) {
    FSAMPLE sample{};
    sample.flags = SMP_LEFT | SMP_RIGHT | SMP_HREF | SMP_PUPIL_SIZE;
    sample.hx[0] = left_x;
    sample.hy[0] = left_y;
    sample.hx[1] = right_x;
    sample.hy[1] = right_y;
    sample.pa[0] = sample.pa[1] = 1000.0F;
    sample.rx = sample.ry = -1.0F;
    return sample;
  }

  static float href_x(double hx, double hy) {
    return static_cast<float>((hx * hx + 2.25e8 + hy * hy) / std::sqrt(hy * hy + 2.25e8) / 57.2958);
  }
};

TEST_F(ResolutionTest, SumsTakePairsInsideTheRangeOnly) {
  add_resolution(30.0, 32.0);
  for (const double bad : {0.01, 0.0, 1.0e4, 1.0e8, -5.0}) {
    add_resolution(30.0, bad);
    add_resolution(bad, 30.0);
  }
  EXPECT_EQ(ppd_x, 30.0);
  EXPECT_EQ(ppd_y, 32.0);
  EXPECT_EQ(ppd_count, 1.0);
}

TEST_F(ResolutionTest, GazeTakesTheDefaultOnlyWhenNoneIsRecorded) {
  options.default_res_x = 40.0F;
  options.default_res_y = 41.0F;
  FSAMPLE sample{};
  sample.rx = 30.0F;
  sample.ry = 31.0F;
  sample.flags = SMP_RESOLUTION;
  updatePPD(sample);
  EXPECT_EQ(sample.rx, 30.0F);
  sample.flags = 0;
  updatePPD(sample);
  EXPECT_EQ(sample.rx, 40.0F);
  EXPECT_EQ(ppd_y, 72.0);
  EXPECT_EQ(ppd_count, 2.0);
}

TEST_F(ResolutionTest, PupilAlwaysTakesTheDefault) {
  options.sample_type_in_use = GZD_POSITION_PUPIL;
  FSAMPLE sample{};
  sample.flags = SMP_RESOLUTION;
  sample.rx = 30.0F;
  updatePPD(sample);
  EXPECT_EQ(sample.rx, MISSING_DATA);
  EXPECT_EQ(ppd_count, 0.0);
}

TEST_F(ResolutionTest, HrefUsesTheMeanOfTheEyesThatCount) {
  options.sample_type_in_use = GZD_POSITION_HREF;
  FSAMPLE sample = binocular(1000, 200, 3000, 600);
  updatePPD(sample);
  EXPECT_EQ(sample.rx, href_x(2000, 400));
  EXPECT_EQ(sample.ry, href_x(400, 2000));

  sample.pa[0] = 14.0F;
  updatePPD(sample);
  EXPECT_EQ(sample.rx, href_x(3000, 600));

  options.no_pupil_area_check = 1;
  updatePPD(sample);
  EXPECT_EQ(sample.rx, href_x(2000, 400));

  sample.hx[1] = MISSING_DATA;
  sample.hy[1] = NOT_RECORDED;
  updatePPD(sample);
  EXPECT_EQ(sample.rx, href_x(1000, 200));

  sample.flags = SMP_RIGHT | SMP_HREF;
  sample.rx = -1.0F;
  updatePPD(sample);
  EXPECT_EQ(sample.rx, -1.0F);
  EXPECT_EQ(ppd_count, 4.0);
}

TEST_F(ResolutionTest, MappingNeedsTheOptionAndBothMessages) {
  options.gaze_map = 1;
  parseDisplayCoords("DISPLAY_COORDS 0 0 1023 767");
  EXPECT_EQ(getMappedX(100.0F), 100.0F);
  parseDisplayAreaCoords("DISPLAY_AREA_COORDS  100 50 290 240");
  EXPECT_NEAR(getLeft(), 90.0, 1e-4);
  EXPECT_NEAR(getRight(), 300.0, 1e-4);
  EXPECT_NEAR(getTop(), 40.0, 1e-4);
  EXPECT_NEAR(getBottom(), 250.0, 1e-4);
  EXPECT_EQ(getMappedX(0.0F), getLeft());
  EXPECT_NEAR(getMappedX(1023.0F), 300.0, 1e-3);
  EXPECT_NEAR(getMappedY(767.0F / 2), 145.0, 1e-3);
  EXPECT_NEAR(getMappedPPDX(1023.0F), 210.0, 1e-3);
  EXPECT_NEAR(getMappedPPDY(767.0F), 210.0, 1e-3);
  EXPECT_EQ(getMappedX(MISSING_DATA), MISSING_DATA);

  parseDisplayCoords(nullptr);
  EXPECT_NE(getMappedX(100.0F), 100.0F);
  options.gaze_map = 0;
  EXPECT_EQ(getMappedX(100.0F), 100.0F);
}

TEST_F(ResolutionTest, NumbersMustFollowTheKeywordAtTheStart) {
  options.gaze_map = 1;
  parseDisplayCoords("DISPLAY_COORDS 0 0 1023 767");
  for (const char* text :
       {"DISPLAY_AREA_COORDS 1 2 3", "12 DISPLAY_AREA_COORDS 100 50 290 240", "DISPLAY_AREA", ""}) {
    parseDisplayAreaCoords("DISPLAY_AREA_COORDS 100 50 290 240");
    EXPECT_NE(getMappedX(100.0F), 100.0F);
    parseDisplayAreaCoords(text);
    EXPECT_EQ(getMappedX(100.0F), 100.0F) << text;
  }
}

TEST_F(ResolutionTest, MappedSamplesAreSummedMapped) {
  options.gaze_map = 1;
  parseDisplayCoords("DISPLAY_COORDS 0 0 1000 1000");
  parseDisplayAreaCoords("DISPLAY_AREA_COORDS 0 0 950 475");
  FSAMPLE sample{};
  sample.flags = SMP_RESOLUTION;
  sample.rx = sample.ry = 30.0F;
  updatePPD(sample);
  EXPECT_NEAR(ppd_x, 31.5, 1e-4);  // 30 / 1000 * 1050
  EXPECT_NEAR(ppd_y, 15.75, 1e-4);
}

}  // namespace
