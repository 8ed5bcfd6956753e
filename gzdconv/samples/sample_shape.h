// What decides the columns of a sample line: the fields the sample holds, the eyes of its block and
// the options.
#ifndef GZDCONV_SAMPLE_SHAPE_H
#define GZDCONV_SAMPLE_SHAPE_H

#include <cstdint>

#include "gzd_data.h"
#include "run_state.h"

namespace gzdconv {

// "Present" eyes are recorded in the sample and belong to the block; "printed" ones are chosen by
// the options as well.
struct SampleShape {
  int position_type;  // GZD_POSITION_
  bool left_present, right_present;
  bool left_printed, right_printed;
  bool binocular_block;
  bool velocity, resolution, average, screen_resolution, uncorrected, gaze_3d;
  bool markers, input, buttons;
  bool cr_flags;                          // tracking status characters
  bool target, target_flags, second_eye;  // head target, its flags, those of the second eye
  bool head_pose, head_tracking;          // marker flags, head rotation and position
  bool extended, head_resolution, ellipse;

  SampleShape(const RunState& state, const RECORDINGS& block, const FSAMPLE& sample);
};

// Samples with equal keys in one block, under the same options, have the same shape.
inline std::uint32_t shape_key(const FSAMPLE& sample) {
  constexpr unsigned deciding_flags =
      SMP_LEFT | SMP_RIGHT | SMP_STATUS | SMP_HEAD_DATA | SMP_EXTENDED;
  return (sample.flags & deciding_flags) << 16 | static_cast<std::uint16_t>(sample.htype);
}

// True when the eye is recorded in the sample and belongs to the block.
bool is_left_present(const RECORDINGS& block, const FSAMPLE& sample);
bool is_right_present(const RECORDINGS& block, const FSAMPLE& sample);

}  // namespace gzdconv

#endif
