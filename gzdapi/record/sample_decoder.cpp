// A sample record is a time, the fixed fields that its tag word announces, and up to two chains of
// blocks. Nearly always the whole fixed part lies in the stream's window: one check, and it is
// decoded where it lies (sample_layout). Near the end of the stream it is read value by value, so
// that a cut record is reported at the very value that is missing. Blocks: sample_blocks.
#include "record/sample_decoder.h"

#include <algorithm>

#include "record/Sample.h"

namespace gzd {

namespace {

constexpr UINT32 head_markers_not_recorded = 0xFFFF8000u;

inline bool has(UINT16 tag, unsigned bits) {
  return (tag & bits) != 0;
}

// ---- the fixed part, value by value -------------------------------------------------------------

UINT32 read_time(InputStream& in, UINT32 previousTime, const SampleLayout& layout) {
  if (layout.timeLength == 1) return previousTime + in.getByte();
  return static_cast<UINT32>(in.getInt());
}

template <class Value>
void read_positions(InputStream& in, const SampleLayout& layout, float* x, float* y, Value value) {
  for (int eye = layout.firstEye; eye < layout.firstEye + layout.eyes; ++eye) {
    x[eye] = value(in.getWord());
    y[eye] = value(in.getWord());
  }
}

template <class Value>
void read_sizes(InputStream& in, const SampleLayout& layout, float* pa, Value value) {
  for (int eye = layout.firstEye; eye < layout.firstEye + layout.eyes; ++eye)
    pa[eye] = value(in.getWord());
}

void read_head_data(InputStream& in, FSAMPLE& sample) {
  sample.htype = in.getByte();
  std::fill(std::begin(sample.hdata), std::end(sample.hdata), INT16{0});
  for (int i = 0; i < head_words(sample.htype); ++i) sample.hdata[i] = in.getWord();
}

// What decode_fixed_part does, from a stream that may end at any value.
void read_fixed_part(InputStream& in, const SampleLayout& layout, FSAMPLE& sample) {
  const auto word = [&in] { return static_cast<UINT16>(in.getWord()); };
  if (layout.pupilPositions != 0) read_positions(in, layout, sample.px, sample.py, Plain());
  if (layout.href != 0) read_positions(in, layout, sample.hx, sample.hy, Plain());
  if (layout.gaze != 0) read_positions(in, layout, sample.gx, sample.gy, layout.asGaze);
  sample.rx = layout.resolution != 0 ? layout.asGaze(in.getWord()) : MISSING_DATA;
  sample.ry = layout.resolution != 0 ? layout.asGaze(in.getWord()) : MISSING_DATA;
  if (layout.pupilSizes != 0 && layout.hasScaledSizes)
    read_sizes(in, layout, sample.pa, layout.asSize);
  else if (layout.pupilSizes != 0)
    read_sizes(in, layout, sample.pa, Plain());
  if (layout.status != 0) sample.errors = word();
  if (layout.input != 0) sample.input = word();
  if (layout.buttons != 0) sample.buttons = word();
  if (layout.headData != 0) read_head_data(in, sample);
}

// ---- the scan's view ----------------------------------------------------------------------------

void glance_near_the_end(InputStream& in, StreamState& state, const SampleLayout& layout,
                         SampleGlance& glance) {
  FSAMPLE sample{};
  preset_sample(layout.tag, sample);
  glance.time = state.curr_time = read_time(in, state.curr_time, layout);
  read_fixed_part(in, layout, sample);
  glance.input = sample.input;
  glance.htype = sample.htype;
  for (int eye = 0; layout.pupilSizes != 0 && eye < 2; ++eye) {
    if (has(layout.tag, eye_flag(eye))) glance.hasNegativePupil |= sample.pa[eye] < 0.0f;
  }
}

}  // namespace

void preset_sample(UINT16 tag, FSAMPLE& s) {
  const float pupilSizes[2] = {s.pa[0], s.pa[1]};
  s = FSAMPLE{};
  s.pa[0] = pupilSizes[0];
  s.pa[1] = pupilSizes[1];
  if (has(tag, SMP_PUPIL_SIZE)) {
    if (!has(tag, SMP_LEFT)) s.pa[0] = NOT_RECORDED;
    if (!has(tag, SMP_RIGHT)) s.pa[1] = NOT_RECORDED;
  }
  for (float* field :
       {s.px, s.py, s.hx, s.hy, s.gx, s.gy, s.gxvel, s.gyvel, s.hxvel, s.hyvel, s.rxvel, s.ryvel,
        s.fgxvel, s.fgyvel, s.fhxvel, s.fhyvel, s.frxvel, s.fryvel}) {
    field[0] = field[1] = NOT_RECORDED;
  }
  s.rx = s.ry = MISSING_DATA;
  s.flags = tag;
  s.errors = s.input = NOT_RECORDED_WORD;
  s.htype = static_cast<INT16>(NOT_RECORDED_WORD);
  s.headMarkerFlags = head_markers_not_recorded;
  for (float* field : {s.eyeInHeadX, s.eyeInHeadY, s.headRotation, s.headPosition}) {
    std::fill(field, field + 3, MISSING_DATA);
  }
  for (float* field :
       {s.unused_headInSpaceX, s.unused_headInSpaceY, s.ex, s.ey, s.emajor, s.eminor, s.eangle}) {
    field[0] = field[1] = MISSING_DATA;
  }
  for (float* field : {&s.headInSpaceX, &s.headInSpaceY, &s.hrgx, &s.hrgy, &s.ergx, &s.ergy}) {
    *field = MISSING_DATA;
  }
}

void decode_into_preset_sample(InputStream& in, StreamState& state, const SampleLayout& layout,
                               UINT32 expectedTime, FSAMPLE& sample) {
  state.sam_data |= layout.tag;
  const byte* const body = in.peek(longest_fixed_part);
  sample.time = body != nullptr ? recorded_time(body, state.curr_time, layout)
                                : read_time(in, state.curr_time, layout);
  if (expectedTime != 0 && layout.timeLength == 1) sample.time = expectedTime;
  state.curr_time = sample.time;
  if (body != nullptr) {
    decode_fixed_part(body, layout, sample);
    in.take(length_with_head_data(body, layout));
  } else {
    read_fixed_part(in, layout, sample);
  }
  if (has(layout.tag, SMP_EXTENDED)) read_extended_blocks(in, state.parameters, sample);
  if (has(layout.tag, SMP_SKIP_BLOCKS)) skip_blocks(in);
}

SampleGlance glance_at_sample(InputStream& in, StreamState& state, UINT16 tag,
                              SampleLayout& layout) {
  if (!layout.suits(tag)) layout = layout_of(tag, state);
  state.sam_data |= tag;
  SampleGlance glance;
  if (const byte* const body = in.peek(longest_fixed_part)) {
    in.take(glance_at_fixed_part(body, state.curr_time, layout, glance));
  } else {
    glance_near_the_end(in, state, layout, glance);
  }
  glance.flags = tag;
  state.curr_time = glance.time;
  if (!layout.hasBlocks) return glance;
  if (has(tag, SMP_EXTENDED)) skip_extended_blocks(in, state.parameters);
  if (has(tag, SMP_SKIP_BLOCKS)) skip_blocks(in);
  return glance;
}

BlockChain blocks_of_record(const InputStream& in, INT64 position, const SampleLayout& layout) {
  const auto length = static_cast<std::size_t>(in.getFilePos() - position);
  const byte* const body = in.inWindow(position, length);
  if (body == nullptr || has(layout.tag, SMP_SKIP_BLOCKS)) return {};
  return BlockChain::at(body + length_with_head_data(body, layout), body + length);
}

void make_dummy_sample(UINT16 tag, const FSAMPLE* model, FSAMPLE& sample) {
  preset_sample(tag, sample);
  sample.errors = 0;
  std::fill(sample.hdata, sample.hdata + 3, stored_missing);
  if (model == nullptr) return;
  sample.htype = model->htype;
  for (int eye = 0; eye < 2; ++eye) {
    if (!has(tag, eye == 0 ? SMP_LEFT : SMP_RIGHT)) continue;
    if (has(tag, SMP_PUPIL_POS)) sample.px[eye] = sample.py[eye] = MISSING_DATA;
    if (has(tag, SMP_HREF)) sample.hx[eye] = sample.hy[eye] = MISSING_DATA;
    if (has(tag, SMP_GAZE)) sample.gx[eye] = sample.gy[eye] = MISSING_DATA;
    if (has(tag, SMP_PUPIL_SIZE)) {
      sample.pa[eye] = model->pa[eye] < 0.0f ? NOT_RECORDED : MISSING_DATA;
    }
  }
}

}  // namespace gzd
