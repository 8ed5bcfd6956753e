// Fixation, saccade and head columns: what is printed of an event, and what is computed for it.
#include "lines/event_columns.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "asc/computed_number.h"
#include "asc/output.h"
#include "cli/options.h"
#include "lines/resolution.h"

namespace gzdconv {

namespace {

// Of saccade angles. Rounded otherwise than for resolutions; texts show it.
constexpr double degrees_per_radian = 57.296;
constexpr double ms_per_second = 1e3;
constexpr int resolution_decimals = 2;
constexpr int extended_decimals = 3;

struct Point {
  float x, y;
  [[nodiscard]] bool is_missing() const { return x == MISSING_DATA || y == MISSING_DATA; }
};

// A number as the event holds it.
void print_single(int decimals, float value) {
  lpbuffer.set_cursor(write_column(lpbuffer.cursor(), value, form_of(decimals)));
}

void print_point(int decimals, Point point) {
  print_single(decimals, point.x);
  print_single(decimals, point.y);
}

void print_resolution(double x, double y) {
  print_computed(resolution_decimals, x);
  print_computed(resolution_decimals, y);
}

Point mapped(Point point) {
  return {getMappedX(point.x), getMappedY(point.y)};
}

float mean(float one, float other) {
  return (one + other) * 0.5F;
}

bool has_resolution(float value) {
  return value != MISSING_DATA && value != NOT_RECORDED;
}

// The resolution of start and end as one.
float combined(float start, float end) {
  if (has_resolution(start) && has_resolution(end)) return mean(start, end);
  if (has_resolution(start)) return start;
  return has_resolution(end) ? end : MISSING_DATA;
}

Point combined_resolution(const FEVENT& event) {
  return {combined(event.supd_x, event.eupd_x), combined(event.supd_y, event.eupd_y)};
}

Point mapped_resolution(const FEVENT& event) {
  const Point resolution = combined_resolution(event);
  return {getMappedPPDX(resolution.x), getMappedPPDY(resolution.y)};
}

void print_href_resolution(Point position) {
  if (position.is_missing()) {
    print_resolution(MISSING_DATA, MISSING_DATA);
    return;
  }
  const Resolution resolution = head_referenced_resolution(position.x, position.y);
  print_resolution(resolution.x, resolution.y);
}

bool is_href(int position_type) {
  return position_type == GZD_POSITION_HREF;
}

void print_fixation_resolution(const FEVENT& event, int position_type) {
  const bool recorded = event.read & EVT_RESOLUTION;
  if (is_href(position_type) && !recorded) {
    print_href_resolution(mapped({event.havx, event.havy}));
    return;
  }
  Point resolution{MISSING_DATA, MISSING_DATA};
  if (recorded)
    resolution = is_href(position_type) ? combined_resolution(event) : mapped_resolution(event);
  print_resolution(resolution.x, resolution.y);
}

// Degrees between two head-referenced positions.
double href_angle(Point start, Point end) {
  if (start.is_missing() || end.is_missing()) return MISSING_DATA;
  const double sx = start.x, sy = start.y, ex = end.x, ey = end.y;
  constexpr double square = GZD_HREF_DISTANCE * GZD_HREF_DISTANCE;
  const double dot = sx * ex + sy * ey + square;
  const double lengths =
      std::sqrt(sx * sx + sy * sy + square) * std::sqrt(ex * ex + ey * ey + square);
  return std::acos(std::clamp(dot / lengths, -1.0, 1.0)) * degrees_per_radian;
}

float peak_velocity(const FEVENT& event) {
  return event.read & EVT_VELOCITY ? event.pvel : MISSING_DATA;
}

double gaze_amplitude(Point start, Point end, Point resolution) {
  if (start.is_missing() || end.is_missing() || resolution.is_missing()) return MISSING_DATA;
  return hypotf((start.x - end.x) / resolution.x, (start.y - end.y) / resolution.y);
}

// The average velocity of pupil events counts units in a millisecond.
double travelled(const FEVENT& event, int position_type, std::uint32_t duration) {
  if (event.avel == MISSING_DATA) return MISSING_DATA;
  const double velocity = event.avel;
  if (position_type == GZD_POSITION_PUPIL) return duration * velocity;
  return duration / ms_per_second * velocity;
}

void print_amplitude_and_peak(const FEVENT& event, int position_type, Point start, Point end,
                              std::uint32_t duration) {
  if (event.read & EVT_RESOLUTION) {
    print_computed(2, gaze_amplitude(start, end, mapped_resolution(event)));
    print_single(0, peak_velocity(event));
  } else if (event.read & EVT_VELOCITY) {
    print_computed(2, travelled(event, position_type, duration));
    print_single(1, event.pvel);
  } else {
    print_resolution(MISSING_DATA, MISSING_DATA);
  }
}

// A coordinate of the middle of a saccade.
float middle(float start, float end) {
  return start == MISSING_DATA || end == MISSING_DATA ? MISSING_DATA : mean(start, end);
}

void print_saccade_resolution(const FEVENT& event, int position_type) {
  if (is_href(position_type)) {
    print_href_resolution({middle(event.hstx, event.henx), middle(event.hsty, event.heny)});
  } else if ((event.read & EVT_RESOLUTION) && !options.fixed_resolution) {
    const Point resolution = mapped_resolution(event);
    print_resolution(resolution.x, resolution.y);
  } else {
    print_resolution(options.default_res_x, options.default_res_y);
  }
}

struct ExtendedColumn {
  const char* name;
  float FEVENT::*value;
};

constexpr std::array<ExtendedColumn, 12> eye_columns = {{
    {"head-in-space-x-start", &FEVENT::headInSpaceX_start},
    {"head-in-space-y-start", &FEVENT::headInSpaceY_start},
    {"head-in-space-x-end", &FEVENT::headInSpaceX_end},
    {"head-in-space-y-end", &FEVENT::headInSpaceY_end},
    {"head-in-space-x-avg", &FEVENT::headInSpaceX_avg},
    {"head-in-space-y-avg", &FEVENT::headInSpaceY_avg},
    {"eye-in-head-x-start", &FEVENT::eyeInHeadX_start},
    {"eye-in-head-y-start", &FEVENT::eyeInHeadY_start},
    {"eye-in-head-x-end", &FEVENT::eyeInHeadX_end},
    {"eye-in-head-y-end", &FEVENT::eyeInHeadY_end},
    {"eye-in-head-x-avg", &FEVENT::eyeInHeadX_avg},
    {"eye-in-head-y-avg", &FEVENT::eyeInHeadY_avg},
}};

constexpr std::array<ExtendedColumn, 18> head_columns = {{
    {"head-rotation-x-start", &FEVENT::headRotationX_start},
    {"head-rotation-y-start", &FEVENT::headRotationY_start},
    {"head-rotation-z-start", &FEVENT::headRotationZ_start},
    {"head-rotation-x-end", &FEVENT::headRotationX_end},
    {"head-rotation-y-end", &FEVENT::headRotationY_end},
    {"head-rotation-z-end", &FEVENT::headRotationZ_end},
    {"head-rotation-x-avg", &FEVENT::headRotationX_avg},
    {"head-rotation-y-avg", &FEVENT::headRotationY_avg},
    {"head-rotation-z-avg", &FEVENT::headRotationZ_avg},
    {"head-position-x-start", &FEVENT::headPositionX_start},
    {"head-position-y-start", &FEVENT::headPositionY_start},
    {"head-position-z-start", &FEVENT::headPositionZ_start},
    {"head-position-x-end", &FEVENT::headPositionX_end},
    {"head-position-y-end", &FEVENT::headPositionY_end},
    {"head-position-z-end", &FEVENT::headPositionZ_end},
    {"head-position-x-avg", &FEVENT::headPositionX_avg},
    {"head-position-y-avg", &FEVENT::headPositionY_avg},
    {"head-position-z-avg", &FEVENT::headPositionZ_avg},
}};

// Calls `use` for every column that the options leave in.
template <typename Use>
void for_extended_columns(Use use) {
  if (!options.no_extended_data) std::for_each(eye_columns.begin(), eye_columns.end(), use);
  if (!options.no_head_tracking) std::for_each(head_columns.begin(), head_columns.end(), use);
}

}  // namespace

void print_fixation_columns(const FEVENT& event, int position_type) {
  if (is_href(position_type)) {
    print_point(1, {event.havx, event.havy});
    print_single(0, event.ava);
  }
  print_point(1, mapped({event.gavx, event.gavy}));
  print_single(0, event.ava);
  if (options.output_resolution) print_fixation_resolution(event, position_type);
}

void print_saccade_columns(const FEVENT& event, int position_type, std::uint32_t duration) {
  if (is_href(position_type)) {
    const Point start{event.hstx, event.hsty}, end{event.henx, event.heny};
    print_point(0, start);
    print_point(0, end);
    print_computed(2, href_angle(start, end));
    print_single(0, peak_velocity(event));
  }
  const Point start = mapped({event.gstx, event.gsty}), end = mapped({event.genx, event.geny});
  print_point(1, start);
  print_point(1, end);
  print_amplitude_and_peak(event, position_type, start, end, duration);
  if (options.output_resolution) print_saccade_resolution(event, position_type);
}

void print_extra_header() {
  if (options.no_extended_data && options.no_head_tracking) return;
  print("\t");
  for_extended_columns([](const ExtendedColumn& column) { print("%s\t", column.name); });
}

void print_exended_event_data(const FEVENT& event) {
  for_extended_columns([&event](const ExtendedColumn& column) {
    print_single(extended_decimals, event.*column.value);
  });
}

}  // namespace gzdconv
