// A sweep over the stretches in order of their starts, with those that are open in a heap by rank,
// cuts time into segments of one label.
#include "timeline.h"

#include <algorithm>

namespace gzdtables {

void Timeline::add(std::uint32_t start, std::uint32_t end, std::uint32_t rank, std::int32_t label) {
  if (start <= end) stretches_.push_back({start, end, rank, label});
}

void Timeline::append(std::uint32_t start, std::uint32_t end, std::int32_t label) {
  const bool goes_on =
      !segments_.empty() && segments_.back().label == label && segments_.back().end + 1 == start;
  if (goes_on)
    segments_.back().end = end;
  else
    segments_.push_back({start, end, label});
}

void Timeline::finish() {
  std::stable_sort(stretches_.begin(), stretches_.end(),
                   [](const Stretch& a, const Stretch& b) { return a.start < b.start; });
  const auto lower = [](const Stretch& a, const Stretch& b) { return a.rank < b.rank; };
  std::vector<Stretch> open;
  std::uint64_t now = 0;
  for (std::size_t next = 0; next < stretches_.size() || !open.empty();) {
    if (open.empty()) now = std::max<std::uint64_t>(now, stretches_[next].start);
    for (; next < stretches_.size() && stretches_[next].start <= now; ++next) {
      open.push_back(stretches_[next]);
      std::push_heap(open.begin(), open.end(), lower);
    }
    const Stretch top = open.front();
    if (top.end < now) {
      std::pop_heap(open.begin(), open.end(), lower);
      open.pop_back();
      continue;
    }
    const std::uint32_t end =
        next < stretches_.size() ? std::min(top.end, stretches_[next].start - 1) : top.end;
    append(static_cast<std::uint32_t>(now), end, top.label);
    now = std::uint64_t{end} + 1;
  }
  std::vector<Stretch>().swap(stretches_);
}

void Timeline::seek(std::uint32_t time) {
  const auto behind =
      std::upper_bound(segments_.begin(), segments_.end(), time,
                       [](std::uint32_t moment, const Segment& s) { return moment < s.start; });
  from_ = 0;
  to_ = behind == segments_.end() ? latest : behind->start - 1;
  label_ = 0;
  if (behind == segments_.begin()) return;
  const Segment& before = *(behind - 1);
  if (time <= before.end) {
    from_ = before.start;
    to_ = before.end;
    label_ = before.label;
  } else {
    from_ = before.end + 1;
  }
}

}  // namespace gzdtables
