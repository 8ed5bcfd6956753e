// Words, flags and poses of the head as columns.
#include "samples/sample_head_columns.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "asc/output.h"

namespace gzdconv {

namespace {

constexpr int left = GZD_LEFT_EYE;
constexpr int right = GZD_RIGHT_EYE;
constexpr int marker_decimals = 0;
constexpr int target_decimals = 1;

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

// The marks of the words that hold no other bits.
constexpr auto make_head_marker_texts() {
  std::array<std::array<char, std::size(head_marker_marks)>, 1 << std::size(head_marker_marks)>
      texts{};
  for (unsigned word = 0; word < texts.size(); ++word)
    for (std::size_t i = 0; i < std::size(head_marker_marks); ++i)
      texts[word][i] = mark(word, head_marker_marks[i].bit, head_marker_marks[i].letter);
  return texts;
}
constexpr auto head_marker_texts = make_head_marker_texts();

template <std::size_t count>
char* write_marks(char* place, unsigned word, const FlagMark (&marks)[count]) {
  for (const FlagMark& m : marks) *place++ = mark(word, m.bit, m.letter);
  return place;
}

float word_value(INT16 word) {
  return word == INT16_MIN ? MISSING_DATA : word;
}

}  // namespace

char* write_markers(char* place, SampleLine line) {
  const bool has_markers = (line.sample.flags & SMP_HEAD_DATA) != 0;
  const NumberForm& form = form_of(marker_decimals);
  for (const INT16 word : line.sample.hdata)
    place = write_column(place, has_markers ? word_value(word) : MISSING_DATA, form);
  return place;
}

char* write_target(char* place, SampleLine line) {
  const auto& words = line.sample.hdata;
  const NumberForm& form = form_of(target_decimals);
  *place++ = ' ';
  place = write_column(place, word_value(words[0]), form);
  place = write_column(place, word_value(words[1]), form);
  if (words[2] == INT16_MIN) return write_missing(place);
  return write_tenths_of(place, words[2], form);
}

char* write_target_flags(char* place, SampleLine line) {
  *place++ = ' ';
  return write_marks(place, static_cast<UINT16>(line.sample.hdata[3]), target_marks);
}

char* write_second_eye_flags(char* place, SampleLine line) {
  return write_marks(place, static_cast<UINT16>(line.sample.hdata[6]), second_eye_marks);
}

char* write_head_tracking(char* place, SampleLine line) {
  const auto& turn = line.sample.headRotation;
  const auto& at = line.sample.headPosition;
  const float values[] = {turn[0], turn[1], turn[2], at[0], at[1], at[2]};
  return write_all_recorded(place, values, form_of(head_decimals));
}

char* write_marker_flags(char* place, SampleLine line) {
  const auto& text = head_marker_texts[line.sample.headMarkerFlags % head_marker_texts.size()];
  *place = '\t';
  std::memcpy(place + 1, text.data(), text.size());
  return place + 1 + text.size();
}

void append_marker_bits(const SampleLine& line) {
  lpbuffer.append('\t');
  for (unsigned bit = 32; bit-- > 0;) {
    lpbuffer.append((line.sample.headMarkerFlags >> bit & 1) != 0 ? '1' : '0');
  }
}

char* write_both_extended(char* place, SampleLine line) {
  constexpr int cyclopean = 2;
  const FSAMPLE& s = line.sample;
  const auto &x = s.unused_headInSpaceX, &y = s.unused_headInSpaceY;
  const auto &eye_x = s.eyeInHeadX, &eye_y = s.eyeInHeadY;
  const float values[] = {x[left],          x[right],       s.headInSpaceX, y[left],
                          y[right],         s.headInSpaceY, eye_x[left],    eye_x[right],
                          eye_x[cyclopean], eye_y[left],    eye_y[right],   eye_y[cyclopean]};
  return write_all_recorded(place, values, form_of(head_decimals));
}

char* write_head_resolution(char* place, SampleLine line) {
  const FSAMPLE& s = line.sample;
  const float values[] = {s.hrgx, s.hrgy, s.ergx, s.ergy};
  return write_all_recorded(place, values, form_of(head_decimals));
}

}  // namespace gzdconv
