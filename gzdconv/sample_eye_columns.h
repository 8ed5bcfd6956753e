// Columns of one eye, and of both together.
#ifndef GZDCONV_SAMPLE_EYE_COLUMNS_H
#define GZDCONV_SAMPLE_EYE_COLUMNS_H

#include "sample_columns.h"

// Position (x, y) and pupil size.
template <int eye>
void append_position(const SampleLine& line);

// The same of the left eye and then of the right one.
void append_both_positions(const SampleLine& line);

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
void append_uncorrected(const SampleLine& line);

extern template void append_position<GZD_LEFT_EYE>(const SampleLine&);
extern template void append_position<GZD_RIGHT_EYE>(const SampleLine&);
extern template void append_screen_resolution<GZD_LEFT_EYE>(const SampleLine&);
extern template void append_screen_resolution<GZD_RIGHT_EYE>(const SampleLine&);
extern template void append_velocity<GZD_LEFT_EYE>(const SampleLine&);
extern template void append_velocity<GZD_RIGHT_EYE>(const SampleLine&);
extern template void append_uncorrected<GZD_LEFT_EYE>(const SampleLine&);
extern template void append_uncorrected<GZD_RIGHT_EYE>(const SampleLine&);

#endif
