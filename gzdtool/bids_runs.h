// Stretches of a recording that make one run each of the exchange form (BIDS).
#ifndef GZDTOOL_BIDS_RUNS_H
#define GZDTOOL_BIDS_RUNS_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tables/recording.h"

namespace gzdtool {

// Blocks of one rate and the same eyes with no long pause between them.
struct BidsRun {
  double rate = 0;                               // Hz
  double start = 0;                              // ms, of its first block
  std::array<bool, 2> eyes{};                    // left, right
  std::string pupil_unit;                        // "area", "diameter"
  std::int32_t first_block = 0, last_block = 0;  // counted from 1
};

// The longest pause between blocks of one run (ms).
constexpr double longest_pause = 600'000;

// Blocks without samples or without an eye are left out.
[[nodiscard]] std::vector<BidsRun> runs_of(gzdtables::Recording& recording);

}  // namespace gzdtool

#endif
