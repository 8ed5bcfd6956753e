// The resolutions of a batch, then its velocities, one kind and eye after the other.
#include "derived/velocity_batch.h"

#include <algorithm>
#include <cmath>

#include "derived/angles.h"
#include "derived/velocity.h"

namespace gzd {

namespace {

constexpr double href_depth_squared = href_depth * href_depth;
// No float lies between this one and 0.01.
constexpr float smallest_resolution = 0.01f;
static_assert(static_cast<double>(smallest_resolution) < 0.01);
constexpr float largest_resolution = 10000.0f;

constexpr int first_falcon_revision = 3;

// Units per degree at samples in a row; MISSING_DATA where velocities cannot be had.
struct Resolutions {
  float x[VelocityBatch::batch_length];
  float y[VelocityBatch::batch_length];
};

bool is_usable(float resolution) {
  return resolution > smallest_resolution && resolution != MISSING_DATA;
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
    const double distance = xx + href_depth_squared + yy;
    resolutions.x[i] =
        static_cast<float>(distance / std::sqrt(yy + href_depth_squared) / degrees_per_radian);
    resolutions.y[i] =
        static_cast<float>(distance / std::sqrt(xx + href_depth_squared) / degrees_per_radian);
  }
}

void leave_out_implausible(int count, Resolutions& resolutions) {
  for (int i = 0; i < count; ++i) {
    const float x = resolutions.x[i];
    const float y = resolutions.y[i];
    const bool plausible = (x > smallest_resolution) & (x < largest_resolution) &
                           (y > smallest_resolution) & (y < largest_resolution);
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
  find_resolutions(position_type_of_series[kind.series], settings, positions, own, count,
                   resolutions);
  const auto model = settings.ovilo_revision < first_falcon_revision ? calc_velocities_non_falcon
                                                                     : calc_velocities_falcon;
  const float rate = static_cast<float>(settings.sampleRate);
  model(kind.fast, positions.x, resolutions.x, count, rate, xvel);
  model(kind.fast, positions.y, resolutions.y, count, rate, yvel);
}

// Begins at multiples of the length, so that a walk in any direction computes each once.
void VelocityBatch::moveTo(int slot, int size, const VelocitySettings& asked) {
  first_ = slot - slot % batch_length;
  end_ = std::min(first_ + batch_length, size);
  eyes_ = 0;
  settings_ = asked;
  kindCount_ = 0;
  for (const VelocityKind& kind : velocity_kinds) {
    if ((settings_.kinds & kind.bit) != 0) kinds_[kindCount_++] = &kind;
  }
}

void VelocityBatch::compute(int slot, int size, UINT16 flags, const VelocitySettings& asked,
                            const std::array<SeriesOfEye, 2>& positions,
                            const PairSeries& resolutions) {
  if (!covers(slot, asked)) moveTo(slot, size, asked);
  for (int eye = 0; eye < 2; ++eye) {
    if ((flags & eye_flag(eye) & ~eyes_) == 0) continue;
    eyes_ |= eye_flag(eye);
    for (std::size_t i = 0; i < kindCount_; ++i) {
      float x[batch_length], y[batch_length];
      const PairSeries& series = positions[static_cast<std::size_t>(eye)][kinds_[i]->series];
      compute_velocities(*kinds_[i], settings_, series.from(first_), resolutions.from(first_),
                         end_ - first_, x, y);
      for (int place = 0; place < end_ - first_; ++place) {
        of_[i].x[place][eye] = x[place];
        of_[i].y[place][eye] = y[place];
      }
    }
  }
}

}  // namespace gzd
