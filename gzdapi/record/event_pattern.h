// How the records of one type of eye event are laid out. In a recording they hold the same fields
// in the same order, so that one look tells whether a record is like the one before.
#ifndef GZDAPI_EVENT_PATTERN_H
#define GZDAPI_EVENT_PATTERN_H

#include <array>
#include <cstddef>

#include "gzd_data.h"
#include "record/event_fields.h"

namespace gzd {

struct DecodingParameters;

class EventPattern {
 public:
  // Whether the chain of fields at `chain` is laid out so, and lies in memory, of which there are
  // `available` bytes.
  [[nodiscard]] bool matches(const byte* chain, std::size_t available) const;
  // Becomes the pattern of the chain. Returns false, and matches none, when the chain does not lie
  // in memory, is too long, or holds anything but times and numbers.
  bool learn(const byte* chain, std::size_t available);

  // Of a chain that matches, its end included.
  [[nodiscard]] std::size_t length() const { return length_; }
  // Its times and `read` to the event; a time that it lacks is not touched.
  void readTimes(const byte* chain, FEVENT& event) const;
  // Its numbers.
  void readValues(const byte* chain, const DecodingParameters& parameters, FEVENT& event) const;

 private:
  static constexpr std::size_t longest = 64;
  static constexpr std::size_t most_values = longest / 2;
  using Words = std::array<UINT64, longest / sizeof(UINT64)>;

  struct Value {
    byte place;  // in the chain
    ValueScale scale;
    FieldFacts::Value target;
  };

  bool add(const FieldFacts& field, std::size_t place);

  Words codes_{};  // of the chain, and which of its bytes are codes
  Words isCode_{};
  std::size_t words_ = 0;
  std::size_t length_ = 0;  // 0 for none
  UINT16 readBits_ = 0;
  byte startTime_ = 0;  // where times lie; 0 for none
  byte endTime_ = 0;
  std::size_t valueCount_ = 0;
  std::array<Value, most_values> values_{};
};

// The pattern of each type, learned from the record of it that was met last.
class EventPatterns {
 public:
  // That of the eye event whose fields begin at `chain`; null when it has none.
  const EventPattern* of(int type, const byte* chain, std::size_t available) {
    EventPattern& pattern = patterns_[static_cast<std::size_t>(type - GZD_START_BLINK)];
    return pattern.matches(chain, available) || pattern.learn(chain, available) ? &pattern
                                                                                : nullptr;
  }

 private:
  std::array<EventPattern, GZD_END_FIXATION - GZD_START_BLINK + 1> patterns_;
};

}  // namespace gzd

#endif
