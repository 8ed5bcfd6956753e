// Whether a recording can be trusted: its findings, what each block lost, and whether eye events
// agree with samples.
#ifndef GZDTABLES_EXAMINATION_H
#define GZDTABLES_EXAMINATION_H

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "findings.h"
#include "recording.h"

namespace gzdtables {

// Samples of one block.
struct BlockExamination {
  double start = 0;           // ms
  std::optional<double> end;  // ms; none when no end closes the block
  double rate = 0;            // Hz
  std::int64_t samples = 0, filled = 0;
  std::int64_t expected = 0;  // by rate, from the first to the last sample
  // By eye: samples without a valid position, and those that could have one; none of an eye that
  // was not recorded.
  std::array<std::optional<std::int64_t>, 2> lost;
  std::array<std::int64_t, 2> counted{};
};

// Recorded mean positions of fixations less the means of the gaze inside them (px), of one eye.
struct FixationShift {
  std::int64_t compared = 0;  // fixations that could be
  double x = 0, y = 0;        // medians
  bool is_off = false;        // by more than half a degree
};

struct Examination {
  std::vector<Finding> findings;  // the library's, then those of comparing
  std::vector<BlockExamination> blocks;
  std::array<FixationShift, 2> shifts;
};

// The share of samples without a valid position over all blocks, of an eye (0 left, 1 right); none
// of one that no block records.
[[nodiscard]] std::optional<double> lost_share(const Examination& examination, std::size_t eye);

// Walks over all elements and their samples. Throws ReadError.
[[nodiscard]] Examination examine(Recording& recording);

}  // namespace gzdtables

#endif
