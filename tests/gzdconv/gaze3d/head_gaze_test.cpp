#include "gaze3d/head_gaze.h"

#include <cmath>

#include "support/sample_fixture.h"

using namespace gzdconv;

namespace {

// A screen of 1024 by 768 pixels and 400 by 300 mm, 600 mm in front of an eye camera that stands
// in the middle below it, all axes parallel; eyes 60 mm apart.
class HeadGazeTest : public SampleLinesTest {
 protected:
  HeadGazeTest() {
    calGeom = {};
    osp_report_geom_config = -1;
    options.gaze_3d = options.gaze_3d_screen = 1;
    block.eye = GZD_BLOCK_NO_EYE;
  }
  ~HeadGazeTest() override {
    calGeom = {};
    osp_report_geom_config = -1;
  }

  static void tell_geometry() {
    read_geometry_message("!GEOM hm_eyecam_to_ref: 1 0 0 0  0 1 0 0  0 0 1 0");
    read_geometry_message("!GEOM hm_world_to_screen: 1 0 0 0  0 1 0 200  0 0 1 0");
    read_geometry_message("!GEOM eyecam_to_ecenter 0: -30 0 0");
    read_geometry_message("!GEOM eyecam_to_ecenter 1: 30 0 0");
    read_geometry_message("!GEOM screen_pixel r 1023 l 0 t 0 b 767");
    read_geometry_message("!GEOM screen_phys r 200 l -200 t 150 b -150");
  }

  // A head 600 mm from the screen, at its middle, both eyes on the middle of the screen.
  static FSAMPLE make_centred_sample() {
    FSAMPLE sample = make_sample();
    for (float& angle : sample.headRotation) angle = 0.0f;
    sample.headPosition[0] = 0.0f;
    sample.headPosition[1] = -200.0f;  // 0 on the screen
    sample.headPosition[2] = -600.0f;
    sample.gx[0] = sample.gx[1] = 511.5f;
    sample.gy[0] = sample.gy[1] = 383.5f;
    return sample;
  }

  static std::string missing(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += "\t   .";
    return text;
  }
};

void expect_near(const std::optional<Vector3>& a, double x, double y, double z) {
  ASSERT_TRUE(a);
  EXPECT_NEAR(a->x, x, 1e-3);
  EXPECT_NEAR(a->y, y, 1e-3);
  EXPECT_NEAR(a->z, z, 1e-3);
}

TEST_F(HeadGazeTest, WithoutGeometryEverythingIsMissing) {
  EXPECT_EQ(columns_from(1, make_centred_sample()), missing(15) + "\n");
}

TEST_F(HeadGazeTest, LinesOnScreenCoordinates) {
  tell_geometry();
  EXPECT_EQ(asc(), "new osp_report_geom_config 1 \n");
  char directions[128];
  const double size = std::hypot(30, 600);
  std::snprintf(directions, sizeof directions, "\t%.10f\t%.10f\t%.10f\t%.10f\t%.10f\t%.10f",
                30 / size, 0.0, 600 / size, -30 / size, 0.0, 600 / size);
  EXPECT_EQ(columns_from(1, make_centred_sample()),
            "\t  -30.0\t    0.0\t -600.0\t   30.0\t    0.0\t -600.0" + std::string(directions) +
                "\t    0.0\t    0.0\t    0.0\n");
}

TEST_F(HeadGazeTest, PixelsBecomeMillimetresFromTheScreenCentre) {
  tell_geometry();
  FSAMPLE sample = make_centred_sample();
  sample.gx[0] = sample.gx[1] = 511.5f + 256.0f;  // 1024 pixels are 400 mm
  sample.gy[0] = sample.gy[1] = 383.5f + 383.0f;  // top less bottom plus 1 are 766, for 300 mm
  expect_near(compute_head_gaze(sample).gaze_point, 100, 150, 0);
}

// The left eye looks 10 mm to the right of the centre, the right eye 10 mm to the left: the 60 mm
// between them close at 80 mm in 600, so the lines cross in front of the screen.
TEST_F(HeadGazeTest, CrossedGazeMeetsInFrontOfTheScreen) {
  tell_geometry();
  FSAMPLE sample = make_centred_sample();
  sample.gx[0] = 511.5f + 25.6f;
  sample.gx[1] = 511.5f - 25.6f;
  const double distance = 600.0 * 60 / 80;
  expect_near(compute_head_gaze(sample).gaze_point, 0, 0, distance - 600);
}

TEST_F(HeadGazeTest, EyesTurnWithTheHead) {
  tell_geometry();
  FSAMPLE sample = make_centred_sample();
  sample.headRotation[1] = 90.0f;  // the left eye swings from -x to +z
  const HeadGaze gaze = compute_head_gaze(sample);
  expect_near(gaze.eye_centre[0], 0, 0, -570);
  expect_near(gaze.eye_centre[1], 0, 0, -630);
  expect_near(gaze.gaze_direction[0], 0, 0, 1);
  EXPECT_FALSE(gaze.gaze_point);  // both eyes look along one line
}

TEST_F(HeadGazeTest, EyeCameraCoordinates) {
  options.gaze_3d_screen = 0;
  options.gaze_3d_eye = 1;
  tell_geometry();
  const HeadGaze gaze = compute_head_gaze(make_centred_sample());
  expect_near(gaze.eye_centre[0], -30, -200, -600);
  expect_near(gaze.gaze_point, 0, -200, 0);
}

TEST_F(HeadGazeTest, PoseMayBeGivenInOtherFrames) {
  read_geometry_message(" !GEOM pose_output_ref_type 2");
  tell_geometry();
  FSAMPLE sample = make_centred_sample();
  expect_near(compute_head_gaze(sample).eye_centre[0], -30, -200, -600);
  options.gaze_3d = 0;  // the reference is read all the same
  read_geometry_message("!GEOM pose_output_ref_type 1");
  expect_near(compute_head_gaze(sample).eye_centre[0], -30, 0, -600);
  read_geometry_message("!GEOM pose_output_ref_type 99999999999");
  EXPECT_FALSE(compute_head_gaze(sample).eye_centre[0]);
}

TEST_F(HeadGazeTest, WhatLacksAnInputIsMissing) {
  tell_geometry();
  FSAMPLE sample = make_centred_sample();
  sample.gy[1] = MISSING_DATA;
  HeadGaze gaze = compute_head_gaze(sample);
  EXPECT_TRUE(gaze.eye_centre[1]);
  EXPECT_TRUE(gaze.gaze_direction[0]);
  EXPECT_FALSE(gaze.gaze_direction[1]);
  EXPECT_FALSE(gaze.gaze_point);
  sample.headPosition[2] = NOT_RECORDED;
  gaze = compute_head_gaze(sample);
  EXPECT_FALSE(gaze.eye_centre[0]);
  EXPECT_FALSE(gaze.gaze_direction[0]);
}

TEST_F(HeadGazeTest, EyeCentresInCameraCoordinatesNeedNoScreen) {
  options.gaze_3d_screen = 0;
  read_geometry_message("!GEOM eyecam_to_ecenter 0: -30 0 0");
  read_geometry_message("!GEOM screen_phys r 200 l -200 t 150 b -150");
  const HeadGaze gaze = compute_head_gaze(make_centred_sample());
  expect_near(gaze.eye_centre[0], -30, -200, -600);
  EXPECT_FALSE(gaze.eye_centre[1]);
  EXPECT_FALSE(gaze.gaze_direction[0]);
}

TEST_F(HeadGazeTest, OnlyWholeMessagesCount) {
  read_geometry_message("!GEOM hm_eyecam_to_ref: 1 2 3 4 5 6 7 8 9 10 11");
  read_geometry_message("!GEOM hm_world_to_screen 1 0 0 0 0 1 0 0 0 0 1 0");
  read_geometry_message("!GEOM screen_phys r 200 l -200 t 150");
  read_geometry_message("!GEOM");
  read_geometry_message("");
  EXPECT_FALSE(calGeom.hm_eyecam_to_ref);
  EXPECT_FALSE(calGeom.hm_world_to_screen);
  EXPECT_EQ(osp_report_geom_config, -1);
  options.gaze_3d = 0;
  tell_geometry();
  EXPECT_EQ(osp_report_geom_config, -1);
  options.gaze_3d = 1;
  read_geometry_message("\t !GEOM   screen_phys r200l-200 t 150\nb -150 and more");
  read_geometry_message("!GEOM screen_phys r 1 l 1 t 1 b 1");
  EXPECT_EQ(asc(), "new osp_report_geom_config 1 \nnew osp_report_geom_config 2 \n");
}

// A screen without size and a pose of nonsense numbers print as missing.
TEST_F(HeadGazeTest, ResultsThatAreNoNumbersAreMissing) {
  tell_geometry();
  read_geometry_message("!GEOM screen_phys r 1 l 1 t 1 b 1");
  read_geometry_message("!GEOM hm_world_to_screen: nan 0 0 inf 0 1 0 0 0 0 1 0");
  read_geometry_message("!GEOM screen_phys r nan l 1 t 1 b 1");
  asc();
  const std::string line = columns_from(1, make_centred_sample());
  EXPECT_EQ(line.find("nan"), std::string::npos) << line;
  EXPECT_EQ(line.find("inf"), std::string::npos) << line;
}

}  // namespace
