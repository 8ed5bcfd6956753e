// Which trial a time lies in.
#ifndef GZDAPI_TRIAL_TIMES_H
#define GZDAPI_TRIAL_TIMES_H

#include <vector>

#include "gzd_data.h"

namespace gzd {

// Answers for each time the last of the intervals that contain it. Intervals include both ends and
// may overlap; one that ends before it starts contains nothing.
class TrialTimes {
 public:
  static constexpr UINT32 nowhere = 0xFFFFFFFFu;

  struct Interval {
    UINT32 start;
    UINT32 end;
  };

  // Cost: n log n.
  void build(const std::vector<Interval>& intervals);
  // The place of the interval in the list given, or nowhere. Logarithmic, quick near the time asked
  // for last.
  [[nodiscard]] UINT32 at(UINT32 time) {
    return time >= latest_.from && time < latestEnd_ ? latest_.interval : find(time);
  }

 private:
  // From `from` on, up to the next stretch, `interval` is the answer.
  struct Stretch {
    UINT64 from;
    UINT32 interval;
  };

  UINT32 find(UINT32 time);

  std::vector<Stretch> stretches_;  // ascending
  Stretch latest_ = {0, nowhere};   // found last, up to
  UINT64 latestEnd_ = 0;
};

}  // namespace gzd

#endif
