// Raw lines: columns fixed by the first of a block, each asked of the library.
#include "samples/raw_sample_lines.h"

#include <string_view>

#include "asc/number_form.h"
#include "asc/output.h"
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

char* write_eye(char* place, const GZD_RAW_EYE& raw, const RawForms& forms) {
  place = write_position_and_area(place, raw.pupil, raw.pupil_area, forms);
  place = write_position_and_area(place, raw.cr, raw.cr_area, forms);
  place = write_pupil_cr(place, raw, forms);
  return columns.second_cr ? write_position_and_area(place, raw.cr2, raw.cr2_area, forms) : place;
}

char* write_eye_or_missing(char* place, GZDFILE* handle, FSAMPLE& sample, int eye, UINT16 flag) {
  constexpr int first_columns = 8;
  constexpr int second_cr_columns = 3;
  if ((sample.flags & flag) == 0)
    return write_missing(place, first_columns + (columns.second_cr ? second_cr_columns : 0));
  GZD_RAW_EYE raw;
  gzd_get_raw_eye(handle, &sample, eye, &raw);
  return write_eye(place, raw, RawForms());
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
  if (columns.left)
    end = write_eye_or_missing(end, state.recording, sample, GZD_LEFT_EYE, SMP_LEFT);
  if (columns.right)
    end = write_eye_or_missing(end, state.recording, sample, GZD_RIGHT_EYE, SMP_RIGHT);
  *end++ = '\n';
  lpbuffer.set_cursor(end);
}

}  // namespace gzdconv
