// A pattern is compared eight bytes at a time: those that are no codes are masked.
#include "record/event_pattern.h"

#include <cstring>

#include "base/big_endian.h"
#include "record/stream_state.h"

namespace gzd {

namespace {

float usable(float prescale) {
  return prescale >= smallest_prescale ? prescale : 1.0f;
}

}  // namespace

bool EventPattern::matches(const byte* chain, std::size_t available) const {
  if (length_ == 0 || available < words_ * sizeof(UINT64)) return false;
  UINT64 differing = 0;
  for (std::size_t i = 0; i < words_; ++i) {
    UINT64 bytes;
    std::memcpy(&bytes, chain + i * sizeof bytes, sizeof bytes);
    differing |= (bytes & isCode_[i]) ^ codes_[i];
  }
  return differing == 0;
}

bool EventPattern::learn(const byte* chain, std::size_t available) {
  *this = EventPattern();
  std::array<byte, longest> codes{}, isCode{};
  std::size_t place = 0;
  for (;;) {
    if (place >= longest || place >= available) return false;
    const byte code = codes[place] = chain[place];
    isCode[place++] = 0xFF;
    if (code == FIELD_END) break;
    const FieldFacts& field = field_facts[code];
    if (place + field.length > longest || !add(field, place)) return false;
    place += field.length;
  }
  words_ = (place + sizeof(UINT64) - 1) / sizeof(UINT64);
  if (words_ * sizeof(UINT64) > available) return false;
  std::memcpy(codes_.data(), codes.data(), longest);
  std::memcpy(isCode_.data(), isCode.data(), longest);
  length_ = place;
  return true;
}

// Returns false for a field that patterns cannot have.
bool EventPattern::add(const FieldFacts& field, std::size_t place) {
  readBits_ = static_cast<UINT16>(readBits_ | field.readBits);
  if (field.code == FIELD_START_TIME) startTime_ = static_cast<byte>(place);
  if (field.code == FIELD_END_TIME) endTime_ = static_cast<byte>(place);
  if (field.code == FIELD_START_TIME || field.code == FIELD_END_TIME) return true;
  if (field.words == 0 || field.also[0] != nullptr) return false;
  for (std::size_t i = 0; i < field.words; ++i)
    values_[valueCount_++] = {static_cast<byte>(place + i * sizeof(INT16)), field.scale,
                              field.values[i]};
  return true;
}

void EventPattern::readTimes(const byte* chain, FEVENT& event) const {
  event.read = readBits_;
  if (startTime_ != 0) event.sttime = load_be32(chain + startTime_);
  if (endTime_ != 0) event.entime = load_be32(chain + endTime_);
}

void EventPattern::readValues(const byte* chain, const DecodingParameters& parameters,
                              FEVENT& event) const {
  const float prescales[value_scales] = {1.0f, 1.0f, usable(parameters.gaze_prescale),
                                         usable(parameters.velocity_prescale)};
  for (std::size_t i = 0; i < valueCount_; ++i) {
    const Value& value = values_[i];
    const INT16 stored = load_be16s(chain + value.place);
    const float number = static_cast<float>(stored) / prescales[static_cast<byte>(value.scale)];
    const bool isMissing = stored == stored_missing && value.scale != ValueScale::Raw;
    event.*value.target = isMissing ? MISSING_DATA : number;
  }
}

}  // namespace gzd
