// Turns what the eyes do into the sample that a tracker would store.
#ifndef GZDSYNTH_TRACKER_CAMERA_H
#define GZDSYNTH_TRACKER_CAMERA_H

#include "gaze_model.h"
#include "sample_record.h"
#include "session_settings.h"

namespace gzdsynth {

// Display of 1024 x 768 pixels.
inline constexpr int display_right = 1023, display_bottom = 767;
inline constexpr int velocity_prescale = 10;
// Pupil sizes are scaled from generation 4 on.
inline constexpr int pupil_prescale = 4;

class TrackerCamera {
 public:
  explicit TrackerCamera(const SessionSettings& settings);

  // The SMP_ bits of every sample, SMP_TIME_ABSOLUTE and SMP_HALF_MS aside.
  [[nodiscard]] unsigned sample_flags() const { return flags_; }

  // The fields of a sample; its time, input and buttons are the caller's to set.
  [[nodiscard]] SampleRecord sample(const GazeState& state) const;

  // Replaces positions, pupil and head words of a sample by packed camera data.
  void pack(SampleRecord& sample, const GazeState& state) const;

  // Head, and gaze as pixels, in the units of a head-pose block.
  [[nodiscard]] HeadPose pose(const GazeState& state) const;

 private:
  void fill_eye(SampleRecord& sample, const GazeState& state, std::size_t eye) const;
  void fill_target(SampleRecord& sample, const GazeState& state) const;
  void fill_blocks(SampleRecord& sample, const GazeState& state) const;

  SessionSettings settings_;
  unsigned flags_;
};

}  // namespace gzdsynth

#endif
