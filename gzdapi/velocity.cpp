#include "velocity.h"

#include "gzd_data.h"

namespace {

bool is_present(float value) {
  return value != MISSING_DATA;
}

// ---- older trackers
// ------------------------------------------------------------------------------------

// The step between two neighbours, over one interval.
float single_step(float from, float to, float racc, float sampleRate) {
  if (!is_present(from) || !is_present(to)) return MISSING_DATA;
  return (to - from) * sampleRate / racc;
}

float over_two_intervals(const float* middle, float racc, float sampleRate) {
  return (middle[1] - middle[-1]) * sampleRate * 0.5f / racc;
}

// ---- newer trackers
// ------------------------------------------------------------------------------------

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

// Whether all positions up to `reach` on either side are present. All are looked at, so that many
// are at a time.
template <int reach>
bool is_complete(const float* middle) {
  int missing = 0;
  for (int i = -reach; i <= reach; ++i) missing |= middle[i] == MISSING_DATA ? 1 : 0;
  return missing == 0;
}

struct RateModel {
  int halfWindow;
  bool (*isComplete)(const float* middle);
  float gain;
  BlockMeans (*means)(const float* middle);
};

constexpr RateModel AT_250{2, is_complete<2>, 1.0f, [](const float* c) {
                             return BlockMeans{c[-2], c[-1], c[1], c[2]};
                           }};
constexpr RateModel AT_500{
    4, is_complete<4>, 1.2f, [](const float* c) {
      return BlockMeans{mean_of_2(c - 4), mean_of_2(c - 2), mean_of_2(c + 1), mean_of_2(c + 3)};
    }};
constexpr RateModel AT_1000{
    9, is_complete<9>, 1.0909091f, [](const float* c) {
      return BlockMeans{mean_of_4(c - 9), mean_of_4(c - 5), mean_of_4(c + 2), mean_of_4(c + 6)};
    }};
constexpr RateModel AT_2000{
    19, is_complete<19>, 1.0434783f, [](const float* c) {
      return BlockMeans{mean_of_8(c - 19), mean_of_8(c - 11), mean_of_8(c + 4), mean_of_8(c + 12)};
    }};

const RateModel& model_at(float rate) {
  if (rate < 500.0f) return AT_250;
  if (rate < 1000.0f) return AT_500;
  return rate < 2000.0f ? AT_1000 : AT_2000;
}

constexpr float WEIGHT_OF_FOUR_BLOCKS = 0.167f;
constexpr float WEIGHT_OF_TWO_BLOCKS = 0.5f;
constexpr float BLOCKS_PER_SECOND = 250.0f;

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

int falcon_half_window(float samples_per_second) {
  return model_at(samples_per_second).halfWindow;
}

float calcVelocity_falcon(bool use_fast_velocity, const float* xd, int total_samples, float xres,
                          float samples_per_second) {
  if (xd == nullptr) return MISSING_DATA;
  const RateModel& model = model_at(samples_per_second);
  const int middle = total_samples / 2;
  const int reach = model.halfWindow;
  if (middle < reach || total_samples <= 2 * reach || middle + reach > total_samples) {
    return MISSING_DATA;
  }
  if (!model.isComplete(xd + middle)) return MISSING_DATA;
  const BlockMeans b = model.means(xd + middle);
  const float difference =
      use_fast_velocity
          ? (b.innerAfter - b.innerBefore) * WEIGHT_OF_TWO_BLOCKS
          : (b.innerAfter + b.outerAfter - b.outerBefore - b.innerBefore) * WEIGHT_OF_FOUR_BLOCKS;
  return (BLOCKS_PER_SECOND / xres) * (difference * model.gain);
}
