// Appends fields as codes and big-endian words.
#include "event_record.h"

namespace gzdsynth {

namespace {
constexpr unsigned right_eye_bits = 0x40;
constexpr int head_pose_bytes = 147;
// A NUL keeps the payload from being text; the rest names its kind.
constexpr std::array<unsigned, 3> head_pose_mark = {0, 146, 2};
}  // namespace

EventRecord::EventRecord(unsigned type, int eye, unsigned parsedBy) {
  put_byte(body_, type | (eye == GZD_RIGHT_EYE ? right_eye_bits : 0U));
  put_byte(body_, parsedBy);
}

EventRecord& EventRecord::word(unsigned code, int value) {
  put_byte(body_, code);
  put_word(body_, value);
  return *this;
}

EventRecord& EventRecord::pair(unsigned code, int x, int y) {
  word(code, x);
  put_word(body_, y);
  return *this;
}

EventRecord& EventRecord::integer(unsigned code, std::uint32_t value) {
  put_byte(body_, code);
  put_int(body_, value);
  return *this;
}

EventRecord& EventRecord::text(std::string_view text) {
  return this->text(text, static_cast<int>(text.size()));
}

EventRecord& EventRecord::text(std::string_view text, int statedLength) {
  word(FIELD_MESSAGE, statedLength);
  put_text(body_, text);
  return *this;
}

EventRecord& EventRecord::head_pose(const std::array<float, 36>& values) {
  word(FIELD_MESSAGE, head_pose_bytes);
  for (const unsigned mark : head_pose_mark) put_byte(body_, mark);
  for (const float value : values) put_float(body_, value);
  return *this;
}

EventRecord& EventRecord::raw(const Bytes& bytes) {
  put_bytes(body_, bytes);
  return *this;
}

EventRecord& EventRecord::unclosed() {
  closed_ = false;
  return *this;
}

Bytes EventRecord::bytes() const {
  Bytes out = body_;
  if (closed_) put_byte(out, FIELD_END);
  return out;
}

}  // namespace gzdsynth
