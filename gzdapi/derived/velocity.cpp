// The two models: differences of neighbours for older trackers, of means of blocks for newer ones.
#include "derived/velocity.h"

#include "gzd_data.h"

namespace gzd {

namespace {

bool is_present(float value) {
  return value != MISSING_DATA;
}

// ---- older trackers -----------------------------------------------------------------------------

// The step between two neighbours, over one interval.
float single_step(float from, float to, float racc, float sampleRate) {
  if (!is_present(from) || !is_present(to)) return MISSING_DATA;
  return (to - from) * sampleRate / racc;
}

float over_two_intervals(const float* middle, float racc, float sampleRate) {
  return (middle[1] - middle[-1]) * sampleRate * 0.5f / racc;
}

// ---- newer trackers -----------------------------------------------------------------------------

float mean_of_2(const float* x) {
  return (x[0] + x[1]) * 0.5f;
}
float mean_of_4(const float* x) {
  return (x[0] + x[1] + x[2] + x[3]) * 0.25f;
}
float mean_of_8(const float* x) {
  return (mean_of_2(x) + mean_of_2(x + 2) + mean_of_2(x + 4) + mean_of_2(x + 6)) * 0.25f;
}

// Means of the outer and the inner block on either side of the middle.
struct BlockMeans {
  float outerBefore, innerBefore, innerAfter, outerAfter;
};

constexpr float weight_of_four_blocks = 0.167f;
constexpr float weight_of_two_blocks = 0.5f;
constexpr float blocks_per_second = 250.0f;

struct At250 {
  static constexpr int half_window = 2;
  static constexpr float gain = 1.0f;
  static BlockMeans means(const float* c) { return {c[-2], c[-1], c[1], c[2]}; }
};
struct At500 {
  static constexpr int half_window = 4;
  static constexpr float gain = 1.2f;
  static BlockMeans means(const float* c) {
    return {mean_of_2(c - 4), mean_of_2(c - 2), mean_of_2(c + 1), mean_of_2(c + 3)};
  }
};
struct At1000 {
  static constexpr int half_window = 9;
  static constexpr float gain = 1.0909091f;
  static BlockMeans means(const float* c) {
    return {mean_of_4(c - 9), mean_of_4(c - 5), mean_of_4(c + 2), mean_of_4(c + 6)};
  }
};
struct At2000 {
  static constexpr int half_window = 19;
  static constexpr float gain = 1.0434783f;
  static BlockMeans means(const float* c) {
    return {mean_of_8(c - 19), mean_of_8(c - 11), mean_of_8(c + 4), mean_of_8(c + 12)};
  }
};

// Puts MISSING_DATA where not all positions in reach are present.
void leave_out_incomplete(const float* x, int reach, int count, float* velocities) {
  int missing = 0;
  for (int i = -reach; i < count + reach; ++i) missing |= is_present(x[i]) ? 0 : 1;
  if (missing == 0) return;
  int presentInARow = 0;
  for (int i = -reach; i < count + reach; ++i) {
    presentInARow = is_present(x[i]) ? presentInARow + 1 : 0;
    const int middle = i - reach;
    if (middle >= 0 && presentInARow <= 2 * reach) velocities[middle] = MISSING_DATA;
  }
}

// All velocities are computed, and then those taken back that lack something: a loop without
// branches takes several positions at a time.
template <class Rate, bool fast>
void velocities_at(const float* x, const float* resolutions, int count, float* velocities) {
  for (int i = 0; i < count; ++i) {
    const BlockMeans b = Rate::means(x + i);
    const float difference = fast ? (b.innerAfter - b.innerBefore) * weight_of_two_blocks
                                  : (b.innerAfter + b.outerAfter - b.outerBefore - b.innerBefore) *
                                        weight_of_four_blocks;
    velocities[i] = (blocks_per_second / resolutions[i]) * (difference * Rate::gain);
  }
  for (int i = 0; i < count; ++i) {
    velocities[i] = is_present(resolutions[i]) ? velocities[i] : MISSING_DATA;
  }
  leave_out_incomplete(x, Rate::half_window, count, velocities);
}

struct RateModel {
  int half_window;
  void (*velocities)(const float* x, const float* resolutions, int count, float* velocities);
  void (*fastVelocities)(const float* x, const float* resolutions, int count, float* velocities);
};

template <class Rate>
constexpr RateModel model_of = {Rate::half_window, velocities_at<Rate, false>,
                                velocities_at<Rate, true>};

const RateModel& model_at(float rate) {
  if (rate < 500.0f) return model_of<At250>;
  if (rate < 1000.0f) return model_of<At500>;
  return rate < 2000.0f ? model_of<At1000> : model_of<At2000>;
}

}  // namespace

float calcVelocity_non_falcon(bool fastVelocity, const float* x, int xlen, float racc,
                              float sampleRate) {
  const float* const middle = x + xlen / 2;
  if (!is_present(middle[-1])) return single_step(middle[0], middle[1], racc, sampleRate);
  const bool fourPoints = xlen >= 6 && !fastVelocity && is_present(middle[-2]);
  if (fourPoints && is_present(middle[1]) && is_present(middle[2])) {
    return (middle[1] + middle[2] - middle[-2] - middle[-1]) * sampleRate / 6.0f / racc;
  }
  if (is_present(middle[1])) return over_two_intervals(middle, racc, sampleRate);
  return single_step(middle[-1], middle[0], racc, sampleRate);
}

void calc_velocities_non_falcon(bool fast, const float* x, const float* resolutions, int count,
                                float sampleRate, float* velocities) {
  for (int i = 0; i < count; ++i) {
    const float* const series = x + i - velocity_reach;
    velocities[i] = is_present(resolutions[i])
                        ? calcVelocity_non_falcon(fast, series, 2 * velocity_reach + 1,
                                                  resolutions[i], sampleRate)
                        : MISSING_DATA;
  }
}

int falcon_half_window(float samples_per_second) {
  return model_at(samples_per_second).half_window;
}

float calcVelocity_falcon(bool use_fast_velocity, const float* xd, int total_samples, float xres,
                          float samples_per_second) {
  if (xd == nullptr) return MISSING_DATA;
  const int reach = falcon_half_window(samples_per_second);
  const int middle = total_samples / 2;
  if (middle < reach || total_samples <= 2 * reach || middle + reach > total_samples) {
    return MISSING_DATA;
  }
  float velocity;
  calc_velocities_falcon(use_fast_velocity, xd + middle, &xres, 1, samples_per_second, &velocity);
  return velocity;
}

void calc_velocities_falcon(bool fast, const float* x, const float* resolutions, int count,
                            float sampleRate, float* velocities) {
  const RateModel& model = model_at(sampleRate);
  (fast ? model.fastVelocities : model.velocities)(x, resolutions, count, velocities);
}

}  // namespace gzd
