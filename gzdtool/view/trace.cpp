// Curves as a pyramid: level by level the extents of `fan` neighbours.
#include "view/trace.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tables/reader.h"

namespace gzdtool {

namespace {

using gzdtables::Batch;

constexpr std::size_t fan = 32;
constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();
constexpr Extent no_value{not_a_number, not_a_number};
// While an extent grows: everything is lower and higher than this, but for what is no number.
constexpr Extent nothing_yet{std::numeric_limits<float>::infinity(),
                             -std::numeric_limits<float>::infinity()};
constexpr std::array<const char*, curve_count> curve_columns{"left_x",  "left_y",  "left_pupil",
                                                             "right_x", "right_y", "right_pupil"};
// Samples further apart than this many periods have others missing between them.
constexpr double periods_of_a_gap = 1.9;
constexpr std::size_t most_spans = 20000;

Extent joined(Extent a, Extent b) {
  return {b.low < a.low ? b.low : a.low, b.high > a.high ? b.high : a.high};
}

Extent joined(Extent a, float value) {
  return joined(a, Extent{value, value});
}

// Joins into `sum` what of a level from `begin` to `end` does not fill whole nodes of the level
// above it, and hands the rest to that level by moving the two.
template <class Value>
void join_edges(const std::vector<Value>& level, std::size_t& begin, std::size_t& end,
                Extent& sum) {
  while (begin < end && begin % fan != 0) sum = joined(sum, level[begin++]);
  while (begin < end && end % fan != 0) sum = joined(sum, level[--end]);
  begin /= fan;
  end /= fan;
}

template <class Value>
std::vector<Extent> level_over(const std::vector<Value>& below) {
  std::vector<Extent> level(below.size() / fan);
  auto next = below.begin();
  for (Extent& extent : level) {
    extent = nothing_yet;
    for (std::size_t i = 0; i < fan; ++i) extent = joined(extent, *next++);
  }
  return level;
}

// Lengthens the last span, or begins one.
void add_to(std::vector<Span>& spans, double time, bool is_next) {
  if (is_next && !spans.empty())
    spans.back().second = time;
  else if (spans.size() < most_spans)
    spans.emplace_back(time, time);
}

void append_point(TraceWindow& window, double time) {
  window.times.push_back(time);
  for (auto& extents : window.extents) extents.push_back(no_value);
}

}  // namespace

void Curve::finish() {
  levels_.push_back(level_over(values_));
  while (levels_.back().size() >= fan) levels_.push_back(level_over(levels_.back()));
  is_empty_ = std::isnan(extent(0, values_.size()).low);
}

Extent Curve::extent(std::size_t begin, std::size_t end) const {
  if (is_empty_) return no_value;
  Extent sum = nothing_yet;
  join_edges(values_, begin, end, sum);
  for (const auto& level : levels_) {
    if (begin >= end) break;
    join_edges(level, begin, end, sum);
  }
  return sum.low <= sum.high ? sum : no_value;
}

Trace::Trace(gzdtables::Recording& recording) {
  gzdtables::TableReader reader(recording, {.table = gzdtables::Table::samples});
  const gzdtables::Schema& schema = reader.schema();
  Batch batch;
  while (reader.next(batch)) {
    take_times(batch, schema);
    for (std::size_t i = 0; i < curve_count; ++i) {
      curves_[i].append(column_of(schema, batch, curve_columns[i]).values<float>(), batch.rows);
    }
  }
  for (Curve& curve : curves_) curve.finish();
}

void Trace::take_times(const Batch& batch, const gzdtables::Schema& schema) {
  const double* const times = column_of(schema, batch, "time").values<double>();
  const std::int32_t* const blocks = column_of(schema, batch, "block").values<std::int32_t>();
  const std::uint8_t* const recorded = column_of(schema, batch, "recorded").values<std::uint8_t>();
  for (std::size_t row = 0; row < batch.rows; ++row)
    take_time(times[row], blocks[row], recorded[row] != 0);
}

void Trace::take_time(double time, std::int32_t block, bool is_recorded) {
  if (half_ms_.empty()) start_ = time;
  const std::uint32_t before = half_ms_.empty() ? 0 : half_ms_.back();
  const double since = std::clamp(2.0 * (time - start_), static_cast<double>(before), 4294967295.0);
  const double step = (since - before) / 2.0;
  if (block != block_ || half_ms_.empty()) {
    longest_period_ = 0;
    block_ = block;
  } else if (longest_period_ <= 0) {
    longest_period_ = periods_of_a_gap * step;
  } else if (step > longest_period_) {
    add_to(gaps_, start_ + before / 2.0, false);
    add_to(gaps_, time, true);
  }
  if (!is_recorded) add_to(filled_, time, !is_filled_.empty() && is_filled_.back() != 0);
  half_ms_.push_back(static_cast<std::uint32_t>(since));
  is_filled_.push_back(is_recorded ? 0 : 1);
}

std::size_t Trace::first_from(double time) const {
  const auto place = std::lower_bound(half_ms_.begin(), half_ms_.end(), 2.0 * (time - start_));
  return static_cast<std::size_t>(place - half_ms_.begin());
}

TraceWindow Trace::window(double from, double to, std::size_t columns) const {
  // One sample more on either side, so that lines run to the edge.
  const std::size_t begin = std::max<std::size_t>(first_from(from), 1) - 1;
  const std::size_t end = std::min(first_from(to) + 1, samples());
  if (begin >= end || columns == 0) return {};
  return end - begin <= 2 * columns ? every_sample(begin, end) : by_columns(from, to, columns);
}

TraceWindow Trace::every_sample(std::size_t begin, std::size_t end) const {
  TraceWindow window;
  const double usual = (time_at(end - 1) - time_at(begin)) / static_cast<double>(end - begin);
  for (std::size_t i = begin; i < end; ++i) {
    const double step = i == begin ? 0 : time_at(i) - time_at(i - 1);
    if (step > 2 * usual + 1) append_point(window, time_at(i) - step / 2);
    window.times.push_back(time_at(i));
    for (std::size_t curve = 0; curve < curve_count; ++curve)
      window.extents[curve].push_back({curves_[curve].at(i), curves_[curve].at(i)});
  }
  return window;
}

TraceWindow Trace::by_columns(double from, double to, std::size_t columns) const {
  TraceWindow window;
  const double width = (to - from) / static_cast<double>(columns);
  std::size_t begin = first_from(from);
  for (std::size_t column = 0; column < columns; ++column) {
    const double start = from + width * static_cast<double>(column);
    const std::size_t end = std::max(begin, first_from(start + width));
    window.times.push_back(start + width / 2);
    for (std::size_t curve = 0; curve < curve_count; ++curve)
      window.extents[curve].push_back(curves_[curve].extent(begin, end));
    begin = end;
  }
  return window;
}

std::vector<LossBin> Trace::loss(std::size_t bins) const {
  std::vector<LossBin> all(bins);
  if (half_ms_.empty()) return all;
  const double per_bin = (half_ms_.back() + 1.0) / static_cast<double>(bins);
  std::size_t begin = 0;
  for (std::size_t i = 0; i < bins; ++i) {
    const double next = start_ + static_cast<double>(i + 1) * per_bin / 2.0;
    const std::size_t end = std::max(begin, first_from(next));
    all[i] = losses(begin, end);
    begin = end;
  }
  return all;
}

LossBin Trace::losses(std::size_t begin, std::size_t end) const {
  LossBin sum;
  for (std::size_t i = begin; i < end; ++i) {
    const std::int64_t is_recorded = 1 - is_filled_[i];
    sum.recorded += is_recorded;
    for (const std::size_t eye : {0, 1})
      sum.lost[eye] += is_recorded * static_cast<std::int64_t>(std::isnan(curves_[3 * eye].at(i)));
  }
  sum.filled = static_cast<std::int64_t>(end - begin) - sum.recorded;
  return sum;
}

}  // namespace gzdtool
