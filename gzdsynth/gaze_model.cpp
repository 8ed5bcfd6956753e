// A fixation drifts from one point to another close by. It ends in a saccade to a new target or,
// now and then, in a blink, after which it goes on where it was. A saccade runs along a
// minimum-jerk path whose duration follows the main sequence. Both eyes share the path; each has
// its own noise, and they differ by a small constant disparity. Durations are whole samples, so
// that a phase begins and ends with a sample.
#include "gaze_model.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace gzdsynth {

namespace {

constexpr double full_turn = 2 * std::numbers::pi;

constexpr double saccade_base = 21.0;       // ms
constexpr double saccade_per_degree = 2.2;  // ms
constexpr double peak_over_mean = 1.875;    // of a minimum-jerk movement
constexpr double smallest_saccade = 1.0;    // degrees
constexpr double field_x = 12.0, field_y = 8.5;
constexpr double gaze_noise = 0.02;
constexpr double gaze_drift = 0.12;
constexpr double eye_disparity = 0.25;
constexpr double fixation_speed = 4.0, fixation_speed_spread = 1.2;
constexpr double lid_pull = 2.0;  // degrees downwards while the lid closes
constexpr double blink_chance = 0.08;
constexpr double mean_pupil = 900.0, right_pupil_ratio = 0.96, pupil_noise = 2.0;
constexpr double closed_pupil = 0.3;  // part of the pupil still seen before it is lost

// Position and speed of a minimum-jerk movement from 0 to 1 at part u of its time.
double minimum_jerk(double u) {
  return u * u * u * (10 + u * (-15 + 6 * u));
}
double minimum_jerk_speed(double u) {
  return 30 * u * u * (1 - u) * (1 - u);
}

}  // namespace

double saccade_duration(double amplitude) {
  return saccade_base + saccade_per_degree * amplitude;
}

double saccade_peak_speed(double amplitude) {
  return peak_over_mean * amplitude / (saccade_duration(amplitude) / 1000);
}

GazeModel::GazeModel(std::uint64_t seed, int rate) : random_(seed), rate_(rate) {
  pupilPhase_ = random_.uniform(0, full_turn);
  headPhase_ = random_.uniform(0, full_turn);
  restart();
}

void GazeModel::restart() {
  to_ = {random_.normal(), random_.normal()};
  start_fixation();
}

void GazeModel::enter(Phase phase, double milliseconds) {
  phase_ = phase;
  tick_ = 0;
  length_ = std::max(1, static_cast<int>(std::lround(milliseconds * rate_ / 1000)));
}

void GazeModel::start_fixation() {
  from_ = to_;
  to_.x += random_.uniform(-gaze_drift, gaze_drift);
  to_.y += random_.uniform(-gaze_drift, gaze_drift);
  enter(Phase::Fixation, random_.uniform(150, 500));
}

GazeModel::Point GazeModel::pick_target() {
  Point target;
  do {
    target = {random_.uniform(-field_x, field_x), random_.uniform(-field_y, field_y)};
  } while (std::hypot(target.x - to_.x, target.y - to_.y) < smallest_saccade);
  return target;
}

void GazeModel::leave_fixation() {
  from_ = to_;
  if (random_.uniform() < blink_chance) {
    enter(Phase::Closing, 40);
  } else {
    to_ = pick_target();
    enter(Phase::Saccade, saccade_duration(std::hypot(to_.x - from_.x, to_.y - from_.y)));
  }
}

void GazeModel::enter_next_phase() {
  switch (phase_) {
    case Phase::Fixation:
      return leave_fixation();
    case Phase::Closing:
      return enter(Phase::Lost, random_.uniform(70, 180));
    case Phase::Lost:
      return enter(Phase::Opening, 50);
    case Phase::Saccade:
    case Phase::Opening:
      return start_fixation();
  }
}

double GazeModel::progress() const {
  return (tick_ + 0.5) / length_;
}

double GazeModel::pupil_now() const {
  const double t = seconds();
  return mean_pupil * (1 + 0.07 * std::sin(full_turn * 0.31 * t + pupilPhase_) +
                       0.03 * std::sin(full_turn * 0.83 * t + 2 * pupilPhase_));
}

HeadState GazeModel::head_now() const {
  const double slow = std::sin(full_turn * 0.05 * seconds() + headPhase_);
  const double quick = std::sin(full_turn * 0.21 * seconds() + 3 * headPhase_);
  return {{2.0 * slow, 3.0 * quick, 0.8 * (slow + quick)},
          {12.0 * quick, 6.0 * slow, 600.0 + 9.0 * (slow - quick)}};
}

void GazeModel::look(GazeState& state, Point gaze) {
  const double pupil = pupil_now();
  for (std::size_t eye = 0; eye < 2; ++eye) {
    const double side = eye == 0 ? -0.5 : 0.5;
    state.eyes[eye].x = gaze.x + side * eye_disparity + gaze_noise * random_.normal();
    state.eyes[eye].y = gaze.y + gaze_noise * random_.normal();
    state.eyes[eye].pupil = pupil * (eye == 0 ? 1 : right_pupil_ratio);
    state.eyes[eye].pupil += pupil_noise * random_.normal();
  }
}

void GazeModel::place(GazeState& state) {
  const double u = progress();
  const double way = std::hypot(to_.x - from_.x, to_.y - from_.y);
  const bool saccade = phase_ == Phase::Saccade;
  const bool lid = phase_ == Phase::Closing || phase_ == Phase::Opening;
  // How far the lid is closed: 0 open, 1 just before the pupil is lost.
  const double closed = lid ? minimum_jerk(phase_ == Phase::Closing ? u : 1 - u) : 0;

  const double part = saccade ? minimum_jerk(u) : u;
  look(state, {from_.x + part * (to_.x - from_.x),
               from_.y + part * (to_.y - from_.y) + lid_pull * closed});
  for (EyeState& eye : state.eyes) eye.pupil *= 1 - (1 - closed_pupil) * closed;

  const double phaseSeconds = length_ / rate_;
  if (saccade) {
    state.speed = minimum_jerk_speed(u) * way / phaseSeconds;
  } else if (lid) {
    state.speed = minimum_jerk_speed(u) * lid_pull / phaseSeconds;
  } else {
    state.speed = fixation_speed + fixation_speed_spread * random_.normal();
  }
}

GazeState GazeModel::next() {
  if (tick_ == length_) enter_next_phase();
  GazeState state;
  state.phase = phase_;
  state.head = head_now();
  if (phase_ != Phase::Lost) place(state);
  ++tick_;
  ++clock_;
  return state;
}

}  // namespace gzdsynth
