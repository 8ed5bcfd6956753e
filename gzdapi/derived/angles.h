// Visual angles: what head-referenced positions and angular resolutions are reckoned with.
#ifndef GZDAPI_ANGLES_H
#define GZDAPI_ANGLES_H

namespace gzd {

// The distance from the eye of the plane of head-referenced positions, in their own units.
constexpr double href_depth = 15000.0;
// Rounded as the format's resolutions are; a more exact value would give other digits.
constexpr double degrees_per_radian = 57.2958;

}  // namespace gzd

#endif
