// Works the places of fields out once a tag; then decodes by them, without a question a field.
#include "record/sample_layout.h"

namespace gzd {

namespace {

using namespace sample_fields;

// A pair of coordinates for each present eye.
template <class Value>
void decode_positions(const byte* at, const SampleLayout& layout, float (&x)[2], float (&y)[2],
                      Value value) {
  if (layout.eyes == 2) {
    const Floats4 values = value(load_crossed(at));
    store_pair(x, values, 0);
    store_pair(y, values, 2);
  } else if (layout.eyes == 1) {
    x[layout.firstEye] = value(load_be16s(at));
    y[layout.firstEye] = value(load_be16s(at + 2));
  }
}

template <class Value>
void decode_sizes(const byte* at, const SampleLayout& layout, float (&pa)[2], Value value) {
  if (layout.eyes == 2) {
    const Floats4 values = value(Ints4{load_be16s(at), load_be16s(at + 2), 0, 0});
    store_pair(pa, values, 0);
  } else if (layout.eyes == 1) {
    pa[layout.firstEye] = value(load_be16s(at));
  }
}

// Positions, resolution and pupil sizes, whichever there are.
void decode_values(const byte* body, const SampleLayout& layout, FSAMPLE& sample) {
  if (layout.pupilPositions != 0)
    decode_positions(body + layout.pupilPositions, layout, sample.px, sample.py, Plain());
  if (layout.href != 0) decode_positions(body + layout.href, layout, sample.hx, sample.hy, Plain());
  if (layout.gaze != 0)
    decode_positions(body + layout.gaze, layout, sample.gx, sample.gy, layout.asGaze);
  const byte* const resolution = body + layout.resolution;
  sample.rx = layout.resolution != 0 ? layout.asGaze(load_be16s(resolution)) : MISSING_DATA;
  sample.ry = layout.resolution != 0 ? layout.asGaze(load_be16s(resolution + 2)) : MISSING_DATA;
  if (layout.pupilSizes == 0) return;
  // Older trackers store plain integers, without a word for missing.
  if (layout.hasScaledSizes)
    decode_sizes(body + layout.pupilSizes, layout, sample.pa, layout.asSize);
  else
    decode_sizes(body + layout.pupilSizes, layout, sample.pa, Plain());
}

// Words after those recorded are 0. All eight lie in the longest fixed part.
void decode_head_data(const byte* at, FSAMPLE& sample) {
  sample.htype = *at;
  UShorts8 words;
  std::memcpy(&words, at + 1, sizeof words);
  words = words << 8 | words >> 8;
  const UShorts8 places = {0, 1, 2, 3, 4, 5, 6, 7};
  words &= places < static_cast<UINT16>(head_words(*at));
  std::memcpy(sample.hdata, &words, sizeof sample.hdata);
}

}  // namespace

void decode_fixed_part(const byte* body, const SampleLayout& layout, FSAMPLE& sample) {
  if (layout.hasUsualValues) {
    decode_usual_part(body, layout, sample);
  } else {
    decode_values(body, layout, sample);
    decode_single_words(body, layout, sample);
  }
  if (layout.headData != 0) decode_head_data(body + layout.headData, sample);
}

namespace {

// The fields stand in this order, each only when its bit is set.
void place_fields(SampleLayout& layout, UINT16 tag) {
  int offset = layout.timeLength;
  const auto place = [&](unsigned bit, int length) {
    if ((tag & bit) == 0) return byte{0};
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
}

void prepare_usual_form(SampleLayout& layout) {
  layout.hasUsualValues =
      layout.eyes == 2 && layout.gaze != 0 && layout.resolution != 0 && layout.pupilSizes != 0;
  layout.isUsual = layout.hasUsualValues && layout.headData == 0 && !layout.hasBlocks;
  layout.hasOtherPositions = layout.pupilPositions != 0 || layout.href != 0;
  const float gaze = layout.asGaze.divisor;
  layout.asUsualGaze = FourScaled{Floats4{gaze, gaze, gaze, gaze}};
  const float size = layout.hasScaledSizes ? layout.asSize.divisor : 1.0f;
  const INT32 noSize = layout.hasScaledSizes ? INT32{stored_missing} : never_stored;
  layout.asResolutionAndSizes = FourScaled{Floats4{gaze, gaze, size, size},
                                           Ints4{stored_missing, stored_missing, noSize, noSize}};
}

}  // namespace

SampleLayout layout_of(UINT16 tag, const StreamState& state) {
  const auto has = [tag](unsigned bits) { return (tag & bits) != 0; };
  SampleLayout layout;
  layout.tag = layout_tag(tag);
  layout.hasBlocks = has(SMP_EXTENDED | SMP_SKIP_BLOCKS);
  layout.hasScaledSizes = state.ovilo_revision >= GZD_TRACKER_OSPREY;
  layout.eyes = static_cast<byte>((has(SMP_LEFT) ? 1 : 0) + (has(SMP_RIGHT) ? 1 : 0));
  layout.firstEye = has(SMP_LEFT) ? GZD_LEFT_EYE : GZD_RIGHT_EYE;
  layout.timeLength = has(SMP_TIME_ABSOLUTE) ? 4 : 1;
  layout.asGaze = scaled_by(state.parameters.gaze_prescale);
  layout.asSize = scaled_by(state.parameters.pupil_prescale);
  place_fields(layout, tag);
  prepare_usual_form(layout);
  return layout;
}

}  // namespace gzd
