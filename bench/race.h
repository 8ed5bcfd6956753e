// Programs timed against each other, in turns.
#ifndef BENCH_RACE_H
#define BENCH_RACE_H

#include <string>
#include <vector>

struct Runner {
  std::string label;
  std::vector<std::string> command;
  std::string output = {};  // removed before each run; empty: nothing to remove
  int repeats = 1;          // runs that make one measurement; for those too short for one

  std::vector<double> seconds = {};  // one a round
  long peak_kib = 0;                 // the largest

  [[nodiscard]] double median_seconds() const;
};

// Runs each once to warm up, then `rounds` times each, in turns.
void race(const std::vector<Runner*>& runners, int rounds);

// How many times as long as `below` a run of `above` takes: the median over the rounds.
double ratio(const Runner& above, const Runner& below);

#endif
