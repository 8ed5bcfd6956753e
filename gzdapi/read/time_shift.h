// Moves the times of recordings that begin at very large times to near 0.
#ifndef GZDAPI_TIME_SHIFT_H
#define GZDAPI_TIME_SHIFT_H

#include "gzd_data.h"

namespace gzd {

// The first record handed out decides whether the times of a file are shifted.
class TimeShift {
 public:
  explicit TimeShift(bool disabled) : neverShifts_(disabled), disableTimeFix_(disabled) {}

  // The next record handed out decides anew.
  void forgetFirst() { *this = TimeShift(neverShifts_); }

  // True when no time of the file will be shifted.
  [[nodiscard]] bool isOff() const { return disableTimeFix_; }
  // Shifts the times of a record of the given element type. `minTime` and `maxTime` are the time of
  // the file's first record and its largest.
  void adjustTimes(ALLF_DATA& d, int type, UINT32 minTime, UINT32 maxTime) {
    if (!disableTimeFix_) shift(d, type, minTime, maxTime);
  }

  // The time on the file's own clock of a time that was handed out.
  [[nodiscard]] UINT32 recordedTime(UINT32 time, UINT32 minTime) const {
    return firsttime_ != 0 && !disableTimeFix_ ? time + minTime : time;
  }

 private:
  void shift(ALLF_DATA& d, int type, UINT32 minTime, UINT32 maxTime);
  bool decide(UINT32 first, UINT32 maxTime, const char* announcement);

  bool neverShifts_;
  bool disableTimeFix_;
  UINT32 firsttime_ = 0;  // of the first record handed out; 0 until there was one
};

}  // namespace gzd

#endif
