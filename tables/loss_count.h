// Counts of lost samples by eye, and of all that are expected.
#ifndef GZDTABLES_LOSS_COUNT_H
#define GZDTABLES_LOSS_COUNT_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "sample_state.h"

namespace gzdtables {

// How many samples a block has from its first to its last (ms) when none is missing between.
[[nodiscard]] inline std::int64_t expected_samples(double first, double last, double rate) {
  constexpr double ms_per_second = 1000.0;
  const double periods = std::floor((last - first) * rate / ms_per_second);
  return static_cast<std::int64_t>(std::max(periods, 0.0)) + 1;
}

// Recorded samples of blocks that record an eye and a position, packed camera data left out, and
// those of them without a valid position of the first kind that the block records.
class LossCount {
 public:
  // `there`: what of the sample is, in that block.
  void take(const FSAMPLE& sample, const RECORDINGS& block, const Presence& there) {
    const int kind = first_kind(block);
    if (kind == 0 || there.packed()) return;
    for (const std::size_t eye : {0, 1}) {
      if (!block_has(block, eye)) continue;
      ++counted_[eye];
      lost_[eye] += there.position(eye) && has_position(sample, kind, eye) ? 0 : 1;
    }
  }
  [[nodiscard]] std::int64_t lost(std::size_t eye) const { return lost_[eye]; }
  [[nodiscard]] std::int64_t counted(std::size_t eye) const { return counted_[eye]; }

  // The SMP_ bit of the first of gaze, head-referenced and raw positions that a block records.
  [[nodiscard]] static int first_kind(const RECORDINGS& block) {
    for (const int kind : {SMP_GAZE, SMP_HREF, SMP_PUPIL_POS})
      if ((block.sflags & kind) != 0) return kind;
    return 0;
  }

 private:
  static bool has_position(const FSAMPLE& s, int kind, std::size_t eye) {
    if (kind == SMP_GAZE) return is_value(s.gx[eye]) && is_value(s.gy[eye]);
    if (kind == SMP_HREF) return is_value(s.hx[eye]) && is_value(s.hy[eye]);
    return is_value(s.px[eye]) && is_value(s.py[eye]);
  }

  std::array<std::int64_t, 2> lost_{}, counted_{};
};

}  // namespace gzdtables

#endif
