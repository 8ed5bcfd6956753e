// Words, flags and poses of the head as columns.
#include "samples/sample_head_columns.h"

#include <cstddef>
#include <cstdint>

#include "asc/output.h"
#include "asc/sample_number.h"

namespace gzdconv {

namespace {

constexpr int marker_decimals = 0;
constexpr int target_decimals = 1;
constexpr double target_distance_scale = 10.0;

struct FlagMark {
  unsigned bit;
  char letter;
};

constexpr FlagMark target_marks[] = {
    {GZD_TARGET_MISSING, 'M'},   {GZD_TARGET_EXTREME_ANGLE, 'A'}, {GZD_TARGET_NEAR_EYE, 'N'},
    {GZD_TARGET_TOO_CLOSE, 'C'}, {GZD_TARGET_TOO_FAR, 'F'},       {GZD_TARGET_TOP, 'T'},
    {GZD_TARGET_BOTTOM, 'B'},    {GZD_TARGET_LEFT, 'L'},          {GZD_TARGET_RIGHT, 'R'},
    {GZD_TARGET_EYE_TOP, 'T'},   {GZD_TARGET_EYE_BOTTOM, 'B'},    {GZD_TARGET_EYE_LEFT, 'L'},
    {GZD_TARGET_EYE_RIGHT, 'R'}};

constexpr FlagMark second_eye_marks[] = {{GZD_TARGET_EYE_TOP, 'T'},
                                         {GZD_TARGET_EYE_BOTTOM, 'B'},
                                         {GZD_TARGET_EYE_LEFT, 'L'},
                                         {GZD_TARGET_EYE_RIGHT, 'R'}};

constexpr FlagMark head_marker_marks[] = {{GZD_HEAD_MARKER_IMU_ONLY, 'X'},
                                          {GZD_HEAD_MARKER_AGE3, 'X'},
                                          {GZD_HEAD_MARKER_MISSING, 'X'},
                                          {GZD_HEAD_MARKER_WARNING, 'X'}};

template <std::size_t count>
void append_marks(unsigned word, const FlagMark (&marks)[count]) {
  char* place = lpbuffer.cursor();
  for (const FlagMark& m : marks) *place++ = mark(word, m.bit, m.letter);
  lpbuffer.set_cursor(place);
}

// What print_value appends. Of a stored word, or a tenth of it, a float gives the same tenths.
void append_word(double value) {
  if (has_usual_form())
    print_tenths(static_cast<float>(value));
  else
    print_value(target_decimals, value);
}

double word_value(INT16 word) {
  return word == INT16_MIN ? double{MISSING_DATA} : word;
}

void append_values(const float (&values)[3]) {
  for (const float value : values) print_value(head_decimals, missing_if_absent(value));
}

}  // namespace

void append_markers(const SampleLine& line) {
  const bool has_markers = (line.sample.flags & SMP_HEAD_DATA) != 0;
  for (const INT16 word : line.sample.hdata) {
    print_value(marker_decimals, has_markers ? word_value(word) : double{MISSING_DATA});
  }
}

void append_target(const SampleLine& line) {
  const auto& words = line.sample.hdata;
  const double distance =
      words[2] == INT16_MIN ? double{MISSING_DATA} : words[2] / target_distance_scale;
  lpbuffer.append(' ');
  append_word(word_value(words[0]));
  append_word(word_value(words[1]));
  append_word(distance);
}

void append_target_flags(const SampleLine& line) {
  lpbuffer.append(' ');
  append_marks(static_cast<UINT16>(line.sample.hdata[3]), target_marks);
}

void append_second_eye_flags(const SampleLine& line) {
  append_marks(static_cast<UINT16>(line.sample.hdata[6]), second_eye_marks);
}

void append_head_tracking(const SampleLine& line) {
  append_values(line.sample.headRotation);
  append_values(line.sample.headPosition);
}

void append_marker_flags(const SampleLine& line) {
  lpbuffer.append('\t');
  append_marks(line.sample.headMarkerFlags, head_marker_marks);
}

void append_marker_bits(const SampleLine& line) {
  lpbuffer.append('\t');
  for (unsigned bit = 32; bit-- > 0;) {
    lpbuffer.append((line.sample.headMarkerFlags >> bit & 1) != 0 ? '1' : '0');
  }
}

void append_head_resolution(const SampleLine& line) {
  const FSAMPLE& s = line.sample;
  for (const float value : {s.hrgx, s.hrgy, s.ergx, s.ergy}) {
    print_value(head_decimals, missing_if_absent(value));
  }
}

}  // namespace gzdconv
