// The samples of a recording as curves at any zoom: the lowest and the highest value of any stretch
// of time, in logarithmic time.
#ifndef GZDTOOL_TRACE_H
#define GZDTOOL_TRACE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "tables/column.h"
#include "tables/recording.h"

namespace gzdtool {

// Lowest and highest of some values; both NaN of none.
struct Extent {
  float low, high;
};

// One curve over all samples: NaN is a value that was lost or not recorded.
class Curve {
 public:
  void append(const float* values, std::size_t count) {
    values_.insert(values_.end(), values, values + count);
  }
  // Makes the levels over the values; called once, when all are there.
  void finish();
  [[nodiscard]] float at(std::size_t sample) const { return values_[sample]; }
  // Over the samples from `begin` to before `end`.
  [[nodiscard]] Extent extent(std::size_t begin, std::size_t end) const;
  [[nodiscard]] bool is_empty() const { return is_empty_; }

 private:
  std::vector<float> values_;
  // Each level has an extent for every `fan` values or extents of the level below.
  std::vector<std::vector<Extent>> levels_;
  bool is_empty_ = false;
};

// left x, y, pupil, right x, y, pupil
constexpr std::size_t curve_count = 6;

// What is drawn of a stretch of time: points in the order of time, and of each curve the lowest and
// the highest value there. Where curves are interrupted both are NaN.
struct TraceWindow {
  std::vector<double> times;  // ms
  std::array<std::vector<Extent>, curve_count> extents;
};

// Samples in one of many equal stretches of the recording.
struct LossBin {
  std::int64_t recorded = 0, filled = 0;
  std::array<std::int64_t, 2> lost{};  // by eye, recorded samples without a position
};

using Span = std::pair<double, double>;  // first and last time (ms)

class Trace {
 public:
  // Walks over all samples. Throws gzdtables::ReadError.
  explicit Trace(gzdtables::Recording& recording);

  [[nodiscard]] std::size_t samples() const { return half_ms_.size(); }
  // Time of the first and of the last sample (ms); 0 without samples.
  [[nodiscard]] double first() const { return half_ms_.empty() ? 0 : time_at(0); }
  [[nodiscard]] double last() const { return half_ms_.empty() ? 0 : time_at(samples() - 1); }
  [[nodiscard]] bool has_curve(std::size_t curve) const { return !curves_[curve].is_empty(); }

  // The samples between two times (ms): all of them when they are few, otherwise one point for each
  // of `columns` equal stretches.
  [[nodiscard]] TraceWindow window(double from, double to, std::size_t columns) const;
  [[nodiscard]] std::vector<LossBin> loss(std::size_t bins) const;
  // Where the library filled in samples, and where samples of a block are missing.
  [[nodiscard]] const std::vector<Span>& filled() const { return filled_; }
  [[nodiscard]] const std::vector<Span>& gaps() const { return gaps_; }

 private:
  [[nodiscard]] double time_at(std::size_t sample) const {
    return start_ + static_cast<double>(half_ms_[sample]) / 2.0;
  }
  [[nodiscard]] std::size_t first_from(double time) const;
  void take_times(const gzdtables::Batch& batch, const gzdtables::Schema& schema);
  void take_time(double time, std::int32_t block, bool is_recorded);
  [[nodiscard]] LossBin losses(std::size_t begin, std::size_t end) const;
  [[nodiscard]] TraceWindow every_sample(std::size_t begin, std::size_t end) const;
  [[nodiscard]] TraceWindow by_columns(double from, double to, std::size_t columns) const;

  double start_ = 0;
  double longest_period_ = 0;  // ms, of the block at hand: beyond it samples are missing
  std::int32_t block_ = 0;
  std::vector<std::uint32_t> half_ms_;  // since start_, never falling
  std::vector<std::uint8_t> is_filled_;
  std::array<Curve, curve_count> curves_;
  std::vector<Span> filled_, gaps_;
};

}  // namespace gzdtool

#endif
