// Columns of one eye, and of both together.
#ifndef GZDCONV_SAMPLE_EYE_COLUMNS_H
#define GZDCONV_SAMPLE_EYE_COLUMNS_H

#include "asc/sample_number.h"
#include "samples/sample_line.h"

namespace gzdconv {

// Position (x, y) and pupil size.
template <int eye>
void append_position(const SampleLine& line);

// The same of the left eye and then of the right one.
void append_both_positions(const SampleLine& line);

// True when positions print as they are recorded, in columns of the usual form. Constant while
// options stay.
inline bool positions_are_plain() {
  return has_usual_form() && options.gaze_map == 0;
}

// append_both_positions of plain positions `x` and `y` as a column.
using EyePair = float (FSAMPLE::*)[2];
template <EyePair x, EyePair y>
char* write_both_positions(char* place, SampleLine line);

// Pixels per degree by the physical set-up of the screen, x and y.
template <int eye>
void append_screen_resolution(const SampleLine& line);

// x and y velocity, of the kind that the options choose.
template <int eye>
void append_velocity(const SampleLine& line);

// The sample's resolution, or the default one.
void append_resolution(const SampleLine& line);

// Gaze, the mean of both eyes.
void append_average(const SampleLine& line);

// The camera's measurements, in fourteen columns.
template <int eye>
char* write_uncorrected(char* place, SampleLine line);

extern template void append_position<GZD_LEFT_EYE>(const SampleLine&);
extern template void append_position<GZD_RIGHT_EYE>(const SampleLine&);
extern template void append_screen_resolution<GZD_LEFT_EYE>(const SampleLine&);
extern template void append_screen_resolution<GZD_RIGHT_EYE>(const SampleLine&);
extern template void append_velocity<GZD_LEFT_EYE>(const SampleLine&);
extern template void append_velocity<GZD_RIGHT_EYE>(const SampleLine&);
extern template char* write_uncorrected<GZD_LEFT_EYE>(char*, SampleLine);
extern template char* write_uncorrected<GZD_RIGHT_EYE>(char*, SampleLine);

extern template char* write_both_positions<&FSAMPLE::gx, &FSAMPLE::gy>(char*, SampleLine);
extern template char* write_both_positions<&FSAMPLE::hx, &FSAMPLE::hy>(char*, SampleLine);
extern template char* write_both_positions<&FSAMPLE::px, &FSAMPLE::py>(char*, SampleLine);

}  // namespace gzdconv

#endif
