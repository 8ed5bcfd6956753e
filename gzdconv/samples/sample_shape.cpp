// Decides from options, block and sample which columns a sample has.
#include "samples/sample_shape.h"

#include "cli/options.h"
#include "lines/recording_lines.h"

namespace gzdconv {

namespace {

bool has_target(const FSAMPLE& sample) {
  return (sample.flags & SMP_HEAD_DATA) != 0 &&
         (sample.htype == GZD_HTYPE_TARGET_ONE_EYE || sample.htype == GZD_HTYPE_TARGET_TWO_EYES);
}

}  // namespace

bool is_left_present(const RECORDINGS& block, const FSAMPLE& sample) {
  return (sample.flags & SMP_LEFT) != 0 && block_has_left(block);
}

bool is_right_present(const RECORDINGS& block, const FSAMPLE& sample) {
  return (sample.flags & SMP_RIGHT) != 0 && block_has_right(block);
}

SampleShape::SampleShape(const RunState& state, const RECORDINGS& block, const FSAMPLE& sample)
    : position_type(state.block.sample_position),
      left_present(is_left_present(block, sample)),
      right_present(is_right_present(block, sample)),
      left_printed(left_present && options.left_eye != 0 && options.left_samples != 0),
      right_printed(right_present && options.right_eye != 0 && options.right_samples != 0),
      binocular_block(block.eye == GZD_BLOCK_BOTH),
      velocity(options.output_velocity != 0),
      resolution(options.output_resolution != 0),
      average(options.output_average != 0 && position_type == GZD_POSITION_GAZE && left_present &&
              right_present),
      screen_resolution(options.screen_setup_given != 0 && left_present && right_present),
      uncorrected(options.uncorrected_raw != 0),
      gaze_3d(options.gaze_3d != 0),
      markers(state.block.head_data == HeadData::markers),
      input(options.output_input != 0),
      buttons(options.output_buttons != 0),
      cr_flags(options.output_flags != 0 && state.format_revision > 0 &&
               (sample.flags & SMP_STATUS) != 0),
      target(options.output_target != 0 && state.block.head_data == HeadData::target &&
             has_target(sample)),
      target_flags(target && options.output_flags != 0),
      second_eye(target_flags && binocular_block && sample.htype == GZD_HTYPE_TARGET_TWO_EYES),
      head_pose((sample.flags & SMP_EXTENDED) != 0),
      head_tracking(head_pose && options.no_head_tracking == 0),
      extended(head_pose && options.no_extended_data == 0),
      head_resolution(extended && options.head_resolution != 0),
      ellipse(extended && options.pupil_ellipse != 0) {}

}  // namespace gzdconv
