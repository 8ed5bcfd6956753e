// Raw lines: columns fixed by the first of a block, each asked of the library.
#include "samples/raw_sample_lines.h"

#include <string_view>

#include "asc/number.h"
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

void append_position(const float (&pair)[2]) {
  print_value(position_decimals, pair[0]);
  print_value(position_decimals, pair[1]);
}

void append_missing(int count) {
  for (int i = 0; i < count; ++i) print_value(position_decimals, MISSING_DATA);
}

// What an eye's pupil would be seen at if it moved with the corneal reflection: nothing without
// both.
void append_pupil_cr(GZDFILE* handle, FSAMPLE& sample, int eye, bool complete) {
  if (!complete) {
    append_missing(2);
    return;
  }
  float pupil_cr[2];
  gzd_get_pupil_cr(handle, &sample, eye, pupil_cr);
  append_position(pupil_cr);
}

void append_second_cr(GZDFILE* handle, FSAMPLE& sample, int eye) {
  float cr2[2];
  gzd_get_uncorrected_raw_cr2(handle, &sample, eye, cr2);
  append_position(cr2);
  print_value(area_decimals, gzd_get_uncorrected_cr2_area(handle, &sample, eye));
}

void append_eye(GZDFILE* handle, FSAMPLE& sample, int eye) {
  float pupil[2], cr[2];
  gzd_get_uncorrected_raw_pupil(handle, &sample, eye, pupil);
  gzd_get_uncorrected_raw_cr(handle, &sample, eye, cr);
  append_position(pupil);
  print_value(area_decimals, gzd_get_uncorrected_pupil_area(handle, &sample, eye));
  append_position(cr);
  print_value(area_decimals, gzd_get_uncorrected_cr_area(handle, &sample, eye));
  append_pupil_cr(handle, sample, eye, has_position(pupil) && has_position(cr));
  if (columns.second_cr) append_second_cr(handle, sample, eye);
}

void append_eye_or_missing(GZDFILE* handle, FSAMPLE& sample, int eye, UINT16 eye_flag) {
  constexpr int first_columns = 8;
  constexpr int second_cr_columns = 3;
  if ((sample.flags & eye_flag) != 0) {
    append_eye(handle, sample, eye);
  } else {
    append_missing(first_columns + (columns.second_cr ? second_cr_columns : 0));
  }
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
  lpbuffer.set_cursor(write_sample_time(lpbuffer.cursor(), sample));
  if (columns.left) append_eye_or_missing(state.recording, sample, GZD_LEFT_EYE, SMP_LEFT);
  if (columns.right) append_eye_or_missing(state.recording, sample, GZD_RIGHT_EYE, SMP_RIGHT);
  lpbuffer.append('\n');
}

}  // namespace gzdconv
