// Rows of `samples`.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "gaze_columns.h"
#include "outline.h"
#include "row_builder.h"
#include "run_column.h"
#include "sample_state.h"

namespace gzdtables {

namespace {

constexpr std::uint32_t no_marker_flags = 0xFFFF8000U;
constexpr int cyclopean = 2;

float resolution_or_null(float value) {
  return is_resolution(value) ? value : nan_value;
}

struct Point {
  Slot<float> x, y;

  void set(std::size_t row, bool is_there, float to_x, float to_y) const {
    x.set(row, kept(is_there, to_x));
    y.set(row, kept(is_there, to_y));
  }
  void set_null(std::size_t row) const { set(row, false, 0, 0); }
  explicit operator bool() const { return static_cast<bool>(x); }
};

Point point(const Rows& rows, const std::string& name) {
  return {rows.slot<float>(name + "_x"), rows.slot<float>(name + "_y")};
}

// Columns of one eye.
struct EyeColumns {
  EyeColumns() = default;
  EyeColumns(const Rows& rows, const std::string& eye)
      : gaze(point(rows, eye.substr(0, eye.size() - 1))),
        href(point(rows, eye + "href")),
        raw(point(rows, eye + "raw")),
        velocity(point(rows, eye + "velocity")),
        fast_velocity(point(rows, eye + "fast_velocity")),
        head_in_space(point(rows, eye + "head_in_space")),
        eye_in_head(point(rows, eye + "eye_in_head")),
        centre(point(rows, eye + "ellipse")),
        pupil(rows.slot<float>(eye + "pupil")),
        major(rows.slot<float>(eye + "ellipse_major")),
        minor(rows.slot<float>(eye + "ellipse_minor")),
        angle(rows.slot<float>(eye + "ellipse_angle")) {}

  Point gaze, href, raw, velocity, fast_velocity, head_in_space, eye_in_head, centre;
  Slot<float> pupil, major, minor, angle;
};

// Columns that come with fields that a sample may lack.
struct OtherColumns {
  OtherColumns() = default;
  explicit OtherColumns(const Rows& rows)
      : resolution(point(rows, "resolution")),
        target(point(rows, "target")),
        head(point(rows, "head")),
        head_in_space(point(rows, "head_in_space")),
        eye_in_head(point(rows, "eye_in_head")),
        head_in_space_resolution(point(rows, "head_in_space_resolution")),
        eye_in_head_resolution(point(rows, "eye_in_head_resolution")),
        rotation(point(rows, "head_rotation")),
        target_distance(rows.slot<float>("target_distance")),
        head_z(rows.slot<float>("head_z")),
        rotation_z(rows.slot<float>("head_rotation_z")),
        marker_flags(rows.slot<std::uint32_t>("head_marker_flags")),
        target_flags(rows.slot<std::uint16_t>("target_flags")),
        input(rows.slot<std::uint16_t>("input")),
        buttons(rows.slot<std::uint16_t>("buttons")),
        status(rows.slot<std::uint16_t>("status")) {}

  Point resolution, target, head, head_in_space, eye_in_head, head_in_space_resolution,
      eye_in_head_resolution, rotation;
  Slot<float> target_distance, head_z, rotation_z;
  Slot<std::uint32_t> marker_flags;
  Slot<std::uint16_t> target_flags, input, buttons, status;
};

void set_word(const Slot<std::uint16_t>& slot, std::size_t row, bool is_there, UINT16 word) {
  is_there ? slot.set(row, word) : slot.set_null(row);
}

// Whether the walk over the samples is the one that makes the outline.
bool lacks_outline(const Recording& recording, const Request& request) {
  return request.has_all_rows && !recording.has_outline();
}

class SampleRows final : public RowBuilder {
 public:
  SampleRows(Recording& recording, const Request& request)
      : RowBuilder(want_samples | (lacks_outline(recording, request) ? want_ended_events : 0U),
                   request),
        recording_(recording),
        makes_outline_(lacks_outline(recording, request)),
        maker_(recording),
        has_targets_(recording.generation() == GZD_TRACKER_FALCON) {
    if (!makes_outline_) static_cast<void>(recording.outline());
  }

  void bind(Rows& rows) override;
  void take(ElementWalk& walk, Rows& rows) override;
  void finish(Rows& rows) override;
  void complete(Rows& rows) override;

 private:
  void take_sample(const ElementWalk& walk, Rows& rows);
  void take_gaze(const ElementWalk& walk, Rows& rows);
  void put_events(std::size_t row, double time) {
    if (time < events_from_ || time >= events_end_) change_events(row, time);
  }
  void put_events_of(std::size_t begin, std::size_t end);
  void change_events(std::size_t row, double time);
  void set_eye(std::size_t row, const FSAMPLE& s, const Presence& there, std::size_t eye) const;
  void set_other_of_eye(std::size_t row, const FSAMPLE& s, const Presence& there,
                        std::size_t eye) const;
  void set_head_of_eye(std::size_t row, const FSAMPLE& s, bool is_there, std::size_t eye) const;
  void set_others(std::size_t row, const FSAMPLE& sample, bool packed) const;
  void set_target(std::size_t row, const FSAMPLE& sample) const;
  void set_head(std::size_t row, const FSAMPLE& sample) const;
  void choose_velocities() const;
  const FSAMPLE& without_fields(const FSAMPLE& filled);

  Recording& recording_;
  // Events are known only behind their samples: either from a walk before this one, or rows get
  // them when all are there.
  bool makes_outline_;
  OutlineMaker maker_;
  bool has_targets_;
  bool has_others_ = false;
  Slot<double> time_;
  RunColumn<std::int32_t, 0> block_, trial_;
  RunColumn<std::uint8_t, 1> recorded_;
  std::array<RunColumn<std::uint8_t, 1>, 2> events_;
  double events_from_ = 0, events_end_ = 0;  // from where to before where the labels put last hold
  GazeColumns gaze_;
  std::array<EyeColumns, 2> eyes_;
  OtherColumns others_;
  FSAMPLE blank_{};
};

void SampleRows::bind(Rows& rows) {
  block_.bind(rows.slot<std::int32_t>("block"));
  trial_.bind(rows.slot<std::int32_t>("trial"));
  time_ = rows.slot<double>("time");
  recorded_.bind(rows.slot<std::uint8_t>("recorded"));
  for (const std::size_t eye : {0, 1}) {
    const std::string name = eye_name[eye];
    eyes_[eye] = EyeColumns(rows, name);
    events_[eye].bind(rows.slot<std::uint8_t>(name + "event"));
  }
  gaze_.bind(rows);
  others_ = OtherColumns(rows);
  has_others_ = rows.schema().fields.back().name != "recorded";
  choose_velocities();
}

void SampleRows::finish(Rows& rows) {
  if (!makes_outline_) return;
  makes_outline_ = false;
  recording_.keep_outline(maker_.finish());
  put_events_of(0, rows.count());
}

void SampleRows::complete(Rows& rows) {
  if (makes_outline_) throw std::logic_error("more samples than were counted");
  const std::size_t end = rows.batch().rows;
  block_.finish(end);
  trial_.finish(end);
  recorded_.finish(end);
  for (auto& event : events_) event.finish(end);
}

void SampleRows::choose_velocities() const {
  const bool normal = eyes_[0].velocity || eyes_[1].velocity;
  const bool fast = eyes_[0].fast_velocity || eyes_[1].fast_velocity;
  gzd_set_velocity_kinds(recording_.handle(),
                         (normal ? GZD_VELOCITY_GAZE : 0U) | (fast ? GZD_VELOCITY_FAST_GAZE : 0U));
}

// A sample that was filled in has nothing but its time: it counts as one of no eye and without any
// field.
const FSAMPLE& SampleRows::without_fields(const FSAMPLE& filled) {
  blank_.time = filled.time;
  blank_.flags = filled.flags & SMP_HALF_MS;
  return blank_;
}

void SampleRows::take(ElementWalk& walk, Rows& rows) {
  if (walk.element().code != GZD_SAMPLE) {
    if (makes_outline_) maker_.take(walk);
    return;
  }
  block_.put(rows.count(), walk.element().block);
  trial_.put(rows.count(), walk.element().trial);
  do {
    take_sample(walk, rows);
    if (!has_others_ && takes_all()) take_gaze(walk, rows);
  } while (!is_full(rows) && walk.next_sample());
}

// The samples like the one just taken that follow it, as far as their gaze can be had at once.
void SampleRows::take_gaze(const ElementWalk& walk, Rows& rows) {
  const unsigned flags = walk.element().record->fs.flags;
  while (!is_full(rows)) {
    const std::size_t row = rows.count();
    const std::size_t count =
        gaze_.fetch(recording_.handle(), row, room_in(rows), flags, walk.eyes());
    if (count == 0) return;
    recorded_.put(row, 2);
    rows.begin_rows(count);
    put_events_of(row, row + count);
  }
}

void SampleRows::put_events_of(std::size_t begin, std::size_t end) {
  if (makes_outline_) return;
  for (std::size_t row = begin; row < end; ++row) put_events(row, gaze_.time(row));
}

void SampleRows::take_sample(const ElementWalk& walk, Rows& rows) {
  const FSAMPLE& announced = walk.element().record->fs;
  const double time = time_of(announced);
  if (!accepts(time, walk.element().trial)) return;
  const std::size_t row = rows.begin_row();
  time_.set(row, time);
  if (!makes_outline_) put_events(row, time);
  const bool recorded = !walk.is_filled(announced);
  const FSAMPLE& sample = recorded ? announced : without_fields(announced);
  recorded_.put(row, recorded ? 2 : 1);
  const Presence there = presence_of(sample, walk.eyes());
  for (const std::size_t eye : {0, 1}) set_eye(row, sample, there, eye);
  if (has_others_) set_others(row, sample, there.packed());
}

void SampleRows::change_events(std::size_t row, double time) {
  std::uint32_t from = 0, to = Timeline::latest;
  for (const std::size_t eye : {0, 1}) {
    Timeline& events = recording_.outline().events[eye];
    events_[eye].put(row, events.at(static_cast<std::uint32_t>(time)));
    from = std::max(from, events.from());
    to = std::min(to, events.to());
  }
  events_from_ = from;
  events_end_ = to + 1.0;
}

void SampleRows::set_eye(std::size_t row, const FSAMPLE& s, const Presence& there,
                         std::size_t eye) const {
  const EyeColumns& to = eyes_[eye];
  to.gaze.set(row, there.position(eye), s.gx[eye], s.gy[eye]);
  to.pupil.set(row, kept(there.pupil(eye), s.pa[eye]));
  if (has_others_) set_other_of_eye(row, s, there, eye);
}

void SampleRows::set_other_of_eye(std::size_t row, const FSAMPLE& s, const Presence& there,
                                  std::size_t eye) const {
  const EyeColumns& to = eyes_[eye];
  const bool position = there.position(eye);
  const bool moving = position && is_value(s.gx[eye]) && is_value(s.gy[eye]);
  to.href.set(row, position, s.hx[eye], s.hy[eye]);
  to.raw.set(row, position, s.px[eye], s.py[eye]);
  to.velocity.set(row, moving, s.gxvel[eye], s.gyvel[eye]);
  to.fast_velocity.set(row, moving, s.fgxvel[eye], s.fgyvel[eye]);
  set_head_of_eye(row, s, there.eye(eye) && (s.flags & SMP_EXTENDED) != 0, eye);
}

void SampleRows::set_head_of_eye(std::size_t row, const FSAMPLE& s, bool is_there,
                                 std::size_t eye) const {
  const EyeColumns& to = eyes_[eye];
  to.head_in_space.set(row, is_there, s.unused_headInSpaceX[eye], s.unused_headInSpaceY[eye]);
  to.eye_in_head.set(row, is_there, s.eyeInHeadX[eye], s.eyeInHeadY[eye]);
  to.centre.set(row, is_there, s.ex[eye], s.ey[eye]);
  to.major.set(row, kept(is_there, s.emajor[eye]));
  to.minor.set(row, kept(is_there, s.eminor[eye]));
  to.angle.set(row, kept(is_there, s.eangle[eye]));
}

void SampleRows::set_others(std::size_t row, const FSAMPLE& s, bool packed) const {
  const bool resolution = !packed && (s.flags & SMP_RESOLUTION) != 0;
  others_.resolution.x.set(row, resolution ? resolution_or_null(s.rx) : nan_value);
  others_.resolution.y.set(row, resolution ? resolution_or_null(s.ry) : nan_value);
  set_word(others_.input, row, (s.flags & SMP_INPUT) != 0 && s.input != NOT_RECORDED_WORD, s.input);
  set_word(others_.buttons, row, (s.flags & SMP_BUTTONS) != 0, s.buttons);
  set_word(others_.status, row, (s.flags & SMP_STATUS) != 0 && s.errors != NOT_RECORDED_WORD,
           s.errors);
  if (others_.target) set_target(row, s);
  if (others_.head) set_head(row, s);
}

void SampleRows::set_target(std::size_t row, const FSAMPLE& s) const {
  constexpr double units_of_word = 10.0;
  const bool is_there =
      has_targets_ && (s.flags & SMP_HEAD_DATA) != 0 &&
      (s.htype == GZD_HTYPE_TARGET_ONE_EYE || s.htype == GZD_HTYPE_TARGET_TWO_EYES);
  const bool has_distance = is_there && is_value(s.hdata[2]);
  others_.target.set(row, is_there, s.hdata[0], s.hdata[1]);
  others_.target_distance.set(
      row, has_distance ? static_cast<float>(s.hdata[2] / units_of_word) : nan_value);
  set_word(others_.target_flags, row, is_there, static_cast<UINT16>(s.hdata[3]));
}

void SampleRows::set_head(std::size_t row, const FSAMPLE& s) const {
  const bool is_there = (s.flags & SMP_EXTENDED) != 0;
  others_.head.set(row, is_there, s.headPosition[0], s.headPosition[1]);
  others_.head_z.set(row, kept(is_there, s.headPosition[2]));
  others_.rotation.set(row, is_there, s.headRotation[0], s.headRotation[1]);
  others_.rotation_z.set(row, kept(is_there, s.headRotation[2]));
  if (is_there && s.headMarkerFlags != no_marker_flags)
    others_.marker_flags.set(row, s.headMarkerFlags);
  else
    others_.marker_flags.set_null(row);
  others_.head_in_space.set(row, is_there, s.headInSpaceX, s.headInSpaceY);
  others_.eye_in_head.set(row, is_there, s.eyeInHeadX[cyclopean], s.eyeInHeadY[cyclopean]);
  others_.head_in_space_resolution.set(row, is_there, s.hrgx, s.hrgy);
  others_.eye_in_head_resolution.set(row, is_there, s.ergx, s.ergy);
}

}  // namespace

std::unique_ptr<RowBuilder> make_sample_rows(Recording& recording, const Request& request) {
  return std::make_unique<SampleRows>(recording, request);
}

}  // namespace gzdtables
