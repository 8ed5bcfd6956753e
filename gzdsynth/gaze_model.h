// Moves a pair of eyes and a head, one sample after the other.
#ifndef GZDSYNTH_GAZE_MODEL_H
#define GZDSYNTH_GAZE_MODEL_H

#include <array>
#include <cstdint>

#include "random.h"

namespace gzdsynth {

// What the eyes are doing. A blink is a closing lid, lost samples and an opening lid.
enum class Phase { Fixation, Saccade, Closing, Lost, Opening };

// One eye: direction of gaze in degrees right of and below the middle of the screen, pupil area
// in camera units. During Lost the pupil is 0 and the direction has no meaning.
struct EyeState {
  double x = 0, y = 0;
  double pupil = 0;
};

// The head: degrees about x, y, z, and millimetres.
struct HeadState {
  std::array<double, 3> rotation{}, position{};
};

struct GazeState {
  Phase phase = Phase::Fixation;
  double speed = 0;              // of the eyes, degrees per second
  std::array<EyeState, 2> eyes;  // left, right
  HeadState head;
};

// The main sequence: how long a saccade of `amplitude` degrees takes (ms), and the peak of its
// bell-shaped speed (degrees per second).
double saccade_duration(double amplitude);
double saccade_peak_speed(double amplitude);

// The same seed, rate and sequence of calls give the same movements.
class GazeModel {
 public:
  // rate: samples per second.
  GazeModel(std::uint64_t seed, int rate);

  // Begins anew with a fixation near the middle of the screen; clocks of pupil and head run on.
  void restart();

  // The state at the next sample.
  GazeState next();

 private:
  struct Point {
    double x = 0, y = 0;
  };

  void enter(Phase phase, double milliseconds);
  void enter_next_phase();
  void leave_fixation();
  void start_fixation();
  Point pick_target();
  [[nodiscard]] double progress() const;
  void place(GazeState& state);
  void look(GazeState& state, Point gaze);
  [[nodiscard]] double pupil_now() const;
  [[nodiscard]] HeadState head_now() const;
  [[nodiscard]] double seconds() const { return static_cast<double>(clock_) / rate_; }

  Random random_;
  double rate_;
  std::int64_t clock_ = 0;  // samples so far
  Phase phase_ = Phase::Fixation;
  int tick_ = 0, length_ = 0;  // samples into the phase, and its samples
  Point from_, to_;
  double pupilPhase_ = 0, headPhase_ = 0;
};

}  // namespace gzdsynth

#endif
