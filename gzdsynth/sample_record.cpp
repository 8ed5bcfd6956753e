#include "sample_record.h"

#include <algorithm>
#include <utility>

namespace gzdsynth {

namespace {

template <std::size_t N>
void putFloats(Bytes& out, const std::array<float, N>& values) {
  for (const float value : values) putFloat(out, value);
}

void putPositions(Bytes& out, unsigned flags, const std::array<int, 2>& x,
                  const std::array<int, 2>& y) {
  if (flags & SMP_LEFT) {
    putWord(out, x[0]);
    putWord(out, y[0]);
  }
  if (flags & SMP_RIGHT) {
    putWord(out, x[1]);
    putWord(out, y[1]);
  }
}

void putTime(Bytes& out, const SampleRecord& sample) {
  if (sample.flags & SMP_TIME_ABSOLUTE) {
    putInt(out, sample.time);
  } else {
    putByte(out, sample.step);
  }
}

void putPupils(Bytes& out, const SampleRecord& sample) {
  if (sample.flags & SMP_LEFT) putWord(out, sample.pa[0]);
  if (sample.flags & SMP_RIGHT) putWord(out, sample.pa[1]);
}

void putHeadData(Bytes& out, const SampleRecord& sample) {
  putByte(out, sample.headType);
  const std::size_t count = std::min<std::size_t>(sample.headType & 15U, sample.headData.size());
  for (std::size_t i = 0; i < count; ++i) putWord(out, sample.headData[i]);
}

void putBlocks(Bytes& out, const std::vector<SampleBlock>& blocks) {
  for (const SampleBlock& block : blocks) {
    putByte(out, block.length);
    if (block.length == 0) return;
    putByte(out, block.kind);
    putBytes(out, block.payload);
  }
  putByte(out, 0);
}

SampleBlock sizedBlock(unsigned kind, Bytes payload) {
  const auto length = static_cast<unsigned>(payload.size());
  return {length, kind, std::move(payload)};
}

void putEllipses(Bytes& out, const Ellipse& ellipse) {
  for (const Ellipse::Eye& eye : ellipse.eyes)
    putFloats<5>(out, {eye.x, eye.y, eye.major, eye.minor, eye.angle});
}

}  // namespace

SampleBlock unknownBlock(unsigned kind, Bytes payload) {
  return sizedBlock(kind, std::move(payload));
}

SampleBlock headTargetBlock(const std::array<int, 12>& words) {
  Bytes payload;
  for (const int word : words) putWord(payload, word);
  return sizedBlock(1, std::move(payload));
}

SampleBlock headPoseBlock(const HeadPose& pose) {
  Bytes payload;
  payload.reserve(92);
  putFloats(payload, pose.headInSpaceX);
  putFloats(payload, pose.headInSpaceY);
  putFloats(payload, pose.eyeInHeadX);
  putFloats(payload, pose.eyeInHeadY);
  putInt(payload, pose.markerFlags);
  putFloats(payload, pose.rotation);
  putFloats(payload, pose.position);
  putFloats(payload, pose.gaze);
  return sizedBlock(2, std::move(payload));
}

SampleBlock ellipseBlock56(const Ellipse& ellipse) {
  Bytes payload;
  payload.reserve(56);
  putFloats<4>(payload,
               {ellipse.headGazeX, ellipse.headGazeY, ellipse.eyeGazeX[2], ellipse.eyeGazeY[2]});
  putEllipses(payload, ellipse);
  return sizedBlock(3, std::move(payload));
}

SampleBlock ellipseBlock72(const Ellipse& ellipse) {
  Bytes payload;
  payload.reserve(72);
  putFloats<2>(payload, {ellipse.headGazeX, ellipse.headGazeY});
  putFloats(payload, ellipse.eyeGazeX);
  putFloats(payload, ellipse.eyeGazeY);
  putEllipses(payload, ellipse);
  return sizedBlock(3, std::move(payload));
}

void putSample(Bytes& out, const SampleRecord& sample) {
  const unsigned flags = sample.flags;
  putWord(out, static_cast<int>(flags | SMP_IS_SAMPLE));
  putTime(out, sample);
  if (flags & SMP_PUPIL_POS) putPositions(out, flags, sample.px, sample.py);
  if (flags & SMP_HREF) putPositions(out, flags, sample.hx, sample.hy);
  if (flags & SMP_GAZE) putPositions(out, flags, sample.gx, sample.gy);
  if (flags & SMP_RESOLUTION) {
    putWord(out, sample.rx);
    putWord(out, sample.ry);
  }
  if (flags & SMP_PUPIL_SIZE) putPupils(out, sample);
  if (flags & SMP_STATUS) putWord(out, sample.status);
  if (flags & SMP_INPUT) putWord(out, sample.input);
  if (flags & SMP_BUTTONS) putWord(out, sample.buttons);
  if (flags & SMP_HEAD_DATA) putHeadData(out, sample);
  if (flags & SMP_EXTENDED) putBlocks(out, sample.blocks);
  if (flags & SMP_SKIP_BLOCKS) putBlocks(out, sample.skipped);
}

}  // namespace gzdsynth
