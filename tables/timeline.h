// Which of many stretches of time holds a moment, in constant time for moments in order.
#ifndef GZDTABLES_TIMELINE_H
#define GZDTABLES_TIMELINE_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace gzdtables {

// Stretches of time with a label each. Where several hold a moment, the one of the highest rank
// counts. Filled first, then asked.
class Timeline {
 public:
  static constexpr std::uint32_t latest = std::numeric_limits<std::uint32_t>::max();

  // A stretch from `start` to `end` (ms), ends included; nothing when it ends before it starts.
  // `label` is above 0; ranks of stretches that overlap differ, or their labels are equal.
  void add(std::uint32_t start, std::uint32_t end, std::uint32_t rank, std::int32_t label);

  // Ends the filling. Costs n log n.
  void finish();

  // The moment asked for last and all from from() to to() have one label.
  [[nodiscard]] std::uint32_t from() const { return from_; }
  [[nodiscard]] std::uint32_t to() const { return to_; }

  // A moment's label, 0 when no stretch holds it. Remembers where it was asked last, so moments in
  // order of time cost nothing.
  [[nodiscard]] std::int32_t at(std::uint32_t time) {
    if (time < from_ || time > to_) seek(time);
    return label_;
  }

 private:
  struct Stretch {
    std::uint32_t start, end, rank;
    std::int32_t label;
  };
  struct Segment {
    std::uint32_t start, end;
    std::int32_t label;
  };

  void append(std::uint32_t start, std::uint32_t end, std::int32_t label);
  void seek(std::uint32_t time);

  std::vector<Stretch> stretches_;
  std::vector<Segment> segments_;  // apart from each other, in order of time
  std::uint32_t from_ = 1, to_ = 0;
  std::int32_t label_ = 0;
};

}  // namespace gzdtables

#endif
