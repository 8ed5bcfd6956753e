#include "samples/sample_shape.h"

#include "cli/options.h"

namespace gzdconv {

namespace {

// Kinds of head-target data, in `htype`.
constexpr INT16 target_of_one_eye = 182;
constexpr INT16 target_of_two_eyes = 183;

constexpr int markers_mode = 1;  // of options.head_data_mode
constexpr int target_mode = 2;

bool has_target(const FSAMPLE& sample) {
  return (sample.flags & SMP_HEAD_DATA) != 0 &&
         (sample.htype == target_of_one_eye || sample.htype == target_of_two_eyes);
}

}  // namespace

bool block_has_left(const RECORDINGS& block) {
  return block.eye == GZD_BLOCK_LEFT || block.eye == GZD_BLOCK_BOTH;
}

bool block_has_right(const RECORDINGS& block) {
  return block.eye == GZD_BLOCK_RIGHT || block.eye == GZD_BLOCK_BOTH;
}

SampleShape::SampleShape(const RECORDINGS& block, const FSAMPLE& sample)
    : left_present((sample.flags & SMP_LEFT) != 0 && block_has_left(block)),
      right_present((sample.flags & SMP_RIGHT) != 0 && block_has_right(block)),
      left_printed(left_present && options.left_eye != 0 && options.left_samples != 0),
      right_printed(right_present && options.right_eye != 0 && options.right_samples != 0),
      binocular_block(block.eye == GZD_BLOCK_BOTH),
      velocity(options.output_velocity != 0),
      resolution(options.output_resolution != 0),
      average(options.output_average != 0 && options.sample_type_in_use == GZD_POSITION_GAZE &&
              left_present && right_present),
      screen_resolution(options.screen_setup_given != 0 && left_present && right_present),
      uncorrected(options.uncorrected_raw != 0),
      gaze_3d(options.gaze_3d != 0),
      markers(options.head_data_mode == markers_mode),
      input(options.output_input != 0),
      buttons(options.output_buttons != 0),
      cr_flags(options.output_flags != 0 && options.tracker_revision > 0 &&
               (sample.flags & SMP_STATUS) != 0),
      target(options.output_target != 0 && options.head_data_mode == target_mode &&
             has_target(sample)),
      target_flags(target && options.output_flags != 0),
      second_eye(target_flags && binocular_block && sample.htype == target_of_two_eyes),
      head_pose((sample.flags & SMP_EXTENDED) != 0),
      head_tracking(head_pose && options.no_head_tracking == 0),
      extended(head_pose && options.no_extended_data == 0),
      head_resolution(extended && options.head_resolution != 0),
      ellipse(extended && options.pupil_ellipse != 0) {}

}  // namespace gzdconv
