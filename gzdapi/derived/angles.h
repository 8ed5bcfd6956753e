// Visual angles: what head-referenced positions and angular resolutions are reckoned with.
#ifndef GZDAPI_ANGLES_H
#define GZDAPI_ANGLES_H

#include "gzd_data.h"

namespace gzd {

constexpr double href_depth = GZD_HREF_DISTANCE;
// Rounded as the format's resolutions are; a more exact value would give other digits.
constexpr double degrees_per_radian = 57.2958;

}  // namespace gzd

#endif
