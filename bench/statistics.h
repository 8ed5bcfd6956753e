// Medians.
#ifndef BENCH_STATISTICS_H
#define BENCH_STATISTICS_H

#include <algorithm>
#include <cstddef>
#include <vector>

// The middle value, or the mean of the two in the middle; 0 of none.
inline double median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

// The median of the quotients of values of one round.
inline double median_ratio(const std::vector<double>& above, const std::vector<double>& below) {
  std::vector<double> ratios;
  for (std::size_t i = 0; i < std::min(above.size(), below.size()); ++i)
    ratios.push_back(above[i] / below[i]);
  return median(ratios);
}

#endif
