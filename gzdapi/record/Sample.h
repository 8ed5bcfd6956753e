// A decoded sample with its place in time.
#ifndef GZDAPI_SAMPLE_H
#define GZDAPI_SAMPLE_H

#include "base/stamps.h"
#include "gzd_data.h"

namespace gzd {

// Below this pupil size the pupil counts as lost.
constexpr float lost_pupil_size = 15.0f;

inline UINT16 eye_flag(int eye) {
  return static_cast<UINT16>(eye == GZD_LEFT_EYE ? SMP_LEFT : SMP_RIGHT);
}

// The flags of a sample: the tag of one at an odd stamp tells that it lies half a millisecond after
// its time.
inline UINT16 flags_at(UINT16 tag, UINT64 stamp) {
  return static_cast<UINT16>(tag | ((stamp & 1) != 0 ? SMP_HALF_MS : 0));
}

// The position of one eye in one coordinate system (GZD_POSITION_), MISSING_DATA where there is
// none. Returns 0 when the sample does not hold that eye, else 1.
inline int get_sample_data(const FSAMPLE& s, float* x, float* y, int eye, int type) {
  *x = MISSING_DATA;
  *y = MISSING_DATA;
  if ((s.flags & eye_flag(eye)) == 0) return 0;
  if ((s.flags & SMP_PUPIL_SIZE) != 0 && s.pa[eye] < lost_pupil_size) return 1;
  if (type == GZD_POSITION_GAZE && (s.flags & SMP_GAZE) != 0) {
    *x = s.gx[eye];
    *y = s.gy[eye];
  } else if (type == GZD_POSITION_HREF && (s.flags & SMP_HREF) != 0) {
    *x = s.hx[eye];
    *y = s.hy[eye];
  } else if (type == GZD_POSITION_PUPIL && (s.flags & SMP_PUPIL_POS) != 0) {
    *x = s.px[eye];
    *y = s.py[eye];
  }
  return 1;
}

class Sample : public FSAMPLE {
 public:
  Sample() : FSAMPLE() {}

  [[nodiscard]] UINT64 getTimeStamp() const { return timeStamp_; }
  [[nodiscard]] UINT32 getTime() const { return time; }
  void updateTimeStamp(UINT64 stamp) {
    timeStamp_ = stamp;
    time = time_of_stamp(stamp);
  }
  void clear() { *this = Sample(); }

  // get_sample_data of this sample.
  int getSampleData(float* x, float* y, int eye, int type) const {
    return get_sample_data(*this, x, y, eye, type);
  }

  // The layout tag of the records for which what they do not hold is preset here; 0 for none.
  UINT16 presetFor = 0;

 private:
  UINT64 timeStamp_ = 0;  // half-milliseconds
};

}  // namespace gzd

#endif
