// Raw lines: columns fixed by the first of a block, each asked of the library.
#include "samples/raw_sample_lines.h"

#include <cstdint>
#include <cstring>
#include <string_view>

#include "asc/four_numbers.h"
#include "asc/number_form.h"
#include "asc/output.h"
#include "asc/sample_number.h"
#include "asc/sample_time.h"
#include "cli/options.h"
#include "lines/recording_lines.h"
#include "samples/sample_shape.h"

namespace gzdconv {

namespace {

constexpr int position_decimals = 3;
constexpr int area_decimals = 0;

// The columns of the block, fixed by its first raw sample.
struct RawColumns {
  bool left, right, second_cr;
};
RawColumns columns = {};

RawColumns columns_of(const RECORDINGS& block, const FSAMPLE& sample) {
  return {
      block_has_left(block) && options.left_eye != 0 && options.left_samples != 0,
      block_has_right(block) && options.right_eye != 0 && options.right_samples != 0,
      sample.htype == GZD_HTYPE_SECOND_CR_ONE_EYE || sample.htype == GZD_HTYPE_SECOND_CR_TWO_EYES};
}

void append_labels() {
  lpbuffer.begin_line();
  lpbuffer.append(std::string_view("LABELS:"));
  if (columns.left) {
    lpbuffer.append(
        std::string_view("\tLPUP.X\tLPUP.Y\tLPUP.A\tLCR.X\tLCR.Y\tLCR.A\tLPCR.X\tLPCR.Y"));
    if (columns.second_cr) lpbuffer.append(std::string_view("\tLCR2.X\tLCR2.Y\tLCR2.A"));
  }
  if (columns.right) {
    lpbuffer.append(
        std::string_view("\tRPUP.X\tRPUP.Y\tRPUP.A\tRCR.X\tRCR.Y\tRCR.A\tRPCR.X\tRPCR.Y"));
    if (columns.second_cr) lpbuffer.append(std::string_view("\tRCR2.X\tRCR2.Y\tRCR2.A"));
  }
  lpbuffer.append('\n');
}

bool has_position(const float (&pair)[2]) {
  return pair[0] != MISSING_DATA && pair[1] != MISSING_DATA;
}

// The forms of a line's numbers.
struct RawForms {
  const NumberForm& position = form_of(position_decimals);
  const NumberForm& area = form_of(area_decimals);
  const bool are_usual = has_usual_form();
};

char* write_position(char* place, const float (&pair)[2], const RawForms& forms) {
  place = write_column(place, pair[0], forms.position);
  return write_column(place, pair[1], forms.position);
}

char* write_position_and_area(char* place, const float (&pair)[2], UINT32 area,
                              const RawForms& forms) {
  return write_column(write_position(place, pair, forms), area, forms.area);
}

// What an eye's pupil would be seen at if it moved with the corneal reflection: nothing without
// both.
char* write_pupil_cr(char* place, const GZD_RAW_EYE& raw, const RawForms& forms) {
  const bool complete = has_position(raw.pupil) && has_position(raw.cr);
  return complete ? write_position(place, raw.pupil_cr, forms) : write_missing(place, 2);
}

// Seven characters wide.
bool is_short_area(UINT32 area) {
  return area < number_form::whole_count;
}
char* write_short_area(char* place, UINT32 area) {
  const std::uint64_t cell = whole_cell(area, false);
  std::memcpy(place, "\t  ", 4);
  std::memcpy(place + 3, &cell, sizeof cell);
  return place + 3 + number_form::cell_width;
}

// An eye in the usual form, when all of it is short.
bool is_short_eye(const GZD_RAW_EYE& raw, const ThreeDecimals& centres,
                  const ThreeDecimals& others) {
  return centres.are_ready() && others.are_ready() && is_short_area(raw.pupil_area) &&
         is_short_area(raw.cr_area) && (!columns.second_cr || is_short_area(raw.cr2_area));
}
char* write_short_eye(char* place, const GZD_RAW_EYE& raw, const ThreeDecimals& centres,
                      const ThreeDecimals& others) {
  const auto write_pair = [&place](const ThreeDecimals& from, int first) {
    place = from.write(from.write(place, first), first + 1);
  };
  write_pair(centres, 0);
  place = write_short_area(place, raw.pupil_area);
  write_pair(centres, 2);
  place = write_short_area(place, raw.cr_area);
  write_pair(others, 0);
  if (!columns.second_cr) return place;
  write_pair(others, 2);
  return write_short_area(place, raw.cr2_area);
}

char* write_eye(char* place, const GZD_RAW_EYE& raw, const RawForms& forms) {
  if (forms.are_usual) {
    const ThreeDecimals centres(raw.pupil, raw.cr);
    const ThreeDecimals others(raw.pupil_cr, columns.second_cr ? raw.cr2 : raw.pupil_cr);
    if (is_short_eye(raw, centres, others)) return write_short_eye(place, raw, centres, others);
  }
  place = write_position_and_area(place, raw.pupil, raw.pupil_area, forms);
  place = write_position_and_area(place, raw.cr, raw.cr_area, forms);
  place = write_pupil_cr(place, raw, forms);
  return columns.second_cr ? write_position_and_area(place, raw.cr2, raw.cr2_area, forms) : place;
}

char* write_missing_eye(char* place) {
  constexpr int first_columns = 8;
  constexpr int second_cr_columns = 3;
  return write_missing(place, first_columns + (columns.second_cr ? second_cr_columns : 0));
}

char* write_eyes(char* place, GZDFILE* handle, FSAMPLE& sample) {
  const bool has_left = (sample.flags & SMP_LEFT) != 0, has_right = (sample.flags & SMP_RIGHT) != 0;
  GZD_RAW_EYE raw[2];
  if (columns.left && has_left && columns.right && has_right)
    gzd_get_raw_eyes(handle, &sample, raw);
  else if (columns.left && has_left)
    gzd_get_raw_eye(handle, &sample, GZD_LEFT_EYE, &raw[GZD_LEFT_EYE]);
  else if (columns.right && has_right)
    gzd_get_raw_eye(handle, &sample, GZD_RIGHT_EYE, &raw[GZD_RIGHT_EYE]);
  const RawForms forms;
  if (columns.left)
    place = has_left ? write_eye(place, raw[GZD_LEFT_EYE], forms) : write_missing_eye(place);
  if (columns.right)
    place = has_right ? write_eye(place, raw[GZD_RIGHT_EYE], forms) : write_missing_eye(place);
  return place;
}

}  // namespace

bool is_raw_sample(const RECORDINGS& block, const FSAMPLE& sample) {
  return (is_left_present(block, sample) && sample.pa[GZD_LEFT_EYE] < 0.0f) ||
         (is_right_present(block, sample) && sample.pa[GZD_RIGHT_EYE] < 0.0f);
}

void write_raw_sample(const RunState& state, const RECORDINGS& block, FSAMPLE& sample) {
  if (state.block.kind == BlockKind::fresh) {
    columns = columns_of(block, sample);
    append_labels();
  }
  lpbuffer.begin_line();
  char* end = write_sample_time(lpbuffer.cursor(), sample);
  end = write_eyes(end, state.recording, sample);
  *end++ = '\n';
  lpbuffer.set_cursor(end);
}

}  // namespace gzdconv
