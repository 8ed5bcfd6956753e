// Angular resolution: the sums of the mean of a block, and the mapping of gaze from the
// tracked area to the display.
#ifndef GZDCONV_RESOLUTION_H
#define GZDCONV_RESOLUTION_H

#include "cli/options.h"
#include "gzd_data.h"

namespace gzdconv {

// True for a pupil too small to be seen, whose eye does not count for a mean of both. Never with
// options.no_pupil_area_check.
bool has_lost_pupil(const FSAMPLE& sample, int eye);

// Sums of the accepted resolutions since the last END line of the file, and their number.
extern double ppd_x, ppd_y, ppd_count;

// Forgets the sums.
void clear_resolution_sums();

// True for a resolution that counts: above 0.01 and below 10000.
bool is_usable_resolution(double resolution);

// Adds a pair to the sums when both values count.
void add_resolution(double rx, double ry);

// Completes the resolution of `sample` for samples of `position_type` (GZD_POSITION_), and adds it
// to the sums.
void updatePPD(FSAMPLE& sample, int position_type);

// Resolution at a head-referenced position.
struct Resolution {
  double x, y;
};
Resolution head_referenced_resolution(double hx, double hy);

// Read the sizes after the keyword that begins `text`; other text makes them unknown. Null is
// ignored.
void parseDisplayCoords(const char* text);
void parseDisplayAreaCoords(const char* text);

// The tracked area, widened by its margin.
float getLeft();
float getRight();
float getTop();
float getBottom();

// A gaze position or resolution on the display. Unchanged without options.gaze_map, when it is
// MISSING_DATA, and while area or display are unknown.
namespace display_mapping {
float map_x(float x);
float map_y(float y);
float map_ppd_x(float resolution);
float map_ppd_y(float resolution);
}  // namespace display_mapping

inline float getMappedX(float x) {
  return options.gaze_map ? display_mapping::map_x(x) : x;
}
inline float getMappedY(float y) {
  return options.gaze_map ? display_mapping::map_y(y) : y;
}
inline float getMappedPPDX(float resolution) {
  return options.gaze_map ? display_mapping::map_ppd_x(resolution) : resolution;
}
inline float getMappedPPDY(float resolution) {
  return options.gaze_map ? display_mapping::map_ppd_y(resolution) : resolution;
}

}  // namespace gzdconv

#endif
