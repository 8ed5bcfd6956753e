// The plan of a sample line: the columns that a run of samples has, chosen once for all of them.
#ifndef GZDCONV_SAMPLE_PLAN_H
#define GZDCONV_SAMPLE_PLAN_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "run_state.h"
#include "samples/sample_line.h"
#include "samples/sample_shape.h"

namespace gzdconv {

// The columns chosen for a run of samples of one shape.
class SamplePlan {
 public:
  // Forgets the choice. Due whenever block or options may have changed.
  void forget() { key_ = no_key; }

  // True when the plan is one for samples of this shape.
  [[nodiscard]] bool suits(const FSAMPLE& sample) const { return key_ == shape_key(sample); }

  // Makes the plan that of `sample`.
  void choose(const RunState& state, const RECORDINGS& block, const FSAMPLE& sample);

  // Writes the columns at `place`, and returns their end.
  char* write(char* place, SampleLine line) const {
    const SampleColumn* const end = columns_.data() + count_;
    for (const SampleColumn* column = columns_.data(); column != end; ++column)
      place = (*column)(place, line);
    return place;
  }

 private:
  static constexpr std::uint64_t no_key = std::numeric_limits<std::uint64_t>::max();
  static constexpr std::size_t max_columns = 64;

  std::uint64_t key_ = no_key;
  std::array<SampleColumn, max_columns> columns_{};
  std::size_t count_ = 0;
};

// Appends the labels of the columns of samples of this shape, a tab after each.
void append_column_labels(const SampleShape& shape);

}  // namespace gzdconv

#endif
