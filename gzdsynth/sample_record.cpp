// Lays the fields of a sample down in the order of its tag.
#include "sample_record.h"

#include <algorithm>
#include <utility>

namespace gzdsynth {

namespace {

template <std::size_t N>
void put_floats(Bytes& out, const std::array<float, N>& values) {
  for (const float value : values) put_float(out, value);
}

void put_positions(Bytes& out, unsigned flags, const std::array<int, 2>& x,
                   const std::array<int, 2>& y) {
  if (flags & SMP_LEFT) {
    put_word(out, x[0]);
    put_word(out, y[0]);
  }
  if (flags & SMP_RIGHT) {
    put_word(out, x[1]);
    put_word(out, y[1]);
  }
}

void put_time(Bytes& out, const SampleRecord& sample) {
  if (sample.flags & SMP_TIME_ABSOLUTE) {
    put_int(out, sample.time);
  } else {
    put_byte(out, sample.step);
  }
}

void put_pupils(Bytes& out, const SampleRecord& sample) {
  if (sample.flags & SMP_LEFT) put_word(out, sample.pa[0]);
  if (sample.flags & SMP_RIGHT) put_word(out, sample.pa[1]);
}

void put_head_data(Bytes& out, const SampleRecord& sample) {
  put_byte(out, sample.headType);
  const std::size_t count = std::min<std::size_t>(sample.headType & 15U, sample.headData.size());
  for (std::size_t i = 0; i < count; ++i) put_word(out, sample.headData[i]);
}

void put_blocks(Bytes& out, const std::vector<SampleBlock>& blocks) {
  for (const SampleBlock& block : blocks) {
    put_byte(out, block.length);
    if (block.length == 0) return;
    put_byte(out, block.kind);
    put_bytes(out, block.payload);
  }
  put_byte(out, 0);
}

SampleBlock sized_block(unsigned kind, Bytes payload) {
  const auto length = static_cast<unsigned>(payload.size());
  return {length, kind, std::move(payload)};
}

void put_ellipses(Bytes& out, const Ellipse& ellipse) {
  for (const Ellipse::Eye& eye : ellipse.eyes)
    put_floats<5>(out, {eye.x, eye.y, eye.major, eye.minor, eye.angle});
}

}  // namespace

SampleBlock unknown_block(unsigned kind, Bytes payload) {
  return sized_block(kind, std::move(payload));
}

SampleBlock head_target_block(const std::array<int, 12>& words) {
  Bytes payload;
  for (const int word : words) put_word(payload, word);
  return sized_block(1, std::move(payload));
}

SampleBlock head_pose_block(const HeadPose& pose) {
  Bytes payload;
  payload.reserve(92);
  put_floats(payload, pose.headInSpaceX);
  put_floats(payload, pose.headInSpaceY);
  put_floats(payload, pose.eyeInHeadX);
  put_floats(payload, pose.eyeInHeadY);
  put_int(payload, pose.markerFlags);
  put_floats(payload, pose.rotation);
  put_floats(payload, pose.position);
  put_floats(payload, pose.gaze);
  return sized_block(2, std::move(payload));
}

SampleBlock ellipse_block56(const Ellipse& ellipse) {
  Bytes payload;
  payload.reserve(56);
  put_floats<4>(payload,
                {ellipse.headGazeX, ellipse.headGazeY, ellipse.eyeGazeX[2], ellipse.eyeGazeY[2]});
  put_ellipses(payload, ellipse);
  return sized_block(3, std::move(payload));
}

SampleBlock ellipse_block72(const Ellipse& ellipse) {
  Bytes payload;
  payload.reserve(72);
  put_floats<2>(payload, {ellipse.headGazeX, ellipse.headGazeY});
  put_floats(payload, ellipse.eyeGazeX);
  put_floats(payload, ellipse.eyeGazeY);
  put_ellipses(payload, ellipse);
  return sized_block(3, std::move(payload));
}

void put_sample(Bytes& out, const SampleRecord& sample) {
  const unsigned flags = sample.flags;
  put_word(out, static_cast<int>(flags | SMP_IS_SAMPLE));
  put_time(out, sample);
  if (flags & SMP_PUPIL_POS) put_positions(out, flags, sample.px, sample.py);
  if (flags & SMP_HREF) put_positions(out, flags, sample.hx, sample.hy);
  if (flags & SMP_GAZE) put_positions(out, flags, sample.gx, sample.gy);
  if (flags & SMP_RESOLUTION) {
    put_word(out, sample.rx);
    put_word(out, sample.ry);
  }
  if (flags & SMP_PUPIL_SIZE) put_pupils(out, sample);
  if (flags & SMP_STATUS) put_word(out, sample.status);
  if (flags & SMP_INPUT) put_word(out, sample.input);
  if (flags & SMP_BUTTONS) put_word(out, sample.buttons);
  if (flags & SMP_HEAD_DATA) put_head_data(out, sample);
  if (flags & SMP_EXTENDED) put_blocks(out, sample.blocks);
  if (flags & SMP_SKIP_BLOCKS) put_blocks(out, sample.skipped);
}

}  // namespace gzdsynth
