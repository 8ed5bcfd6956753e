// A sweep over the starts and ends of all intervals in time order, with the set of those that are
// open; where the last of them changes, a new stretch begins.

#include "walk/trial_times.h"

#include <algorithm>
#include <limits>
#include <set>

namespace gzd {

namespace {

struct Edge {
  UINT64 time;
  UINT32 interval;
  bool opens;
};

std::vector<Edge> edges_in_time_order(const std::vector<TrialTimes::Interval>& intervals) {
  std::vector<Edge> edges;
  for (UINT32 i = 0; i < intervals.size(); ++i) {
    if (intervals[i].start > intervals[i].end) continue;
    edges.push_back({intervals[i].start, i, true});
    edges.push_back({UINT64{intervals[i].end} + 1, i, false});
  }
  std::sort(edges.begin(), edges.end(),
            [](const Edge& a, const Edge& b) { return a.time < b.time; });
  return edges;
}

}  // namespace

void TrialTimes::build(const std::vector<Interval>& intervals) {
  stretches_.clear();
  latestEnd_ = 0;
  const std::vector<Edge> edges = edges_in_time_order(intervals);
  std::set<UINT32> open;
  for (std::size_t i = 0; i < edges.size();) {
    const UINT64 time = edges[i].time;
    for (; i < edges.size() && edges[i].time == time; ++i) {
      if (edges[i].opens) {
        open.insert(edges[i].interval);
      } else {
        open.erase(edges[i].interval);
      }
    }
    stretches_.push_back({time, open.empty() ? nowhere : *open.rbegin()});
  }
}

UINT32 TrialTimes::find(UINT32 time) {
  const auto behind =
      std::upper_bound(stretches_.begin(), stretches_.end(), time,
                       [](UINT64 wanted, const Stretch& stretch) { return wanted < stretch.from; });
  latest_ = behind == stretches_.begin() ? Stretch{0, nowhere} : *std::prev(behind);
  latestEnd_ = behind == stretches_.end() ? std::numeric_limits<UINT64>::max() : behind->from;
  return latest_.interval;
}

}  // namespace gzd
