// The two time bases: records carry milliseconds (`time`), the index half-milliseconds (`stamp`).
#ifndef GZDAPI_STAMPS_H
#define GZDAPI_STAMPS_H

#include "gzd_data.h"

namespace gzd {

inline UINT64 stamp_of_time(UINT32 time) {
  return UINT64{time} * 2;
}
inline UINT32 time_of_stamp(UINT64 stamp) {
  return static_cast<UINT32>(stamp >> 1);
}

inline UINT64 stamp_distance(UINT64 a, UINT64 b) {
  return a > b ? a - b : b - a;
}

// Stamps from one sample to the next: 8, 4, 2 or 1.
inline int stamps_per_sample(float sample_rate) {
  return sample_rate > 0.0f ? static_cast<int>(2000.0 / static_cast<double>(sample_rate)) : 0;
}

}  // namespace gzd

#endif
