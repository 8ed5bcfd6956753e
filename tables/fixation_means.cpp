// Differences of means, and their medians.
#include "fixation_means.h"

#include <algorithm>
#include <cmath>

#include "element_walk.h"

namespace gzdtables {

namespace {

constexpr double half_degree_without_resolution = 15.0;  // px

double median_of(std::vector<float> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return static_cast<double>(*middle);
}

bool has_mean_gaze(const FEVENT& fixation) {
  constexpr unsigned needed = EVT_AVERAGE_POSITION | EVT_GAZE;
  return (fixation.read & needed) == needed && is_value(fixation.gavx) && is_value(fixation.gavy);
}

double half_degree_of(const FEVENT& fixation) {
  const float resolution = fixation.supd_x;
  const bool is_known = (fixation.read & EVT_RESOLUTION) != 0 && is_resolution(resolution);
  return is_known ? static_cast<double>(resolution) / 2 : half_degree_without_resolution;
}

}  // namespace

void FixationMeans::begin_fixation(const FEVENT& start) {
  sums_.at(side_of(start)) = {.is_open = true};
}

void FixationMeans::end_fixation(const FEVENT& fixation) {
  const std::size_t eye = side_of(fixation);
  const Sums sums = sums_.at(eye);
  sums_.at(eye) = {};
  if (sums.count == 0 || !has_mean_gaze(fixation)) return;
  const auto count = static_cast<double>(sums.count);
  Shifts& shifts = shifts_.at(eye);
  shifts.x.push_back(static_cast<float>(static_cast<double>(fixation.gavx) - sums.x / count));
  shifts.y.push_back(static_cast<float>(static_cast<double>(fixation.gavy) - sums.y / count));
  shifts.limits += half_degree_of(fixation);
}

FixationShift FixationMeans::shift(std::size_t eye) const {
  const Shifts& shifts = shifts_.at(eye);
  FixationShift result;
  result.compared = static_cast<std::int64_t>(shifts.x.size());
  if (result.compared == 0) return result;
  result.x = median_of(shifts.x);
  result.y = median_of(shifts.y);
  const double limit = shifts.limits / static_cast<double>(shifts.x.size());
  result.is_off = std::hypot(result.x, result.y) > limit;
  return result;
}

}  // namespace gzdtables
