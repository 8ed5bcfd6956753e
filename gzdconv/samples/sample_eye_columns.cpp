// Positions, velocities, resolutions and camera data of the eyes as columns.
#include "samples/sample_eye_columns.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "asc/number.h"
#include "asc/number_form.h"
#include "asc/output.h"
#include "asc/sample_number.h"
#include "asc/whole_numbers.h"
#include "cli/options.h"
#include "lines/resolution.h"

namespace gzdconv {

namespace {

constexpr int left = GZD_LEFT_EYE;
constexpr int right = GZD_RIGHT_EYE;
constexpr int position_decimals = 1;
constexpr int resolution_decimals = 2;

void set_up_screen_once() {
  static bool done = false;
  if (done) return;
  done = true;
  const auto& s = options.screen_setup;
  gzd_compute_physical_setup(s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7], s[8], s[9]);
}

char* write_screen_resolution(char* place, SampleLine line, int eye) {
  const auto& s = options.screen_setup;
  double rx = MISSING_DATA;
  double ry = MISSING_DATA;
  gzd_calculate_ppd(s[8] - s[6], s[9] - s[7], &line.sample, eye, &rx, &ry);
  if (rx == double{MISSING_DATA} && ry == double{MISSING_DATA}) return write_missing(place, 2);
  const NumberForm& form = form_of(resolution_decimals);
  return write_tenths_column(write_tenths_column(place, rx, form), ry, form);
}

struct VelocityFields {
  EyePair x, y;  // of the position
  EyePair xvel, yvel;
};

// Those printed, of positions of a type. An unknown type counts as gaze.
const VelocityFields& velocity_fields(int position_type) {
  using S = FSAMPLE;
  static constexpr VelocityFields gaze[] = {{&S::gx, &S::gy, &S::gxvel, &S::gyvel},
                                            {&S::gx, &S::gy, &S::fgxvel, &S::fgyvel}};
  static constexpr VelocityFields href[] = {{&S::hx, &S::hy, &S::hxvel, &S::hyvel},
                                            {&S::hx, &S::hy, &S::fhxvel, &S::fhyvel}};
  static constexpr VelocityFields pupil[] = {{&S::px, &S::py, &S::rxvel, &S::ryvel},
                                             {&S::px, &S::py, &S::frxvel, &S::fryvel}};
  const int fast = options.fast_velocity != 0 ? 1 : 0;
  if (position_type == GZD_POSITION_HREF) return href[fast];
  return position_type == GZD_POSITION_PUPIL ? pupil[fast] : gaze[fast];
}

// False for a lost pupil as well, which may have no position.
bool is_ready_size(float size) {
  return has_ready_tenths(size) && std::bit_cast<std::uint32_t>(size) != 0;
}

bool left_counts_for_average(const FSAMPLE& sample) {
  return !has_lost_pupil(sample, left) && (sample.flags & SMP_GAZE) != 0 &&
         has_value(sample.gx[left]) && has_value(sample.gy[left]);
}

char* write_text(char* place, std::string_view text) {
  return std::copy(text.begin(), text.end(), place);
}

char* write_camera_number(char* place, float value) {
  if (is_formed(value, camera_form)) return write_column(place, value, camera_form);
  constexpr float largest_whole = 1e9F;
  if (std::fabs(value) < largest_whole && static_cast<float>(static_cast<INT32>(value)) == value)
    return write_text(write_count(place, static_cast<INT32>(value)), ".000");
  *place++ = '\t';
  lpbuffer.set_cursor(place);
  append_fixed(value, camera_form.decimals, camera_width);
  return lpbuffer.cursor();
}

// Without camera data all pairs are one of two: missing, which prints as the number that stands for
// it, and what the library makes of two missing positions.
char* write_camera_pair(char* place, const float (&pair)[2]) {
  constexpr float missing_difference = -2e6F;
  if (pair[0] == pair[1] && pair[0] == MISSING_DATA)
    return write_text(place, "\t100000000.000\t100000000.000");
  if (pair[0] == pair[1] && pair[0] == missing_difference)
    return write_text(place, "\t-2000000.000\t-2000000.000");
  return write_camera_number(write_camera_number(place, pair[0]), pair[1]);
}

// Box heights have a sign.
char* write_box(char* place, const UINT32 (&pair)[2]) {
  for (const UINT32 value : pair) place = write_count(place, static_cast<INT32>(value));
  return place;
}

}  // namespace

template <int eye>
void append_position(const SampleLine& line) {
  const EyeData data = eye_data_of(line.sample, eye, line.state.block.sample_position);
  const bool usual = has_usual_form();
  char* place = lpbuffer.cursor();
  place = write_tenths(place, data.x, usual);
  place = write_tenths(place, data.y, usual);
  place = write_tenths(place, data.pupil, usual);
  lpbuffer.set_cursor(place);
}

void append_both_positions(const SampleLine& line) {
  append_position<left>(line);
  append_position<right>(line);
}

namespace {

// Out of line: the way of the usual line stays short.
[[gnu::noinline]] char* write_unusual_positions(char* place, SampleLine line) {
  return appended<append_both_positions>(place, line);
}

}  // namespace

namespace {

// Of ready columns, some positions below 0.
template <EyePair x, EyePair y, bool compact>
[[gnu::noinline]] char* write_signed_positions(char* place, SampleLine line) {
  const FSAMPLE& s = line.sample;
  for (const int eye : {left, right})
    if (!is_ready_size(s.pa[eye]) || !has_ready_signed_tenths((s.*x)[eye]) ||
        !has_ready_signed_tenths((s.*y)[eye]))
      return write_unusual_positions(place, line);
  for (const int eye : {left, right})
    for (const float value : {(s.*x)[eye], (s.*y)[eye], s.pa[eye]})
      place = write_ready_signed_tenths<compact>(place, value);
  return place;
}

template <EyePair x, EyePair y, bool compact>
char* write_ready_positions(char* place, SampleLine line) {
  const auto& xs = line.sample.*x;
  const auto& ys = line.sample.*y;
  const auto& sizes = line.sample.pa;
  const bool ready = is_ready_size(sizes[left]) && is_ready_size(sizes[right]) &&
                     has_ready_tenths(xs[left]) && has_ready_tenths(xs[right]) &&
                     has_ready_tenths(ys[left]) && has_ready_tenths(ys[right]);
  if (!ready) return write_signed_positions<x, y, compact>(place, line);
  const ReadyPair x_cells(xs), y_cells(ys), size_cells(sizes);
  for (const int eye : {left, right}) {
    place = x_cells.write<compact>(place, eye);
    place = y_cells.write<compact>(place, eye);
    place = size_cells.write<compact>(place, eye);
  }
  return place;
}

// Of positions that are not in pixels.
template <EyePair x, EyePair y>
char* write_whole_positions(char* place, SampleLine line) {
  const auto& sizes = line.sample.pa;
  const WholeNumbers positions(line.sample.*x, line.sample.*y);
  if (!is_ready_size(sizes[left]) || !is_ready_size(sizes[right]) || !positions.are_ready())
    return write_signed_positions<x, y, false>(place, line);
  const ReadyPair size_cells(sizes);
  for (const int eye : {left, right}) {
    place = positions.write(place, eye);
    place = positions.write(place, 2 + eye);
    place = size_cells.write<false>(place, eye);
  }
  return place;
}

}  // namespace

template <EyePair x, EyePair y>
char* write_both_positions(char* place, SampleLine line) {
  constexpr bool in_pixels = x == &FSAMPLE::gx;
  return in_pixels ? write_ready_positions<x, y, false>(place, line)
                   : write_whole_positions<x, y>(place, line);
}

template <EyePair x, EyePair y>
char* write_formed_positions(char* place, SampleLine line) {
  if (has_compact_form()) return write_ready_positions<x, y, true>(place, line);
  const FSAMPLE& s = line.sample;
  // A lost pupil may have no position.
  if (s.pa[left] == 0.0F || s.pa[right] == 0.0F) return write_unusual_positions(place, line);
  const float values[] = {(s.*x)[left],  (s.*y)[left],  s.pa[left],
                          (s.*x)[right], (s.*y)[right], s.pa[right]};
  return write_all_recorded(place, values, form_of(position_decimals));
}

char* write_screen_resolutions(char* place, SampleLine line) {
  constexpr unsigned needed = SMP_GAZE | SMP_HREF;
  if ((line.sample.flags & needed) != needed) return write_missing(place, 4);
  set_up_screen_once();
  for (const int eye : {left, right}) place = write_screen_resolution(place, line, eye);
  return place;
}

template <int eye>
char* write_velocity(char* place, SampleLine line) {
  const int position_type = line.state.block.sample_position;
  const EyeData data = eye_data_of(line.sample, eye, position_type);
  if (!has_value(data.x) || !has_value(data.y)) return write_missing(place, 2);
  const VelocityFields& fields = velocity_fields(position_type);
  const bool usual = has_usual_form();
  place = write_signed_tenths(place, (line.sample.*fields.xvel)[eye], usual);
  return write_signed_tenths(place, (line.sample.*fields.yvel)[eye], usual);
}

char* write_both_velocities(char* place, SampleLine line) {
  const FSAMPLE& s = line.sample;
  const VelocityFields& fields = velocity_fields(line.state.block.sample_position);
  bool ready = is_ready_size(s.pa[left]) && is_ready_size(s.pa[right]);
  for (const EyePair field : {fields.x, fields.y, fields.xvel, fields.yvel})
    for (const float value : s.*field) ready = ready && has_ready_signed_tenths(value);
  if (!ready) return write_velocity<right>(write_velocity<left>(place, line), line);
  for (const int eye : {left, right}) {
    place = write_ready_signed_tenths<false>(place, (s.*fields.xvel)[eye]);
    place = write_ready_signed_tenths<false>(place, (s.*fields.yvel)[eye]);
  }
  return place;
}

// The horizontal value alone decides between the sample's pair and the default one.
char* write_resolution(char* place, SampleLine line) {
  const bool own = options.fixed_resolution == 0 && is_usable_resolution(line.sample.rx);
  const NumberForm& form = form_of(resolution_decimals);
  place = write_column(place, own ? line.sample.rx : options.default_res_x, form);
  return write_column(place, own ? line.sample.ry : options.default_res_y, form);
}

char* write_average(char* place, SampleLine line) {
  const FSAMPLE& sample = line.sample;
  const EyeData other = eye_data_of(sample, right, GZD_POSITION_GAZE);
  if (!left_counts_for_average(sample) || !has_value(other.x) || !has_value(other.y))
    return write_missing(place, 2);
  const bool usual = has_usual_form();
  place = write_tenths(place, (getMappedX(sample.gx[left]) + other.x) * 0.5f, usual);
  return write_tenths(place, (getMappedY(sample.gy[left]) + other.y) * 0.5f, usual);
}

template <int eye>
char* write_uncorrected(char* place, SampleLine line) {
  GZD_RAW_EYE raw;
  gzd_get_raw_eye(line.state.recording, &line.sample, eye, &raw);
  place = write_camera_pair(place, raw.pupil);
  place = write_camera_pair(place, raw.cr);
  place = write_count(place, raw.pupil_area);
  place = write_count(place, raw.cr_area);
  place = write_box(place, raw.pupil_dimension);
  place = write_box(place, raw.cr_dimension);
  place = write_box(place, raw.window_position);
  return write_camera_pair(place, raw.pupil_cr);
}

template void append_position<left>(const SampleLine&);
template void append_position<right>(const SampleLine&);
template char* write_velocity<left>(char*, SampleLine);
template char* write_velocity<right>(char*, SampleLine);
template char* write_uncorrected<left>(char*, SampleLine);
template char* write_uncorrected<right>(char*, SampleLine);
template char* write_both_positions<&FSAMPLE::gx, &FSAMPLE::gy>(char*, SampleLine);
template char* write_both_positions<&FSAMPLE::hx, &FSAMPLE::hy>(char*, SampleLine);
template char* write_both_positions<&FSAMPLE::px, &FSAMPLE::py>(char*, SampleLine);
template char* write_formed_positions<&FSAMPLE::gx, &FSAMPLE::gy>(char*, SampleLine);
template char* write_formed_positions<&FSAMPLE::hx, &FSAMPLE::hy>(char*, SampleLine);
template char* write_formed_positions<&FSAMPLE::px, &FSAMPLE::py>(char*, SampleLine);

}  // namespace gzdconv
