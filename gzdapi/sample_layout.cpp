#include "sample_layout.h"

namespace {

constexpr int FIRST_SCALED_PUPIL = 4;  // the tracker generation from which pupil sizes are scaled

}  // namespace

SampleLayout layout_of(UINT16 tag, const StreamState& state) {
  const auto has = [tag](unsigned bits) { return (tag & bits) != 0; };
  SampleLayout layout;
  layout.tag = tag;
  layout.hasBlocks = has(SMP_EXTENDED | SMP_SKIP_BLOCKS);
  layout.hasScaledSizes = state.ovilo_revision >= FIRST_SCALED_PUPIL;
  layout.eyes = static_cast<byte>((has(SMP_LEFT) ? 1 : 0) + (has(SMP_RIGHT) ? 1 : 0));
  layout.firstEye = has(SMP_LEFT) ? GZD_LEFT_EYE : GZD_RIGHT_EYE;
  layout.timeLength = has(SMP_TIME_ABSOLUTE) ? 4 : 1;
  layout.asGaze = scaled_by(state.parameters.gaze_prescale);
  layout.asSize = scaled_by(state.parameters.pupil_prescale);

  int offset = layout.timeLength;
  const auto place = [&](unsigned bit, int length) {
    if (!has(bit)) return byte{0};
    offset += length;
    return static_cast<byte>(offset - length);
  };
  layout.pupilPositions = place(SMP_PUPIL_POS, 4 * layout.eyes);
  layout.href = place(SMP_HREF, 4 * layout.eyes);
  layout.gaze = place(SMP_GAZE, 4 * layout.eyes);
  layout.resolution = place(SMP_RESOLUTION, 4);
  layout.pupilSizes = place(SMP_PUPIL_SIZE, 2 * layout.eyes);
  layout.status = place(SMP_STATUS, 2);
  layout.input = place(SMP_INPUT, 2);
  layout.buttons = place(SMP_BUTTONS, 2);
  layout.headData = place(SMP_HEAD_DATA, 1);
  layout.end = static_cast<byte>(offset);
  return layout;
}
