// Blocks are decoded unchecked when they are whole in the window (BytesAt), value by value
// otherwise (CheckedReads).
#include "record/sample_blocks.h"

#include <bit>

#include "record/sample_values.h"

namespace gzd {

namespace {

constexpr float angle_units_per_degree = 182.0f;
constexpr float position_units_per_mm = 10.0f;

// Recognised extended blocks, by length and kind.
constexpr int head_target_length = 24, head_target_kind = 1;
constexpr int head_pose_length = 92, head_pose_kind = 2;
constexpr int ellipse_length = 56, long_ellipse_length = 72, ellipse_kind = 3;

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

void skip_bytes(InputStream& in, std::size_t count) {
  if (in.peek(count) != nullptr) {
    in.take(count);
  } else {
    for (; count > 0; --count) in.getByte();
  }
}

enum class Block { HeadTarget, HeadPose, Ellipse, LongEllipse, Unknown };

Block recognise(int length, int kind) {
  if (length == head_target_length && kind == head_target_kind) return Block::HeadTarget;
  if (length == head_pose_length && kind == head_pose_kind) return Block::HeadPose;
  if (length == ellipse_length && kind == ellipse_kind) return Block::Ellipse;
  if (length == long_ellipse_length && kind == ellipse_kind) return Block::LongEllipse;
  return Block::Unknown;
}

// Bytes behind the kind byte of a block that is not recognised. One that has the length of a known
// block is a byte shorter than its length says.
std::size_t bytes_to_skip(int length) {
  const bool lengthIsKnown = length == head_target_length || length == ellipse_length ||
                             length == long_ellipse_length || length == head_pose_length;
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

}  // namespace

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

// ---- chains like the one before -----------------------------------------------------------------

BlockChain BlockChain::at(const byte* start, const byte* end) {
  BlockChain chain;
  const byte* next = start;
  while (end - next >= 2 && *next != 0 && chain.count_ < most_blocks) {
    const UINT16 head = load_be16(next);
    if (recognise(head >> 8, head & 0xFF) == Block::Unknown) return {};
    chain.heads_[chain.count_++] = head;
    next += sizeof head + (head >> 8);
  }
  if (next >= end || *next != 0) return {};
  chain.length_ = static_cast<std::size_t>(next + 1 - start);
  return chain;
}

void BlockChain::decode(const byte* at, const DecodingParameters& parameters, FSAMPLE& s) const {
  for (std::size_t i = 0; i < count_; ++i) {
    const int length = heads_[i] >> 8;
    BytesAt source(at + sizeof heads_[i]);
    read_block(source, recognise(length, heads_[i] & 0xFF), parameters, s);
    at += sizeof heads_[i] + static_cast<std::size_t>(length);
  }
}

}  // namespace gzd
