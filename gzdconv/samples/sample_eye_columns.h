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

// append_both_positions of positions `x` and `y` that print as they are recorded: in columns of the
// usual form, and in any other.
using EyePair = float (FSAMPLE::*)[2];
template <EyePair x, EyePair y>
char* write_both_positions(char* place, SampleLine line);
template <EyePair x, EyePair y>
char* write_formed_positions(char* place, SampleLine line);

// Pixels per degree by the physical set-up of the screen, x and y, of the left eye and then of the
// right one.
char* write_screen_resolutions(char* place, SampleLine line);

// x and y velocity, of the kind that the options choose.
template <int eye>
char* write_velocity(char* place, SampleLine line);

// The same of the left eye and then of the right one, in columns of the usual form and of positions
// that print as they are recorded.
char* write_both_velocities(char* place, SampleLine line);

// The sample's resolution, or the default one.
char* write_resolution(char* place, SampleLine line);

// Gaze, the mean of both eyes.
char* write_average(char* place, SampleLine line);

// The camera's measurements, in fourteen columns.
template <int eye>
char* write_uncorrected(char* place, SampleLine line);

extern template void append_position<GZD_LEFT_EYE>(const SampleLine&);
extern template void append_position<GZD_RIGHT_EYE>(const SampleLine&);
extern template char* write_velocity<GZD_LEFT_EYE>(char*, SampleLine);
extern template char* write_velocity<GZD_RIGHT_EYE>(char*, SampleLine);
extern template char* write_uncorrected<GZD_LEFT_EYE>(char*, SampleLine);
extern template char* write_uncorrected<GZD_RIGHT_EYE>(char*, SampleLine);

extern template char* write_both_positions<&FSAMPLE::gx, &FSAMPLE::gy>(char*, SampleLine);
extern template char* write_both_positions<&FSAMPLE::hx, &FSAMPLE::hy>(char*, SampleLine);
extern template char* write_both_positions<&FSAMPLE::px, &FSAMPLE::py>(char*, SampleLine);
extern template char* write_formed_positions<&FSAMPLE::gx, &FSAMPLE::gy>(char*, SampleLine);
extern template char* write_formed_positions<&FSAMPLE::hx, &FSAMPLE::hy>(char*, SampleLine);
extern template char* write_formed_positions<&FSAMPLE::px, &FSAMPLE::py>(char*, SampleLine);

}  // namespace gzdconv

#endif
