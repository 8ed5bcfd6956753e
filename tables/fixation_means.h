// Means of fixations, as recorded and over the samples inside.
#ifndef GZDTABLES_FIXATION_MEANS_H
#define GZDTABLES_FIXATION_MEANS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "examination.h"
#include "sample_state.h"

namespace gzdtables {

// Takes starts, samples and ends of fixations in the order of the walk. A fixation without a start
// is not compared.
class FixationMeans {
 public:
  void begin_fixation(const FEVENT& start);
  void take_sample(const FSAMPLE& sample, const Presence& there) {
    for (const std::size_t eye : {0, 1}) {
      Sums& sums = sums_[eye];
      if (!sums.is_open || !there.position(eye) || !is_value(sample.gx[eye])) continue;
      if (!is_value(sample.gy[eye])) continue;
      ++sums.count;
      sums.x += static_cast<double>(sample.gx[eye]);
      sums.y += static_cast<double>(sample.gy[eye]);
    }
  }
  void end_fixation(const FEVENT& fixation);

  // The shift of one eye over all that was compared.
  [[nodiscard]] FixationShift shift(std::size_t eye) const;

 private:
  // Over the samples of the fixation at hand.
  struct Sums {
    bool is_open = false;
    std::int64_t count = 0;
    double x = 0, y = 0;
  };
  struct Shifts {
    std::vector<float> x, y;
    double limits = 0;  // sum of half a degree at each fixation
  };

  std::array<Sums, 2> sums_;
  std::array<Shifts, 2> shifts_;
};

}  // namespace gzdtables

#endif
