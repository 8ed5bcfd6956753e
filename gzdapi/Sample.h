// A decoded sample with its place in time.
#ifndef GZDAPI_SAMPLE_H
#define GZDAPI_SAMPLE_H

#include "gzd_data.h"
#include "stamps.h"

// Below this pupil size the pupil counts as lost.
constexpr float LOST_PUPIL_SIZE = 15.0f;

inline UINT16 eye_flag(int eye) {
  return static_cast<UINT16>(eye == GZD_LEFT_EYE ? SMP_LEFT : SMP_RIGHT);
}

class Sample : public FSAMPLE {
 public:
  Sample() : FSAMPLE{} {}

  [[nodiscard]] UINT64 getTimeStamp() const { return timeStamp; }
  [[nodiscard]] UINT32 getTime() const { return time; }
  void updateTimeStamp(UINT64 stamp) {
    timeStamp = stamp;
    time = time_of_stamp(stamp);
  }
  void clear() { *this = Sample(); }

  // The position of one eye in one coordinate system (GZD_POSITION_), MISSING_DATA where there is
  // none. Returns 0 when the sample does not hold that eye, else 1.
  int getSampleData(float* x, float* y, int eye, int type) const;

 private:
  UINT64 timeStamp = 0;  // half-milliseconds
};

#endif
