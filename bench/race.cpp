// Runs the racers in turns, so that what disturbs the machine disturbs them alike.
#include "race.h"

#include <unistd.h>

#include <algorithm>

#include "child.h"
#include "statistics.h"

namespace {

double run_once(Runner& runner) {
  if (!runner.output.empty()) unlink(runner.output.c_str());
  const Usage usage = run_program(runner.command, "/dev/null");
  runner.peak_kib = std::max(runner.peak_kib, usage.peak_kib);
  return usage.seconds;
}

double run_repeatedly(Runner& runner) {
  std::vector<double> seconds;
  seconds.reserve(static_cast<std::size_t>(runner.repeats));
  for (int i = 0; i < runner.repeats; ++i) seconds.push_back(run_once(runner));
  return median(seconds);
}

}  // namespace

double Runner::median_seconds() const {
  return median(seconds);
}

void race(const std::vector<Runner*>& runners, int rounds) {
  for (Runner* const runner : runners) run_once(*runner);
  for (int round = 0; round < rounds; ++round)
    for (Runner* const runner : runners) runner->seconds.push_back(run_repeatedly(*runner));
  for (const Runner* const runner : runners)
    if (!runner->output.empty()) unlink(runner->output.c_str());
}

double ratio(const Runner& above, const Runner& below) {
  return median_ratio(above.seconds, below.seconds);
}
