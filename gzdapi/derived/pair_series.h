// Pairs of values of queued samples, side by side: positions of one eye in one coordinate system,
// or resolutions. Velocities are computed from them.
#ifndef GZDAPI_PAIR_SERIES_H
#define GZDAPI_PAIR_SERIES_H

#include <algorithm>
#include <array>

#include "derived/velocity.h"
#include "gzd_data.h"

namespace gzd {

// The x and the y values of samples in a row, from one of them on.
struct PairsFrom {
  const float* x;
  const float* y;
};

class PairSeries {
 public:
  static constexpr int series_capacity = 512;
  static constexpr int series_reach = velocity_reach;

  PairSeries() { clear(); }

  void clear() {
    x_.fill(MISSING_DATA);
    y_.fill(MISSING_DATA);
    count_ = 0;
  }
  // Appends a pair; the series is not full.
  void append(float xValue, float yValue) {
    x_[place(count_)] = xValue;
    y_[place(count_)] = yValue;
    ++count_;
  }
  // Takes off the oldest `dropped` pairs, or the newest.
  void dropOldest(int dropped) {
    shift(x_, dropped);
    shift(y_, dropped);
    count_ -= dropped;
  }
  void dropNewest() {
    --count_;
    x_[place(count_)] = y_[place(count_)] = MISSING_DATA;
  }

  // The pairs from slot `slot` on. Those up to series_reach before it and after the newest one can
  // be read too, MISSING_DATA beyond the ends.
  [[nodiscard]] PairsFrom from(int slot) const { return {&x_[place(slot)], &y_[place(slot)]}; }

 private:
  using Values = std::array<float, series_reach + series_capacity + series_reach>;

  static std::size_t place(int slot) { return static_cast<std::size_t>(slot + series_reach); }
  void shift(Values& values, int dropped) const {
    const auto first = values.begin() + series_reach;
    const auto end = std::copy(first + dropped, first + count_, first);
    std::fill(end, first + count_, MISSING_DATA);
  }

  Values x_;
  Values y_;
  int count_ = 0;
};

}  // namespace gzd

#endif
