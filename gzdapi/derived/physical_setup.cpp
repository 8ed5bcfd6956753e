// The screen is a plane that may be tilted: its distance from the eye runs linearly from the top
// edge's to the bottom edge's. Two homogeneous transforms lead from pixels to the head-referenced
// plane:
//   Mos  pixels -> millimetres on the screen: scale and shift
//   Msi  millimetres -> head-referenced: x * depth / d(y), y * depth / d(y)
// The resolution is the step of a fiftieth of the screen, divided by the angle that it covers.

#include "derived/physical_setup.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "derived/angles.h"

namespace gzd {

namespace {

constexpr double smallest_divisor = 1e-8;
constexpr double smallest_angle = 1e-5;  // degrees
constexpr double steps_per_screen = 50.0;
constexpr int ring_size = 10;
constexpr int eye_count = 2;

using MATRIX = std::array<std::array<double, 3>, 3>;
using Vector = std::array<double, 3>;

MATRIX Msi{}, Mos{};
double ppdx[eye_count][ring_size];
double ppdy[eye_count][ring_size];
int ppdc[eye_count];

void apply(const MATRIX& m, Vector& v) {
  Vector result;
  std::transform(m.begin(), m.end(), result.begin(),
                 [&v](const auto& row) { return row[0] * v[0] + row[1] * v[1] + row[2] * v[2]; });
  v = result;
}

// Takes a point through two transforms.
int convert(const MATRIX& first, const MATRIX& second, double* x, double* y) {
  Vector v = {*x, *y, 1.0};
  apply(first, v);
  apply(second, v);
  if (!(std::fabs(v[2]) > smallest_divisor)) return 1;
  *x = v[0] / v[2];
  *y = v[1] / v[2];
  return 0;
}

void clear_ring(int eye) {
  std::fill_n(ppdx[eye], ring_size, 0.0);
  std::fill_n(ppdy[eye], ring_size, 0.0);
  ppdc[eye] = 0;
}

bool missing(double value) {
  return value == static_cast<double>(MISSING_DATA) || value == static_cast<double>(NOT_RECORDED);
}

// The angle in degrees between two points of the head-referenced plane.
double angle_between(double x, double y, double hx, double hy) {
  const double depth = href_depth * href_depth;
  const double cosine =
      (x * hx + depth + y * hy) / std::sqrt((x * x + depth + y * y) * (hx * hx + depth + hy * hy));
  return std::acos(std::clamp(cosine, -1.0, 1.0)) * degrees_per_radian;
}

struct Gaze {
  double gx, gy, hx, hy;

  [[nodiscard]] bool isMissing() const {
    return missing(gx) || missing(gy) || missing(hx) || missing(hy);
  }
};

// Pixels per degree of a step on the screen; 0 when it cannot be given.
double resolution_of_step(const Gaze& gaze, double dx, double dy) {
  double x = gaze.gx + dx;
  double y = gaze.gy + dy;
  if (gaze_to_href(&x, &y) != 0) return 0.0;
  const double angle = angle_between(x, y, gaze.hx, gaze.hy);
  return angle >= smallest_angle ? std::fabs((dx + dy) / angle) : 0.0;
}

double to_tenths(double value) {
  return std::trunc((value + 0.05) * 10.0) / 10.0;
}

void mean_of_ring(int eye, double* rx, double* ry) {
  double sumX = 0.0;
  double sumY = 0.0;
  int count = 0;
  for (int i = 0; i < ring_size; ++i) {
    if (!(ppdx[eye][i] > 1.0 && ppdy[eye][i] > 1.0)) continue;
    sumX += ppdx[eye][i];
    sumY += ppdy[eye][i];
    ++count;
  }
  *rx = count > 0 ? to_tenths(sumX / count) : static_cast<double>(MISSING_DATA);
  *ry = count > 0 ? to_tenths(sumY / count) : static_cast<double>(MISSING_DATA);
}

}  // namespace

int compute_physical_setup(double distanceTop, double distanceBottom, const ScreenEdges& phys,
                           const ScreenEdges& pixel) {
  clear_ring(GZD_LEFT_EYE);
  clear_ring(GZD_RIGHT_EYE);
  // Pixels per millimetre.
  const double sx = 1.0 / ((phys.right - phys.left) / (pixel.right - pixel.left));
  const double sy = 1.0 / ((phys.bottom - phys.top) / (pixel.bottom - pixel.top));
  // d(y) = slope * y + base
  const double slope = (distanceBottom - distanceTop) / (phys.bottom - phys.top);
  const double base = distanceTop - slope * phys.top;
  const double f = href_depth;
  Mos = {{{1.0 / sx, 0.0, phys.left - pixel.left / sx},
          {0.0, 1.0 / sy, phys.top - pixel.top / sy},
          {0.0, 0.0, 1.0}}};
  Msi = {{{f, 0.0, 0.0}, {0.0, f, 0.0}, {0.0, slope, base}}};
  return 0;
}

int gaze_to_href(double* x, double* y) {
  return convert(Mos, Msi, x, y);
}

void calculate_ppd(float hpixel, float vpixel, const FSAMPLE& sample, int eye, double* rx,
                   double* ry) {
  *rx = *ry = static_cast<double>(MISSING_DATA);
  if ((sample.flags & SMP_GAZE) == 0 || (sample.flags & SMP_HREF) == 0) return;
  const int e = eye == GZD_RIGHT_EYE ? GZD_RIGHT_EYE : GZD_LEFT_EYE;
  const Gaze gaze = {sample.gx[e], sample.gy[e], sample.hx[e], sample.hy[e]};
  const bool valid = !gaze.isMissing();
  const double px = valid ? resolution_of_step(gaze, (hpixel + 1.0) / steps_per_screen, 0.0) : 0.0;
  const double py = valid ? resolution_of_step(gaze, 0.0, (vpixel + 1.0) / steps_per_screen) : 0.0;
  if (!(px >= 1.0 && py >= 1.0)) return clear_ring(e);
  ppdx[e][ppdc[e]] = px;
  ppdy[e][ppdc[e]] = py;
  ppdc[e] = (ppdc[e] + 1) % ring_size;
  mean_of_ring(e, rx, ry);
}

}  // namespace gzd
