// A small generator of random numbers whose sequence is the same on every system.
#ifndef GZDSYNTH_RANDOM_H
#define GZDSYNTH_RANDOM_H

#include <cstdint>

namespace gzdsynth {

class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  // SplitMix64.
  std::uint64_t next() {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31U);
  }

  // Evenly in [0, 1).
  double uniform() { return static_cast<double>(next() >> 11U) * 0x1p-53; }
  double uniform(double low, double high) { return low + (high - low) * uniform(); }

  // Bell-shaped around 0 with a standard deviation of 1, within -3.5..3.5: four even 16-bit
  // numbers of one draw added up.
  double normal() {
    const std::uint64_t bits = next();
    std::uint64_t sum = 0;
    for (unsigned shift = 0; shift < 64; shift += 16) sum += (bits >> shift) & 0xFFFFU;
    constexpr double middle = 2 * 65535.0;
    constexpr double sqrt3 = 1.7320508075688772;
    return (static_cast<double>(sum) - middle) * (sqrt3 / 65536.0);
  }

 private:
  std::uint64_t state_;
};

}  // namespace gzdsynth

#endif
