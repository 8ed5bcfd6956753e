// One event as field codes and values in any order, and its bytes.
#ifndef GZDSYNTH_EVENT_RECORD_H
#define GZDSYNTH_EVENT_RECORD_H

#include <array>
#include <cstdint>
#include <string_view>

#include "byte_layout.h"
#include "gzd_data.h"

namespace gzdsynth {

// The one-byte codes in front of the values of an event record.
namespace field {
inline constexpr unsigned kEnd = 0;
inline constexpr unsigned kStartTime = 33;
inline constexpr unsigned kStartRaw = 40;
inline constexpr unsigned kStartHref = 41;
inline constexpr unsigned kStartGaze = 42;
inline constexpr unsigned kStartResolution = 43;
inline constexpr unsigned kStartPupil = 48;  // gaze prescale in block starts
inline constexpr unsigned kStartVelocity = 51;
inline constexpr unsigned kEndTime = 65;  // rate in 16.16 in block starts
inline constexpr unsigned kEndRaw = 72;
inline constexpr unsigned kEndHref = 73;
inline constexpr unsigned kEndGaze = 74;
inline constexpr unsigned kEndResolution = 75;  // packed word and pupil type in block starts
inline constexpr unsigned kEndPupil = 81;       // velocity prescale in block starts
inline constexpr unsigned kEndVelocity = 83;
inline constexpr unsigned kInput = 85;
inline constexpr unsigned kButtons = 86;  // pupil prescale in block starts
inline constexpr unsigned kMessage = 94;
inline constexpr unsigned kAverageRaw = 104;
inline constexpr unsigned kAverageHref = 105;
inline constexpr unsigned kAverageGaze = 106;
inline constexpr unsigned kAveragePupil = 114;  // sample divisor in block starts
inline constexpr unsigned kAverageVelocity = 115;
inline constexpr unsigned kPeakVelocity = 147;  // head prescale in block starts
inline constexpr unsigned kFlags = 180;
}  // namespace field

// An event under construction. Each call appends one field; values are words as stored: gaze and
// resolution times the gaze prescale, velocities times the velocity prescale (see stored()).
class EventRecord {
 public:
  // type: 0..63. eye: GZD_LEFT_EYE or GZD_RIGHT_EYE. parsedBy: the tag's low byte, which must be
  // even (64 pupil, 128 head-referenced, 192 gaze).
  explicit EventRecord(unsigned type, int eye = GZD_LEFT_EYE,
                       unsigned parsedBy = GZD_POSITION_GAZE);

  // Any code with a word, two words or a 32-bit value.
  EventRecord& word(unsigned code, int value);
  EventRecord& pair(unsigned code, int x, int y);
  EventRecord& integer(unsigned code, std::uint32_t value);

  EventRecord& start(std::uint32_t time) { return integer(field::kStartTime, time); }
  EventRecord& end(std::uint32_t time) { return integer(field::kEndTime, time); }

  EventRecord& rawStart(int x, int y) { return pair(field::kStartRaw, x, y); }
  EventRecord& rawEnd(int x, int y) { return pair(field::kEndRaw, x, y); }
  EventRecord& rawAverage(int x, int y) { return pair(field::kAverageRaw, x, y); }
  EventRecord& hrefStart(int x, int y) { return pair(field::kStartHref, x, y); }
  EventRecord& hrefEnd(int x, int y) { return pair(field::kEndHref, x, y); }
  EventRecord& hrefAverage(int x, int y) { return pair(field::kAverageHref, x, y); }
  EventRecord& gazeStart(int x, int y) { return pair(field::kStartGaze, x, y); }
  EventRecord& gazeEnd(int x, int y) { return pair(field::kEndGaze, x, y); }
  EventRecord& gazeAverage(int x, int y) { return pair(field::kAverageGaze, x, y); }
  EventRecord& resolutionStart(int x, int y) { return pair(field::kStartResolution, x, y); }
  EventRecord& resolutionEnd(int x, int y) { return pair(field::kEndResolution, x, y); }

  EventRecord& pupilStart(int size) { return word(field::kStartPupil, size); }
  EventRecord& pupilEnd(int size) { return word(field::kEndPupil, size); }
  EventRecord& pupilAverage(int size) { return word(field::kAveragePupil, size); }
  EventRecord& velocityStart(int value) { return word(field::kStartVelocity, value); }
  EventRecord& velocityEnd(int value) { return word(field::kEndVelocity, value); }
  EventRecord& velocityAverage(int value) { return word(field::kAverageVelocity, value); }
  EventRecord& velocityPeak(int value) { return word(field::kPeakVelocity, value); }

  EventRecord& input(int value) { return word(field::kInput, value); }
  EventRecord& buttons(int value) { return word(field::kButtons, value); }
  EventRecord& flags(int value) { return word(field::kFlags, value); }

  // Code 94 with the text's length, or with another one.
  EventRecord& text(std::string_view text);
  EventRecord& text(std::string_view text, int statedLength);

  // Code 94 with the binary head-pose payload: 36 floats in the order of the record, which is that
  // of FEVENT from headInSpaceX_start to headPositionZ_avg, then genx, gstx, gavx, geny, gsty,
  // gavy.
  EventRecord& headPose(const std::array<float, 36>& values);

  // Bytes as they are: unknown codes, cut fields.
  EventRecord& raw(const Bytes& bytes);

  // Leaves the closing code 0 away.
  EventRecord& unclosed();

  // The type that the record was made with.
  [[nodiscard]] unsigned type() const { return body_[0] & 0x3FU; }

  // The whole record: tag, fields, closing code.
  [[nodiscard]] Bytes bytes() const;

 private:
  Bytes body_;
  bool closed_ = true;
};

}  // namespace gzdsynth

#endif
