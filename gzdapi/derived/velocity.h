// Velocity of the middle element of a series of positions: two models, pure functions.
//
// A series holds n positions at equal intervals, MISSING_DATA where there is none. Velocities are
// in degrees per second, MISSING_DATA where the series does not allow one. Single precision, one
// rounding per operation.
#ifndef GZDAPI_VELOCITY_H
#define GZDAPI_VELOCITY_H

namespace gzd {

// Older trackers: differences over four points, or two where neighbours are missing.
// `racc`: resolution (units per degree); `sampleRate`: samples per second.
float calcVelocity_non_falcon(bool fastVelocity, const float* x, int xlen, float racc,
                              float sampleRate);

// Newer trackers: differences of means over blocks of 4 ms, as if sampled at 250 Hz. Every position
// in reach must be present.
float calcVelocity_falcon(bool use_fast_velocity, const float* xd, int total_samples, float xres,
                          float samples_per_second);

// Both also for `count` positions in a row, `x` the first of them: velocity_reach more can be read
// before the first and after the last. `resolutions`: units per degree at each, MISSING_DATA where
// no velocity is to be had. The results are the same, bit by bit.
constexpr int velocity_reach = 19;
void calc_velocities_non_falcon(bool fast, const float* x, const float* resolutions, int count,
                                float sampleRate, float* velocities);
void calc_velocities_falcon(bool fast, const float* x, const float* resolutions, int count,
                            float sampleRate, float* velocities);

// How many positions to either side of the middle calcVelocity_falcon uses at this rate.
int falcon_half_window(float samples_per_second);

}  // namespace gzd

#endif
