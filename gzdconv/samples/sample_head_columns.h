// Columns of the head: markers, target, and pose with what follows from it.
#ifndef GZDCONV_SAMPLE_HEAD_COLUMNS_H
#define GZDCONV_SAMPLE_HEAD_COLUMNS_H

#include "asc/number_form.h"
#include "samples/sample_line.h"

namespace gzdconv {

inline constexpr int head_decimals = 3;

// The eight words of the head markers.
char* write_markers(char* place, SampleLine line);

// Position and distance of the head target, after a blank; its flag characters, after another;
// and those of the second eye.
char* write_target(char* place, SampleLine line);
char* write_target_flags(char* place, SampleLine line);
char* write_second_eye_flags(char* place, SampleLine line);

// Head rotation and position, x, y and z each.
char* write_head_tracking(char* place, SampleLine line);

// The four named head-marker flags as characters; all 32 as digits.
char* write_marker_flags(char* place, SampleLine line);
void append_marker_bits(const SampleLine& line);

// Head in space and eye in head: left, right and combined, x and then y of each.
char* write_both_extended(char* place, SampleLine line);

// Resolutions of head in space and eye in head, x and y each.
char* write_head_resolution(char* place, SampleLine line);

// The pupil ellipse: centre, axes, angle.
template <int eye>
char* write_ellipse(char* place, SampleLine line) {
  const FSAMPLE& s = line.sample;
  const float values[] = {s.ex[eye], s.ey[eye], s.emajor[eye], s.eminor[eye], s.eangle[eye]};
  return write_all_recorded(place, values, form_of(head_decimals));
}

// One member of the sample, or one element of it.
template <auto member>
char* write_head_value(char* place, SampleLine line) {
  return write_recorded(place, line.sample.*member, form_of(head_decimals));
}

template <auto member, int index>
char* write_head_element(char* place, SampleLine line) {
  return write_recorded(place, (line.sample.*member)[index], form_of(head_decimals));
}

}  // namespace gzdconv

#endif
