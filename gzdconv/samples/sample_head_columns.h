// Columns of the head: markers, target, and pose with what follows from it.
#ifndef GZDCONV_SAMPLE_HEAD_COLUMNS_H
#define GZDCONV_SAMPLE_HEAD_COLUMNS_H

#include "asc/number.h"
#include "samples/sample_line.h"

namespace gzdconv {

inline constexpr int head_decimals = 3;

// The eight words of the head markers.
void append_markers(const SampleLine& line);

// Position and distance of the head target, after a blank; its flag characters, after another;
// and those of the second eye.
void append_target(const SampleLine& line);
void append_target_flags(const SampleLine& line);
void append_second_eye_flags(const SampleLine& line);

// Head rotation and position, x, y and z each.
void append_head_tracking(const SampleLine& line);

// The four named head-marker flags as characters; all 32 as digits.
void append_marker_flags(const SampleLine& line);
void append_marker_bits(const SampleLine& line);

// Resolutions of head in space and eye in head, x and y each.
void append_head_resolution(const SampleLine& line);

// The pupil ellipse: centre, axes, angle.
template <int eye>
void append_ellipse(const SampleLine& line) {
  const FSAMPLE& s = line.sample;
  for (const float value : {s.ex[eye], s.ey[eye], s.emajor[eye], s.eminor[eye], s.eangle[eye]}) {
    print_value(head_decimals, missing_if_absent(value));
  }
}

// One member of the sample, or one element of it.
template <auto member>
void append_head_value(const SampleLine& line) {
  print_value(head_decimals, missing_if_absent(line.sample.*member));
}

template <auto member, int index>
void append_head_element(const SampleLine& line) {
  print_value(head_decimals, missing_if_absent((line.sample.*member)[index]));
}

}  // namespace gzdconv

#endif
