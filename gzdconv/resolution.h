// Angular resolution: the sums behind the mean of a block, and the mapping of gaze from the
// tracked area to the display.
#ifndef GZDCONV_RESOLUTION_H
#define GZDCONV_RESOLUTION_H

#include "gzd_data.h"

// Sums of the accepted resolutions since the last END line, and their number.
extern double ppd_x, ppd_y, ppd_count;

// Forgets the sums.
void clear_resolution_sums();

// True for a resolution that counts: above 0.01 and below 10000.
bool is_usable_resolution(double resolution);

// Adds a pair to the sums when both values count.
void add_resolution(double rx, double ry);

// Completes the resolution of `sample` for the sample type in use, and adds it to the sums.
void updatePPD(FSAMPLE& sample);

// Resolution at a head-referenced position.
struct Resolution {
  double x, y;
};
Resolution head_referenced_resolution(double hx, double hy);

// Read the sizes behind the keyword that begins `text`; other text makes them unknown. Null is
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
float getMappedX(float x);
float getMappedY(float y);
float getMappedPPDX(float resolution);
float getMappedPPDY(float resolution);

#endif
