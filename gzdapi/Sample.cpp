#include "Sample.h"

int Sample::getSampleData(float* x, float* y, int eye, int type) const {
  *x = MISSING_DATA;
  *y = MISSING_DATA;
  if ((flags & eye_flag(eye)) == 0) return 0;
  if ((flags & SMP_PUPIL_SIZE) != 0 && pa[eye] < LOST_PUPIL_SIZE) return 1;
  if (type == GZD_POSITION_GAZE && (flags & SMP_GAZE) != 0) {
    *x = gx[eye];
    *y = gy[eye];
  } else if (type == GZD_POSITION_HREF && (flags & SMP_HREF) != 0) {
    *x = hx[eye];
    *y = hy[eye];
  } else if (type == GZD_POSITION_PUPIL && (flags & SMP_PUPIL_POS) != 0) {
    *x = px[eye];
    *y = py[eye];
  }
  return 1;
}
