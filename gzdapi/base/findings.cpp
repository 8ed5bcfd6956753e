// Findings as they are kept, and as they are handed out.
#include "base/findings.h"

#include <algorithm>

namespace gzd {

namespace {

double time_of(INT64 stamp) {
  return stamp == Finding::none_found ? -1.0 : static_cast<double>(stamp) / 2.0;
}

void take_in(Finding& last, const Finding& next) {
  ++last.merged;
  last.count += next.count;
  last.end = std::max({last.end, next.start, next.end});
}

}  // namespace

void Findings::add(const Finding& finding) {
  Kept& kind = kept_[static_cast<std::size_t>(finding.kind)];
  if (kind.count == most_of_a_kind) return take_in(list_[kind.last], finding);
  list_.push_back(finding);
  kind = {kind.count + 1, list_.size() - 1};
}

GZD_FINDING Findings::at(std::size_t place) const {
  const Finding& f = list_[place];
  return {.kind = f.kind,
          .eye = f.eye,
          .detail = f.detail,
          .merged = f.merged,
          .count = f.count,
          .place = f.place,
          .start = time_of(f.start),
          .end = time_of(f.end)};
}

}  // namespace gzd
