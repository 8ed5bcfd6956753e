// A sample record is a time, the fixed fields that its tag word announces, and up to two chains of
// blocks. Nearly always the whole fixed part lies in the stream's window: one check, and it is
// decoded where it lies (sample_layout). Near the end of the stream it is read value by value, so
// that a cut record is reported at the very value that is missing. So are blocks: unchecked when
// they are whole in the window (BytesAt), value by value otherwise (CheckedReads).
#include "record/sample_decoder.h"

#include <algorithm>

#include "record/Sample.h"

namespace gzd {

namespace {

constexpr UINT32 head_markers_not_recorded = 0xFFFF8000u;

constexpr float angle_units_per_degree = 182.0f;
constexpr float position_units_per_mm = 10.0f;

// Recognised extended blocks, by length and kind.
constexpr int head_target_length = 24, HEAD_TARGET_KIND = 1;
constexpr int head_pose_length = 92, HEAD_POSE_KIND = 2;
constexpr int ellipse_length = 56, LONG_ELLIPSE_LENGTH = 72, ELLIPSE_KIND = 3;

class BytesAt {
 public:
  explicit BytesAt(const byte* start) : at_(start) {}
  INT16 word() {
    const INT16 value = load_be16s(at_);
    at_ += 2;
    return value;
  }
  UINT32 integer() {
    const UINT32 value = load_be32(at_);
    at_ += 4;
    return value;
  }
  float real() { return missing_normalised(std::bit_cast<float>(integer())); }
  [[nodiscard]] const byte* position() const { return at_; }

 private:
  const byte* at_;
};

class CheckedReads {
 public:
  explicit CheckedReads(InputStream& in) : stream_(in) {}
  INT16 word() { return stream_.getWord(); }
  UINT32 integer() { return static_cast<UINT32>(stream_.getInt()); }
  float real() { return stream_.getFloat(); }

 private:
  InputStream& stream_;
};

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

// ---- chains of blocks ---------------------------------------------------------------------------

void skip_bytes(InputStream& in, std::size_t count) {
  if (in.peek(count) != nullptr) {
    in.take(count);
  } else {
    for (; count > 0; --count) in.getByte();
  }
}

enum class Block { HeadTarget, HeadPose, Ellipse, LongEllipse, Unknown };

Block recognise(int length, int kind) {
  if (length == head_target_length && kind == HEAD_TARGET_KIND) return Block::HeadTarget;
  if (length == head_pose_length && kind == HEAD_POSE_KIND) return Block::HeadPose;
  if (length == ellipse_length && kind == ELLIPSE_KIND) return Block::Ellipse;
  if (length == LONG_ELLIPSE_LENGTH && kind == ELLIPSE_KIND) return Block::LongEllipse;
  return Block::Unknown;
}

// Bytes behind the kind byte of a block that is not recognised. One that has the length of a known
// block is a byte shorter than its length says.
std::size_t bytes_to_skip(int length) {
  const bool lengthIsKnown = length == head_target_length || length == ellipse_length ||
                             length == LONG_ELLIPSE_LENGTH || length == head_pose_length;
  return static_cast<std::size_t>(lengthIsKnown ? length - 1 : length);
}

void read_head_in_space(FSAMPLE& s, auto value) {
  s.unused_headInSpaceX[0] = value();
  s.unused_headInSpaceX[1] = value();
  s.headInSpaceX = value();
  s.unused_headInSpaceY[0] = value();
  s.unused_headInSpaceY[1] = value();
  s.headInSpaceY = value();
  for (float& x : s.eyeInHeadX) x = value();
  for (float& y : s.eyeInHeadY) y = value();
}

template <class Source>
void read_head_target(Source& in, const DecodingParameters& parameters, FSAMPLE& s) {
  const Scaled as_gaze = scaled_by(parameters.gaze_prescale);
  read_head_in_space(s, [&] { return as_gaze(in.word()); });
  for (int i = 0; i < 3; ++i) {
    s.headRotation[i] = static_cast<float>(s.hdata[i]) / angle_units_per_degree;
    s.headPosition[i] = static_cast<float>(s.hdata[3 + i]) / position_units_per_mm;
  }
  s.headMarkerFlags = static_cast<UINT32>(((s.hdata[7] & 0x7F) << 16) + s.hdata[6]);
}

template <class Source>
void read_head_pose(Source& in, FSAMPLE& s) {
  read_head_in_space(s, [&] { return in.real(); });
  s.headMarkerFlags = in.integer();
  for (float& angle : s.headRotation) angle = in.real();
  for (float& position : s.headPosition) position = in.real();
  for (int eye = 0; eye < 2; ++eye) {
    s.gx[eye] = in.real();
    s.gy[eye] = in.real();
  }
}

// Six candidates for the eye-referenced pair, three for x and three for y. The last that was
// recorded counts; a stored NOT_RECORDED reads as MISSING_DATA, so that is always the third.
template <class Source>
void read_candidates(Source& in, FSAMPLE& s) {
  float x[3];
  float y[3];
  for (float& value : x) value = in.real();
  for (float& value : y) value = in.real();
  s.ergx = s.ergy = NOT_RECORDED;
  for (const int i : {2, 0, 1}) {
    if (x[i] == NOT_RECORDED || y[i] == NOT_RECORDED) continue;
    s.ergx = x[i];
    s.ergy = y[i];
    return;
  }
}

template <class Source>
void read_ellipse(Source& in, Block kind, FSAMPLE& s) {
  s.hrgx = in.real();
  s.hrgy = in.real();
  if (kind == Block::LongEllipse) {
    read_candidates(in, s);
  } else {
    s.ergx = in.real();
    s.ergy = in.real();
  }
  for (int eye = 0; eye < 2; ++eye) {
    for (float* field : {s.ex, s.ey, s.emajor, s.eminor, s.eangle}) field[eye] = in.real();
  }
}

template <class Source>
void read_block(Source& in, Block kind, const DecodingParameters& parameters, FSAMPLE& s) {
  if (kind == Block::HeadTarget) {
    read_head_target(in, parameters, s);
  } else if (kind == Block::HeadPose) {
    read_head_pose(in, s);
  } else {
    read_ellipse(in, kind, s);
  }
}

// Blocks up to a length of 0; each is a length, a kind and its bytes.
void read_extended_blocks(InputStream& in, const DecodingParameters& parameters, FSAMPLE& s) {
  while (const int length = in.getByte()) {
    const Block kind = recognise(length, in.getByte());
    if (kind == Block::Unknown) {
      skip_bytes(in, bytes_to_skip(length));
    } else if (const byte* start = in.peek(static_cast<std::size_t>(length))) {
      BytesAt source(start);
      read_block(source, kind, parameters, s);
      in.take(static_cast<std::size_t>(length));
    } else {
      CheckedReads source(in);
      read_block(source, kind, parameters, s);
    }
  }
}

// The same chain with nothing decoded; a value cut off is reported as when decoding.
void skip_extended_blocks(InputStream& in, const DecodingParameters& parameters) {
  while (const int length = in.getByte()) {
    const Block kind = recognise(length, in.getByte());
    if (kind == Block::Unknown) {
      skip_bytes(in, bytes_to_skip(length));
    } else if (in.peek(static_cast<std::size_t>(length)) != nullptr) {
      in.take(static_cast<std::size_t>(length));
    } else {
      FSAMPLE unused{};
      CheckedReads source(in);
      read_block(source, kind, parameters, unused);
    }
  }
}

void skip_blocks(InputStream& in) {
  while (const byte length = in.getByte()) {
    in.getByte();
    skip_bytes(in, length);
  }
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

void decode_sample(InputStream& in, StreamState& state, UINT16 tag, UINT32 expectedTime,
                   FSAMPLE& sample) {
  state.sam_data |= tag;
  preset_sample(tag, sample);
  decode_into_preset_sample(in, state, layout_of(tag, state), expectedTime, sample);
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
