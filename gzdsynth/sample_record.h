// One sample as its fields, and its bytes.
#ifndef GZDSYNTH_SAMPLE_RECORD_H
#define GZDSYNTH_SAMPLE_RECORD_H

#include <array>
#include <cstdint>
#include <vector>

#include "byte_layout.h"
#include "gzd_data.h"

namespace gzdsynth {

// A block after a sample's fixed fields: a length byte, a kind byte and the payload. `length` may
// lie on purpose; a length of 0 ends the chain early.
struct SampleBlock {
  unsigned length = 0;
  unsigned kind = 0;
  Bytes payload;
};

// A block of any kind whose length is that of its payload.
SampleBlock unknown_block(unsigned kind, Bytes payload);

// Head-target values as stored words, in the order of the record: head in space x (left, right,
// combined), y (the same), eye in head x (left, right, cyclopean), y (the same). Kind 1, 24 bytes.
SampleBlock head_target_block(const std::array<int, 12>& words);

// Values of a head-pose block, in the order of the record.
struct HeadPose {
  std::array<float, 3> headInSpaceX{}, headInSpaceY{};  // left, right, combined
  std::array<float, 3> eyeInHeadX{}, eyeInHeadY{};      // left, right, cyclopean
  std::uint32_t markerFlags = 0;
  std::array<float, 3> rotation{}, position{};
  std::array<float, 4> gaze{};  // left x, left y, right x, right y
};

// Kind 2, 92 bytes.
SampleBlock head_pose_block(const HeadPose& pose);

// Values of an ellipse block.
struct Ellipse {
  float headGazeX = 0, headGazeY = 0;
  // The 56-byte form holds the combined pair only; the 72-byte form three x and three y: left,
  // right, combined.
  std::array<float, 3> eyeGazeX{}, eyeGazeY{};
  struct Eye {
    float x = 0, y = 0, major = 0, minor = 0, angle = 0;
  };
  std::array<Eye, 2> eyes{};
};

// Kind 3, of 56 or 72 bytes.
SampleBlock ellipse_block56(const Ellipse& ellipse);
SampleBlock ellipse_block72(const Ellipse& ellipse);

// A sample. `flags` chooses the fields that are written; the lowest bit is always added. Words are
// as stored: gaze and resolution times the gaze prescale (see stored()). Arrays: left, right.
struct SampleRecord {
  unsigned flags = SMP_LEFT | SMP_TIME_ABSOLUTE | SMP_GAZE | SMP_PUPIL_SIZE;
  std::uint32_t time = 0;  // written with SMP_TIME_ABSOLUTE
  unsigned step = 0;       // 0..255, ms after the sample before; written without it
  std::array<int, 2> px{}, py{};
  std::array<int, 2> hx{}, hy{};
  std::array<int, 2> gx{}, gy{};
  int rx = 0, ry = 0;
  std::array<int, 2> pa{};
  int status = 0;
  int input = 0;
  int buttons = 0;
  unsigned headType = 0xB8;               // kind and, in its low four bits, count of head words
  std::array<int, 8> headData{};          // the first (headType & 15), at most 8, are written
  std::vector<SampleBlock> blocks = {};   // with SMP_EXTENDED
  std::vector<SampleBlock> skipped = {};  // with SMP_SKIP_BLOCKS
};

// Appends the sample, tag word first.
void put_sample(Bytes& out, const SampleRecord& sample);

}  // namespace gzdsynth

#endif
