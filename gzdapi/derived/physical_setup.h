// The physical layout of the display, and the resolution that follows from it. Process-wide.
#ifndef GZDAPI_PHYSICAL_SETUP_H
#define GZDAPI_PHYSICAL_SETUP_H

#include "gzd_data.h"

namespace gzd {

// Edges of the screen, in mm or in pixels.
struct ScreenEdges {
  double left, top, right, bottom;
};

// Sets the layout: distance from the eye to the top and bottom edge (mm), and the edges in both
// units. Clears the smoothing of both eyes. Returns 0.
int compute_physical_setup(double distanceTop, double distanceBottom, const ScreenEdges& phys,
                           const ScreenEdges& pixel);

// The resolution at the gaze of an eye, in pixels per degree, smoothed over its last ten valid
// samples, in multiples of 0.1. MISSING_DATA when the sample lacks gaze or head-referenced
// positions, or valid ones.
void calculate_ppd(float hpixel, float vpixel, const FSAMPLE& sample, int eye, double* rx,
                   double* ry);

// Takes a gaze position (pixels) to the head-referenced plane. Returns 0, or 1 when it has no image
// there.
int gaze_to_href(double* x, double* y);

}  // namespace gzd

#endif
