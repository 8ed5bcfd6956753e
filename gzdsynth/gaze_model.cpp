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

constexpr double kTurn = 2 * std::numbers::pi;

constexpr double kSaccadeBase = 21.0;      // ms
constexpr double kSaccadePerDegree = 2.2;  // ms
constexpr double kPeakOverMean = 1.875;    // of a minimum-jerk movement
constexpr double kSmallestSaccade = 1.0;   // degrees
constexpr double kFieldX = 12.0, kFieldY = 8.5;
constexpr double kNoise = 0.02;
constexpr double kDrift = 0.12;
constexpr double kDisparity = 0.25;
constexpr double kFixationSpeed = 4.0, kFixationSpeedSpread = 1.2;
constexpr double kLidPull = 2.0;  // degrees downwards while the lid closes
constexpr double kBlinkChance = 0.08;
constexpr double kPupil = 900.0, kRightPupilRatio = 0.96, kPupilNoise = 2.0;
constexpr double kClosedPupil = 0.3;  // part of the pupil still seen before it is lost

// Position and speed of a minimum-jerk movement from 0 to 1 at part u of its time.
double minimumJerk(double u) {
  return u * u * u * (10 + u * (-15 + 6 * u));
}
double minimumJerkSpeed(double u) {
  return 30 * u * u * (1 - u) * (1 - u);
}

}  // namespace

double saccadeDuration(double amplitude) {
  return kSaccadeBase + kSaccadePerDegree * amplitude;
}

double saccadePeakSpeed(double amplitude) {
  return kPeakOverMean * amplitude / (saccadeDuration(amplitude) / 1000);
}

GazeModel::GazeModel(std::uint64_t seed, int rate) : random_(seed), rate_(rate) {
  pupilPhase_ = random_.uniform(0, kTurn);
  headPhase_ = random_.uniform(0, kTurn);
  restart();
}

void GazeModel::restart() {
  to_ = {random_.normal(), random_.normal()};
  startFixation();
}

void GazeModel::enter(Phase phase, double milliseconds) {
  phase_ = phase;
  tick_ = 0;
  length_ = std::max(1, static_cast<int>(std::lround(milliseconds * rate_ / 1000)));
}

void GazeModel::startFixation() {
  from_ = to_;
  to_.x += random_.uniform(-kDrift, kDrift);
  to_.y += random_.uniform(-kDrift, kDrift);
  enter(Phase::kFixation, random_.uniform(150, 500));
}

GazeModel::Point GazeModel::pickTarget() {
  Point target;
  do {
    target = {random_.uniform(-kFieldX, kFieldX), random_.uniform(-kFieldY, kFieldY)};
  } while (std::hypot(target.x - to_.x, target.y - to_.y) < kSmallestSaccade);
  return target;
}

void GazeModel::leaveFixation() {
  from_ = to_;
  if (random_.uniform() < kBlinkChance) {
    enter(Phase::kClosing, 40);
  } else {
    to_ = pickTarget();
    enter(Phase::kSaccade, saccadeDuration(std::hypot(to_.x - from_.x, to_.y - from_.y)));
  }
}

void GazeModel::enterNextPhase() {
  switch (phase_) {
    case Phase::kFixation:
      return leaveFixation();
    case Phase::kClosing:
      return enter(Phase::kLost, random_.uniform(70, 180));
    case Phase::kLost:
      return enter(Phase::kOpening, 50);
    case Phase::kSaccade:
    case Phase::kOpening:
      return startFixation();
  }
}

double GazeModel::progress() const {
  return (tick_ + 0.5) / length_;
}

double GazeModel::pupilNow() const {
  const double t = seconds();
  return kPupil * (1 + 0.07 * std::sin(kTurn * 0.31 * t + pupilPhase_) +
                   0.03 * std::sin(kTurn * 0.83 * t + 2 * pupilPhase_));
}

HeadState GazeModel::headNow() const {
  const double slow = std::sin(kTurn * 0.05 * seconds() + headPhase_);
  const double quick = std::sin(kTurn * 0.21 * seconds() + 3 * headPhase_);
  return {{2.0 * slow, 3.0 * quick, 0.8 * (slow + quick)},
          {12.0 * quick, 6.0 * slow, 600.0 + 9.0 * (slow - quick)}};
}

void GazeModel::look(GazeState& state, Point gaze) {
  const double pupil = pupilNow();
  for (std::size_t eye = 0; eye < 2; ++eye) {
    const double side = eye == 0 ? -0.5 : 0.5;
    state.eyes[eye].x = gaze.x + side * kDisparity + kNoise * random_.normal();
    state.eyes[eye].y = gaze.y + kNoise * random_.normal();
    state.eyes[eye].pupil = pupil * (eye == 0 ? 1 : kRightPupilRatio);
    state.eyes[eye].pupil += kPupilNoise * random_.normal();
  }
}

void GazeModel::place(GazeState& state) {
  const double u = progress();
  const double way = std::hypot(to_.x - from_.x, to_.y - from_.y);
  const bool saccade = phase_ == Phase::kSaccade;
  const bool lid = phase_ == Phase::kClosing || phase_ == Phase::kOpening;
  // How far the lid is closed: 0 open, 1 just before the pupil is lost.
  const double closed = lid ? minimumJerk(phase_ == Phase::kClosing ? u : 1 - u) : 0;

  const double part = saccade ? minimumJerk(u) : u;
  look(state, {from_.x + part * (to_.x - from_.x),
               from_.y + part * (to_.y - from_.y) + kLidPull * closed});
  for (EyeState& eye : state.eyes) eye.pupil *= 1 - (1 - kClosedPupil) * closed;

  const double phaseSeconds = length_ / rate_;
  if (saccade) {
    state.speed = minimumJerkSpeed(u) * way / phaseSeconds;
  } else if (lid) {
    state.speed = minimumJerkSpeed(u) * kLidPull / phaseSeconds;
  } else {
    state.speed = kFixationSpeed + kFixationSpeedSpread * random_.normal();
  }
}

GazeState GazeModel::next() {
  if (tick_ == length_) enterNextPhase();
  GazeState state;
  state.phase = phase_;
  state.head = headNow();
  if (phase_ != Phase::kLost) place(state);
  ++tick_;
  ++clock_;
  return state;
}

}  // namespace gzdsynth
