// Where the fields of sample records with one tag lie, and records decoded by it. A record whose
// fixed part is known to be whole in memory needs no more.
#ifndef GZDAPI_SAMPLE_LAYOUT_H
#define GZDAPI_SAMPLE_LAYOUT_H

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "base/big_endian.h"
#include "gzd_data.h"
#include "record/sample_values.h"
#include "record/stream_state.h"

namespace gzd {

// The longest fixed part: time, positions of three kinds for two eyes, resolution, sizes, three
// words, head data.
constexpr std::size_t longest_fixed_part = 4 + 3 * 8 + 4 + 4 + 3 * 2 + 1 + 8 * 2;
constexpr int max_head_words = 8;

// The part of a tag that a layout depends on. At 2000 Hz every other sample has the bit left out.
constexpr UINT16 layout_tag(UINT16 tag) {
  return tag & static_cast<UINT16>(~SMP_HALF_MS);
}

// Offsets are from the record's body; 0 stands for a field that the record does not hold.
struct SampleLayout {
  UINT16 tag = 0;               // as layout_tag() gives it
  bool hasBlocks = false;       // chains of blocks follow
  bool hasScaledSizes = false;  // pupil sizes are scaled, and -32768 is missing
  byte eyes = 0;                // how many
  byte firstEye = 0;            // GZD_LEFT_EYE or GZD_RIGHT_EYE
  byte timeLength = 0;
  byte pupilPositions = 0;
  byte href = 0;
  byte gaze = 0;
  byte resolution = 0;
  byte pupilSizes = 0;
  byte status = 0;
  byte input = 0;
  byte buttons = 0;
  byte headData = 0;
  byte end = 0;  // of the fixed part, head data left out
  Scaled asGaze;
  Scaled asSize;

  // Gaze of both eyes, resolution and pupil sizes: eight words from `gaze` on.
  bool hasUsualValues = false;
  bool isUsual = false;            // these, behind them no more than single words, no blocks
  bool hasOtherPositions = false;  // than gaze
  FourScaled asUsualGaze = {};
  FourScaled asResolutionAndSizes = {};

  // Whether records with this tag have the layout.
  [[nodiscard]] bool suits(UINT16 recordTag) const { return layout_tag(recordTag) == tag; }
};

// The layout under the parameters in force.
SampleLayout layout_of(UINT16 tag, const StreamState& state);

// What the scan needs of a sample.
struct SampleGlance {
  UINT32 time = 0;
  UINT16 flags = 0;
  UINT16 input = NOT_RECORDED_WORD;
  INT16 htype = static_cast<INT16>(NOT_RECORDED_WORD);
  bool hasNegativePupil = false;  // a recorded pupil size of a present eye lies below 0
};

inline int head_words(int htype) {
  return std::min(htype & 15, max_head_words);
}

inline std::size_t length_with_head_data(const byte* body, const SampleLayout& layout) {
  if (layout.headData == 0) return layout.end;
  return layout.end + 2 * static_cast<std::size_t>(head_words(body[layout.headData]));
}

// The time of a record that follows one at `previousTime`.
inline UINT32 recorded_time(const byte* body, UINT32 previousTime, const SampleLayout& layout) {
  return layout.timeLength == 1 ? previousTime + *body : load_be32(body);
}

// Takes from the record at `body`, without its blocks, what the scan needs; its flags are the
// layout's tag. Returns the length of the fixed part.
inline std::size_t glance_at_fixed_part(const byte* body, UINT32 previousTime,
                                        const SampleLayout& layout, SampleGlance& glance) {
  glance.time = recorded_time(body, previousTime, layout);
  glance.flags = layout.tag;
  glance.hasNegativePupil = false;
  for (int eye = 0; layout.pupilSizes != 0 && eye < layout.eyes; ++eye) {
    const INT16 size = load_be16s(body + layout.pupilSizes + 2 * eye);
    glance.hasNegativePupil |= size < 0 && !(layout.hasScaledSizes && size == stored_missing);
  }
  glance.input = layout.input != 0 ? load_be16(body + layout.input) : UINT16{NOT_RECORDED_WORD};
  glance.htype =
      layout.headData != 0 ? body[layout.headData] : static_cast<INT16>(NOT_RECORDED_WORD);
  return length_with_head_data(body, layout);
}

namespace sample_fields {

// Four words, the last one first.
inline Ints4 load_reversed(const byte* at) {
  const Longs2 swapped = {static_cast<INT64>(load_be64(at)), 0};
  // Each goes to the upper half of a lane.
  const Shorts8 words = reinterpret_cast<Shorts8>(swapped);
  const Shorts8 doubled = __builtin_shufflevector(words, words, 0, 8, 1, 9, 2, 10, 3, 11);
  return reinterpret_cast<Ints4>(doubled) >> 16;
}

inline Ints4 load_four(const byte* at) {
  const Ints4 values = load_reversed(at);
  return __builtin_shufflevector(values, values, 3, 2, 1, 0);
}

// Four words, of which the middle two change places.
inline Ints4 load_crossed(const byte* at) {
  const Ints4 values = load_reversed(at);
  return __builtin_shufflevector(values, values, 3, 1, 2, 0);
}

// The first two of `values`, or the last two.
inline void store_pair(float (&pair)[2], const Floats4& values, int first) {
  std::memcpy(pair, reinterpret_cast<const float*>(&values) + first, sizeof pair);
}

// Positions of both eyes: x at `offset` in the sample, and y behind it. One store, as who reads
// them all at once waits for two.
inline void store_positions(FSAMPLE& sample, std::size_t offset, const Floats4& values) {
  std::memcpy(reinterpret_cast<byte*>(&sample) + offset, &values, sizeof values);
}

inline void decode_single_words(const byte* body, const SampleLayout& layout, FSAMPLE& sample) {
  if (layout.status != 0) sample.errors = load_be16(body + layout.status);
  if (layout.input != 0) sample.input = load_be16(body + layout.input);
  if (layout.buttons != 0) sample.buttons = load_be16(body + layout.buttons);
}

inline void decode_usual_values(const byte* at, const SampleLayout& layout, FSAMPLE& sample) {
  const Floats4 gaze = layout.asUsualGaze(load_crossed(at));
  const Floats4 others = layout.asResolutionAndSizes(load_four(at + 8));
  store_positions(sample, offsetof(FSAMPLE, gx), gaze);
  sample.rx = others[0];
  sample.ry = others[1];
  store_pair(sample.pa, others, 2);
}

}  // namespace sample_fields

// decode_fixed_part of a record with the usual layout.
inline void decode_usual_part(const byte* body, const SampleLayout& layout, FSAMPLE& sample) {
  using namespace sample_fields;
  if (layout.hasOtherPositions) {
    const auto decode = [&](byte at, std::size_t offset) {
      if (at != 0) store_positions(sample, offset, Plain()(load_crossed(body + at)));
    };
    decode(layout.pupilPositions, offsetof(FSAMPLE, px));
    decode(layout.href, offsetof(FSAMPLE, hx));
  }
  decode_usual_values(body + layout.gaze, layout, sample);
  decode_single_words(body, layout, sample);
}

// Decodes the fixed part at `body`, but for the time, into a sample preset for the layout's tag.
void decode_fixed_part(const byte* body, const SampleLayout& layout, FSAMPLE& sample);
// The same, the quicker for records of the usual layout.
inline void decode_fixed_part_quickly(const byte* body, const SampleLayout& layout,
                                      FSAMPLE& sample) {
  if (layout.isUsual)
    decode_usual_part(body, layout, sample);
  else
    decode_fixed_part(body, layout, sample);
}

}  // namespace gzd

#endif
