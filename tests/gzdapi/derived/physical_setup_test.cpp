#include "derived/physical_setup.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace gzd;

namespace {

constexpr double MISSING = 100000000.0;
constexpr float WIDTH = 1023.0f, HEIGHT = 767.0f;
constexpr ScreenEdges PIXELS = {0, 0, WIDTH, HEIGHT};
constexpr ScreenEdges MILLIMETRES = {-200, 150, 200, -150};

void setUp(double top, double bottom) {
  EXPECT_EQ(compute_physical_setup(top, bottom, MILLIMETRES, PIXELS), 0);
}

double xOnScreen(double pixel) {
  return -200 + pixel / WIDTH * 400;
}
double yOnScreen(double pixel) {
  return 150 - pixel / HEIGHT * 300;
}

// A sample that looks at a pixel of the screen that setUp(distance, distance) describes.
FSAMPLE lookingAt(double x, double y, double distance) {
  FSAMPLE s{};
  s.flags = SMP_GAZE | SMP_HREF;
  for (int eye = 0; eye < 2; ++eye) {
    s.gx[eye] = static_cast<float>(x);
    s.gy[eye] = static_cast<float>(y);
    s.hx[eye] = static_cast<float>(xOnScreen(x) / distance * 15000);
    s.hy[eye] = static_cast<float>(yOnScreen(y) / distance * 15000);
  }
  return s;
}

std::pair<double, double> ppd(const FSAMPLE& s, int eye = GZD_LEFT_EYE) {
  double rx = 0, ry = 0;
  calculate_ppd(WIDTH, HEIGHT, s, eye, &rx, &ry);
  return {rx, ry};
}
const std::pair<double, double> NONE = {MISSING, MISSING};

TEST(PhysicalSetup, PositionsAreProjectedFromTheScreen) {
  setUp(600, 700);
  for (double px = -100; px < 1200; px += 100) {
    for (double py = -100; py < 900; py += 100) {
      double x = px, y = py;
      ASSERT_EQ(gaze_to_href(&x, &y), 0);
      const double distance = 600 + (py / HEIGHT) * 100;
      EXPECT_NEAR(x, xOnScreen(px) / distance * 15000, 1e-6);
      EXPECT_NEAR(y, yOnScreen(py) / distance * 15000, 1e-6);
      ASSERT_EQ(href_to_gaze(&x, &y), 0);
      EXPECT_NEAR(x, px, 1e-6);
      EXPECT_NEAR(y, py, 1e-6);
    }
  }
}

TEST(PhysicalSetup, AtTheEyeThereIsNoImage) {
  setUp(600, -600);
  const int before = physical_setup_errors();
  double x = 10, y = HEIGHT / 2;  // the plane passes through the eye there
  EXPECT_EQ(gaze_to_href(&x, &y), 1);
  EXPECT_EQ(x, 10.0);
  EXPECT_EQ(physical_setup_errors(), before + 1);
  // No size at all: nothing is a number.
  compute_physical_setup(600, 600, {0, 0, 0, 0}, {0, 0, 0, 0});
  EXPECT_EQ(ppd(lookingAt(10, 10, 600)), NONE);
}

TEST(Ppd, IsTheStepDividedByItsAngle) {
  for (const double x : {50.0, 511.5, 900.0}) {
    for (const double y : {30.0, 383.5, 700.0}) {
      setUp(600, 600);
      const double mx = xOnScreen(x), my = yOnScreen(y);
      const double dx = (WIDTH + 1) / 50, dy = (HEIGHT + 1) / 50;
      const auto angle = [](double ax, double ay, double bx, double by) {
        return std::atan2(std::hypot(ay * 600 - 600 * by, 600 * bx - ax * 600, ax * by - ay * bx),
                          ax * bx + ay * by + 600 * 600) *
               180 / 3.14159265358979;
      };
      const double ax = angle(mx, my, xOnScreen(x + dx), my);
      const double ay = angle(mx, my, mx, yOnScreen(y + dy));
      const auto [rx, ry] = ppd(lookingAt(x, y, 600));
      EXPECT_NEAR(rx, dx / ax, 0.0501);
      EXPECT_NEAR(ry, dy / ay, 0.0501);
      EXPECT_NEAR(rx * 10, std::round(rx * 10), 1e-9);
    }
  }
}

TEST(Ppd, IsTheMeanOfTheLastTenOfTheEye) {
  setUp(600, 600);
  const FSAMPLE middle = lookingAt(511.5, 383.5, 600), side = lookingAt(1000, 383.5, 600);
  const double ofMiddle = ppd(middle).first;
  setUp(600, 600);
  const double ofSide = ppd(side).first;
  ASSERT_GT(ofSide, ofMiddle + 2);
  EXPECT_NEAR(ppd(middle).first, (ofSide + ofMiddle) / 2, 0.11);
  EXPECT_EQ(ppd(middle, GZD_RIGHT_EYE).first, ofMiddle);  // a ring of its own
  for (int i = 0; i < 9; ++i) ppd(middle);
  EXPECT_EQ(ppd(middle).first, ofMiddle);
}

TEST(Ppd, SamplesWithoutBothPositionsLeaveTheRingAlone) {
  setUp(600, 600);
  const FSAMPLE good = lookingAt(1000, 383.5, 600);
  const double before = ppd(good).first;
  for (const UINT16 flags : {UINT16{SMP_GAZE}, UINT16{SMP_HREF}, UINT16{0}}) {
    FSAMPLE s = lookingAt(511.5, 383.5, 600);
    s.flags = flags;
    EXPECT_EQ(ppd(s), NONE);
  }
  EXPECT_EQ(ppd(good).first, before);
}

TEST(Ppd, MissingInputsAndTooFineOnesClearTheRing) {
  const FSAMPLE far = lookingAt(1000, 383.5, 600), middle = lookingAt(511.5, 383.5, 600);
  setUp(600, 600);
  const double ofMiddle = ppd(middle).first;
  FSAMPLE missing = middle;
  missing.gx[0] = MISSING_DATA;
  FSAMPLE absent = middle;
  absent.hy[0] = NOT_RECORDED;
  FSAMPLE opposite = middle;  // 20 pixels that cover nearly a right angle
  opposite.hx[0] = opposite.hy[0] = 1e6f;
  for (const FSAMPLE& bad : {missing, absent, opposite}) {
    ppd(far);
    EXPECT_EQ(ppd(bad), NONE);
    EXPECT_EQ(ppd(middle).first, ofMiddle);
  }
}

}  // namespace
