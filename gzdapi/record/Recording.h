// One boundary of a recording block, its start or its end.
#ifndef GZDAPI_RECORDING_H
#define GZDAPI_RECORDING_H

#include "base/stamps.h"
#include "gzd_data.h"

namespace gzd {

constexpr int default_window_width = 176;
constexpr int default_window_height = 190;

class Recording : public RECORDINGS {
 public:
  Recording() : RECORDINGS{} {}

  [[nodiscard]] RECORDINGS* getRecording() { return this; }
  [[nodiscard]] bool isStart() const { return state != GZD_BLOCK_END; }
  [[nodiscard]] bool timeCollisionDetected() const { return time_collision_detected; }

  // The stamp by which the boundary is ordered; of colliding blocks, a start lies 3 and an end 1
  // after its own.
  [[nodiscard]] UINT64 getTime() const {
    if (!time_collision_detected) return timestamp;
    return timestamp + (isStart() ? 3 : 1);
  }
  void updateTime(UINT64 stamp) {
    timestamp = stamp;
    time = time_of_stamp(stamp);
  }

  [[nodiscard]] float getSampleRate() const { return sample_rate; }
  [[nodiscard]] float getPrescaler() const { return gaze_prescaler; }
  [[nodiscard]] int getWindowHeight() const { return window_height; }
  [[nodiscard]] int getWindowWidth() const { return window_width; }

  UINT64 timestamp = 0;
  float gaze_prescaler = 0.0f;  // of the samples-start record
  int window_height = default_window_height;
  int window_width = default_window_width;
  bool time_collision_detected = false;
};

}  // namespace gzd

#endif
