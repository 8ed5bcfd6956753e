// What the columns of a sample line share: the sample that is written, its eyes, a column's form.
#ifndef GZDCONV_SAMPLE_LINE_H
#define GZDCONV_SAMPLE_LINE_H

#include "asc/output.h"
#include "cli/options.h"
#include "gzd.h"
#include "lines/resolution.h"
#include "run_state.h"

namespace gzdconv {

// A float for print_value: what is absent from the record prints like what is not valid.
inline float missing_if_absent(float value) {
  return value == NOT_RECORDED ? MISSING_DATA : value;
}

inline bool has_value(float value) {
  return missing_if_absent(value) != MISSING_DATA;
}

// A letter for a set bit, else a full stop.
constexpr char mark(unsigned word, unsigned bit, char letter) {
  return (word & bit) != 0 ? letter : '.';
}

// Position and pupil size of one eye; MISSING_DATA or NOT_RECORDED where there is none.
struct EyeData {
  float x, y, pupil;
};

// The position of `eye` in coordinates of `type` (GZD_POSITION_), gaze as the display mapping gives
// it. A lost pupil has no position, unless options.no_pupil_area_check is set.
inline EyeData eye_data_of(const FSAMPLE& sample, int eye, int type) {
  EyeData data = {MISSING_DATA, MISSING_DATA, sample.pa[eye]};
  if (sample.pa[eye] == 0.0f && options.no_pupil_area_check == 0) return data;
  switch (type) {
    case GZD_POSITION_HREF:
      data.x = sample.hx[eye];
      data.y = sample.hy[eye];
      break;
    case GZD_POSITION_PUPIL:
      data.x = sample.px[eye];
      data.y = sample.py[eye];
      break;
    default:
      data.x = sample.gx[eye];
      data.y = sample.gy[eye];
      if (options.gaze_map == 0) break;
      data.x = getMappedX(missing_if_absent(data.x));
      data.y = getMappedY(missing_if_absent(data.y));
  }
  return data;
}

// A sample while its line is written.
struct SampleLine {
  const RunState& state;
  FSAMPLE& sample;
};

// Writes the columns of one group at `place`, in the line buffer at or after its cursor, each with
// its own tab in front. Returns the end.
using SampleColumn = char* (*)(char* place, SampleLine line);

// A column of a function that appends to the line buffer.
template <void (*append)(const SampleLine&)>
char* appended(char* place, SampleLine line) {
  lpbuffer.set_cursor(place);
  append(line);
  return lpbuffer.cursor();
}

}  // namespace gzdconv

#endif
