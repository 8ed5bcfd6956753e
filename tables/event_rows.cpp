// Rows of `events`, and of its parts by type.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "outline.h"
#include "row_builder.h"
#include "sample_state.h"

namespace gzdtables {

namespace {

constexpr double ms_per_second = 1000.0;
constexpr double degrees_per_radian = 57.296;  // of saccade angles, as texts of gzdconv have them

float above_zero_or_null(float value) {
  return is_value(value) && value > 0.0F ? value : nan_value;
}

struct Position {
  float x = nan_value, y = nan_value;
  [[nodiscard]] bool is_known() const { return !std::isnan(x) && !std::isnan(y); }
};

Position position(bool is_held, const EyeEvent::Point& at) {
  if (!is_held) return {};
  return {is_value(at[0]) ? at[0] : nan_value, is_value(at[1]) ? at[1] : nan_value};
}

// Whether the record holds a kind of position at a moment: EVT_ bits.
bool holds(const EyeEvent& event, int moment, int kind) {
  return (event.read & (moment | kind)) == (moment | kind);
}

// A head-pose block of an event brings gaze at every moment.
bool holds_gaze(const EyeEvent& event, int moment) {
  return (event.read & EVT_HEAD_POSE) != 0 || holds(event, moment, EVT_GAZE);
}

bool holds_href(const EyeEvent& event, int moment) {
  return holds(event, moment, EVT_HREF);
}

// Raw positions stand where gaze stands when there is gaze.
bool holds_raw(const EyeEvent& event, int moment) {
  return holds(event, moment, EVT_PUPIL_POS) && !holds_gaze(event, moment);
}

float resolution_of(float start, float end) {
  if (is_resolution(start) && is_resolution(end)) return (start + end) * 0.5F;
  if (is_resolution(start)) return start;
  return is_resolution(end) ? end : nan_value;
}

// Degrees between two head-referenced positions.
float href_angle(Position start, Position end) {
  if (!start.is_known() || !end.is_known()) return nan_value;
  const double sx = start.x, sy = start.y, ex = end.x, ey = end.y;
  constexpr double square = GZD_HREF_DISTANCE * GZD_HREF_DISTANCE;
  const double dot = sx * ex + sy * ey + square;
  const double lengths =
      std::sqrt(sx * sx + sy * sy + square) * std::sqrt(ex * ex + ey * ey + square);
  return static_cast<float>(std::acos(std::clamp(dot / lengths, -1.0, 1.0)) * degrees_per_radian);
}

struct PositionColumns {
  Slot<float> x, y;
  void set(std::size_t row, Position value) const {
    x.set(row, value.x);
    y.set(row, value.y);
  }
};

PositionColumns position_columns(const Rows& rows, const std::string& prefix) {
  return {rows.slot<float>(prefix + "x"), rows.slot<float>(prefix + "y")};
}

// Mean of a fixation, start and end of a saccade, of one kind of position.
struct Positions {
  Position mean, start, end;
};

struct PositionGroup {
  PositionColumns mean, start, end;
  void set(std::size_t row, const Positions& values) const {
    mean.set(row, values.mean);
    start.set(row, values.start);
    end.set(row, values.end);
  }
};

PositionGroup position_group(const Rows& rows, const std::string& prefix) {
  return {position_columns(rows, prefix), position_columns(rows, prefix + "start_"),
          position_columns(rows, prefix + "end_")};
}

// Those of one kind; `holds` tells whether the record holds it at a moment.
template <class Holds>
Positions positions_of(const EyeEvent& e, const EyeEvent::Point& first, const EyeEvent::Point& end,
                       Holds holds) {
  if (e.type == EventType::fixation)
    return {position(holds(e, EVT_AVERAGE_POSITION), first), {}, {}};
  if (e.type != EventType::saccade) return {};
  return {
      {}, position(holds(e, EVT_START_POSITION), first), position(holds(e, EVT_END_POSITION), end)};
}

Positions gaze_of(const EyeEvent& e) {
  return positions_of(e, e.gaze, e.gaze_end, &holds_gaze);
}

Positions raw_of(const EyeEvent& e) {
  return positions_of(e, e.gaze, e.gaze_end, &holds_raw);
}

Positions href_of(const EyeEvent& e) {
  return positions_of(e, e.href, e.href_end, &holds_href);
}

// First and last sample, the last one's period included.
double duration_of(const EyeEvent& event) {
  return static_cast<double>(event.end) - static_cast<double>(event.start) +
         static_cast<double>(event.period);
}

// The rows of one type, or of all.
std::optional<EventType> type_of(Table table) {
  if (table == Table::fixations) return EventType::fixation;
  if (table == Table::saccades) return EventType::saccade;
  if (table == Table::blinks) return EventType::blink;
  return std::nullopt;
}

class EventRows final : public RowBuilder {
 public:
  EventRows(Recording& recording, const Request& request)
      : RowBuilder(want_ended_events, request),
        outline_(recording.outline()),
        type_(type_of(request.table)),
        eye_(request.eye) {}

  void bind(Rows& rows) override;
  void take(ElementWalk& walk, Rows& rows) override;
  [[nodiscard]] bool is_known() const override { return outline_.ended.has_value(); }
  [[nodiscard]] bool take_known(Rows& rows) override;

 private:
  void take_event(const EyeEvent& event, Rows& rows);
  [[nodiscard]] bool is_wanted(const EyeEvent& event, std::int32_t trial) const;
  void set_times(std::size_t row, const EyeEvent& event) const;
  void set_velocities(std::size_t row, const EyeEvent& event) const;
  void set_positions(std::size_t row, const EyeEvent& event) const;
  void set_blink(std::size_t row, const EyeEvent& event) const;

  Outline& outline_;
  std::optional<EventType> type_;
  std::optional<Eye> eye_;
  Slot<std::int32_t> block_, trial_;
  Slot<std::uint8_t> eye_column_, type_column_, has_blink_;
  Slot<double> onset_, offset_, duration_;
  Slot<float> pupil_, amplitude_, peak_, average_, href_amplitude_;
  PositionColumns resolution_;
  PositionGroup gaze_, href_, raw_;
  std::size_t taken_ = 0;  // of the known ones
};

void EventRows::bind(Rows& rows) {
  block_ = rows.slot<std::int32_t>("block");
  trial_ = rows.slot<std::int32_t>("trial");
  eye_column_ = rows.slot<std::uint8_t>("eye");
  type_column_ = rows.slot<std::uint8_t>("type");
  has_blink_ = rows.slot<std::uint8_t>("has_blink");
  onset_ = rows.slot<double>("onset");
  offset_ = rows.slot<double>("offset");
  duration_ = rows.slot<double>("duration");
  pupil_ = rows.slot<float>("pupil");
  amplitude_ = rows.slot<float>("amplitude");
  peak_ = rows.slot<float>("peak_velocity");
  average_ = rows.slot<float>("average_velocity");
  href_amplitude_ = rows.slot<float>("href_amplitude");
  resolution_ = position_columns(rows, "resolution_");
  gaze_ = position_group(rows, "");
  href_ = position_group(rows, "href_");
  raw_ = position_group(rows, "raw_");
}

bool EventRows::is_wanted(const EyeEvent& event, std::int32_t trial) const {
  return (!type_ || *type_ == event.type) &&
         (!eye_ || static_cast<std::uint8_t>(*eye_) == event.side) && accepts(event.start, trial);
}

void EventRows::take(ElementWalk& walk, Rows& rows) {
  if (is_ended_event(walk.element().code))
    take_event({walk.element().record->fe, walk.period()}, rows);
}

bool EventRows::take_known(Rows& rows) {
  if (taken_ == outline_.ended->size()) return false;
  take_event((*outline_.ended)[taken_++], rows);
  return true;
}

void EventRows::take_event(const EyeEvent& event, Rows& rows) {
  const std::int32_t trial = outline_.trials.at(event.start);
  if (!is_wanted(event, trial)) return;
  const std::size_t row = rows.begin_row();
  set_number(block_, row, outline_.blocks.at(event.start));
  set_number(trial_, row, trial);
  eye_column_.set(row, event.side);
  type_column_.set(row, static_cast<std::uint8_t>(event.type));
  set_times(row, event);
  set_velocities(row, event);
  set_positions(row, event);
  set_blink(row, event);
}

void EventRows::set_times(std::size_t row, const EyeEvent& event) const {
  onset_.set(row, event.start);
  offset_.set(row, event.end);
  duration_.set(row, duration_of(event));
}

// By the resolution when one is recorded, else by the average velocity.
float amplitude_of(const EyeEvent& event, Position resolution) {
  if (event.type != EventType::saccade) return nan_value;
  const Positions gaze = gaze_of(event);
  if ((event.read & EVT_RESOLUTION) != 0)
    return hypotf((gaze.start.x - gaze.end.x) / resolution.x,
                  (gaze.start.y - gaze.end.y) / resolution.y);
  const double duration = duration_of(event);
  if ((event.read & EVT_VELOCITY) == 0 || duration < 0) return nan_value;
  return static_cast<float>(duration / ms_per_second *
                            static_cast<double>(above_zero_or_null(event.average_velocity)));
}

void EventRows::set_velocities(std::size_t row, const EyeEvent& event) const {
  const Position resolution{resolution_of(event.resolution[0], event.resolution_end[0]),
                            resolution_of(event.resolution[1], event.resolution_end[1])};
  resolution_.set(row, resolution);
  amplitude_.set(row, amplitude_of(event, resolution));
  peak_.set(row, above_zero_or_null(event.peak_velocity));
  average_.set(row, above_zero_or_null(event.average_velocity));
}

void EventRows::set_positions(std::size_t row, const EyeEvent& event) const {
  const bool is_fixation = event.type == EventType::fixation;
  pupil_.set(row, is_fixation ? above_zero_or_null(event.pupil) : nan_value);
  gaze_.set(row, gaze_of(event));
  raw_.set(row, raw_of(event));
  const Positions href = href_of(event);
  href_.set(row, href);
  href_amplitude_.set(row, href_angle(href.start, href.end));
}

void EventRows::set_blink(std::size_t row, const EyeEvent& event) const {
  if (event.type != EventType::saccade)
    has_blink_.set_null(row);
  else
    has_blink_.set(row, outline_.blinks[event.side].lies_in(event.start, event.end) ? 1 : 0);
}

}  // namespace

std::unique_ptr<RowBuilder> make_event_rows(Recording& recording, const Request& request) {
  return std::make_unique<EventRows>(recording, request);
}

}  // namespace gzdtables
