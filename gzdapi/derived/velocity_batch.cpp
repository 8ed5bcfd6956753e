#include "derived/velocity_batch.h"

#include <algorithm>
#include <cmath>

#include "derived/velocity.h"

namespace gzd {

namespace {

constexpr double HREF_DISTANCE_SQUARED = 15000.0 * 15000.0;
constexpr double DEGREES_PER_RADIAN = 57.2958;
// No float lies between this one and 0.01.
constexpr float SMALLEST_RESOLUTION = 0.01f;
static_assert(static_cast<double>(SMALLEST_RESOLUTION) < 0.01);
constexpr float LARGEST_RESOLUTION = 10000.0f;

constexpr int FIRST_FALCON_REVISION = 3;

// Units per degree at samples in a row; MISSING_DATA where velocities cannot be had.
struct Resolutions {
  float x[VelocityBatch::LENGTH];
  float y[VelocityBatch::LENGTH];
};

bool is_usable(float resolution) {
  return resolution > SMALLEST_RESOLUTION && resolution != MISSING_DATA;
}

void set_given(const VelocitySettings& settings, int count, Resolutions& resolutions) {
  const float x = is_usable(settings.defaultRx) ? settings.defaultRx : MISSING_DATA;
  const float y = is_usable(settings.defaultRy) ? settings.defaultRy : MISSING_DATA;
  std::fill_n(resolutions.x, count, x);
  std::fill_n(resolutions.y, count, y);
}

// Head-referenced positions tell their own resolution.
void set_of_positions(PairsFrom positions, int count, Resolutions& resolutions) {
  for (int i = 0; i < count; ++i) {
    const float x = positions.x[i];
    const float y = positions.y[i];
    if (x == MISSING_DATA || y == MISSING_DATA) continue;
    const double xx = static_cast<double>(x * x);
    const double yy = static_cast<double>(y * y);
    const double distance = xx + HREF_DISTANCE_SQUARED + yy;
    resolutions.x[i] =
        static_cast<float>(distance / std::sqrt(yy + HREF_DISTANCE_SQUARED) / DEGREES_PER_RADIAN);
    resolutions.y[i] =
        static_cast<float>(distance / std::sqrt(xx + HREF_DISTANCE_SQUARED) / DEGREES_PER_RADIAN);
  }
}

void leave_out_implausible(int count, Resolutions& resolutions) {
  for (int i = 0; i < count; ++i) {
    const float x = resolutions.x[i];
    const float y = resolutions.y[i];
    const bool plausible = (x > SMALLEST_RESOLUTION) & (x < LARGEST_RESOLUTION) &
                           (y > SMALLEST_RESOLUTION) & (y < LARGEST_RESOLUTION);
    resolutions.x[i] = plausible ? x : MISSING_DATA;
    resolutions.y[i] = plausible ? y : MISSING_DATA;
  }
}

void find_resolutions(int positionType, const VelocitySettings& settings, PairsFrom positions,
                      PairsFrom own, int count, Resolutions& resolutions) {
  if (settings.defaultRx != MISSING_DATA) return set_given(settings, count, resolutions);
  std::copy_n(own.x, count, resolutions.x);
  std::copy_n(own.y, count, resolutions.y);
  if (positionType == GZD_POSITION_HREF) set_of_positions(positions, count, resolutions);
  leave_out_implausible(count, resolutions);
}

}  // namespace

void compute_velocities(const VelocityKind& kind, const VelocitySettings& settings,
                        PairsFrom positions, PairsFrom own, int count, float* xvel, float* yvel) {
  Resolutions resolutions;
  find_resolutions(POSITION_TYPE_OF_SERIES[kind.series], settings, positions, own, count,
                   resolutions);
  const auto model = settings.ovilo_revision < FIRST_FALCON_REVISION ? calcVelocities_non_falcon
                                                                     : calcVelocities_falcon;
  const float rate = static_cast<float>(settings.sampleRate);
  model(kind.fast, positions.x, resolutions.x, count, rate, xvel);
  model(kind.fast, positions.y, resolutions.y, count, rate, yvel);
}

// Begins at multiples of the length, so that a walk in any direction computes each once.
void VelocityBatch::moveTo(int slot, int size, const VelocitySettings& asked) {
  first = slot - slot % LENGTH;
  end = std::min(first + LENGTH, size);
  eyes = 0;
  settings = asked;
  kindCount = 0;
  for (const VelocityKind& kind : VELOCITY_KINDS) {
    if ((settings.kinds & kind.bit) != 0) kinds[kindCount++] = &kind;
  }
}

void VelocityBatch::compute(int slot, int size, UINT16 flags, const VelocitySettings& asked,
                            const std::array<SeriesOfEye, 2>& positions,
                            const PairSeries& resolutions) {
  if (!covers(slot, asked)) moveTo(slot, size, asked);
  for (int eye = 0; eye < 2; ++eye) {
    if ((flags & eye_flag(eye) & ~eyes) == 0) continue;
    eyes |= eye_flag(eye);
    for (std::size_t i = 0; i < kindCount; ++i) {
      Velocities& velocities = of[i][static_cast<std::size_t>(eye)];
      const PairSeries& series = positions[static_cast<std::size_t>(eye)][kinds[i]->series];
      compute_velocities(*kinds[i], settings, series.from(first), resolutions.from(first),
                         end - first, velocities.x.data(), velocities.y.data());
    }
  }
}

}  // namespace gzd
