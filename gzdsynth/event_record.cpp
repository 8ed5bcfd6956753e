#include "event_record.h"

namespace gzdsynth {

namespace {
constexpr unsigned kRightEyeBits = 0x40;
constexpr int kHeadPoseBytes = 147;
// A NUL keeps the payload from being text; the rest names its kind.
constexpr std::array<unsigned, 3> kHeadPoseMark = {0, 146, 2};
}  // namespace

EventRecord::EventRecord(unsigned type, int eye, unsigned parsedBy) {
  putByte(body_, type | (eye == GZD_RIGHT_EYE ? kRightEyeBits : 0U));
  putByte(body_, parsedBy);
}

EventRecord& EventRecord::word(unsigned code, int value) {
  putByte(body_, code);
  putWord(body_, value);
  return *this;
}

EventRecord& EventRecord::pair(unsigned code, int x, int y) {
  word(code, x);
  putWord(body_, y);
  return *this;
}

EventRecord& EventRecord::integer(unsigned code, std::uint32_t value) {
  putByte(body_, code);
  putInt(body_, value);
  return *this;
}

EventRecord& EventRecord::text(std::string_view text) {
  return this->text(text, static_cast<int>(text.size()));
}

EventRecord& EventRecord::text(std::string_view text, int statedLength) {
  word(field::kMessage, statedLength);
  putText(body_, text);
  return *this;
}

EventRecord& EventRecord::headPose(const std::array<float, 36>& values) {
  word(field::kMessage, kHeadPoseBytes);
  for (const unsigned mark : kHeadPoseMark) putByte(body_, mark);
  for (const float value : values) putFloat(body_, value);
  return *this;
}

EventRecord& EventRecord::raw(const Bytes& bytes) {
  putBytes(body_, bytes);
  return *this;
}

EventRecord& EventRecord::unclosed() {
  closed_ = false;
  return *this;
}

Bytes EventRecord::bytes() const {
  Bytes out = body_;
  if (closed_) putByte(out, field::kEnd);
  return out;
}

}  // namespace gzdsynth
