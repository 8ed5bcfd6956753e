// tables_cost RECORDING [ROUNDS]: what the rows of `samples` cost a sample, built and not written,
// beside opening the recording and walking over it.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "tables/reader.h"

namespace {

using gzdtables::Recording;

constexpr double ns_per_second = 1e9;

double processor_seconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / ns_per_second;
}

void swallow(const char*) {}

// Fetches every element, without velocities, and counts the samples.
double walk(Recording& recording) {
  double samples = 0;
  GZDFILE* const file = recording.handle();
  static_cast<void>(recording.begin_walk());
  for (int code = 0; (code = gzd_get_next_data(file)) != GZD_END_OF_DATA;)
    if (gzd_get_float_data(file) != nullptr && code == GZD_SAMPLE) ++samples;
  return samples;
}

void build_columns(Recording& recording) {
  gzdtables::TableReader reader(recording, {.table = gzdtables::Table::samples});
  gzdtables::Batch batch;
  while (reader.next(batch)) continue;
}

struct Costs {
  double open = ns_per_second, walk = ns_per_second, outline = ns_per_second,
         columns = ns_per_second;  // ns a sample, the least of all rounds
};

void run_round(const char* path, Costs& least) {
  const double start = processor_seconds();
  Recording recording(path);
  const double opened = processor_seconds();
  const double samples = walk(recording);
  const double walked = processor_seconds();
  static_cast<void>(recording.outline());
  const double outlined = processor_seconds();
  build_columns(recording);
  const double built = processor_seconds();
  const auto keep = [samples](double& kept, double seconds) {
    kept = std::min(kept, seconds * ns_per_second / std::max(samples, 1.0));
  };
  keep(least.open, opened - start);
  keep(least.walk, walked - opened);
  keep(least.outline, outlined - walked);
  keep(least.columns, built - outlined);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs("tables_cost: a recording is needed\n", stderr);
    return 1;
  }
  constexpr int usual_rounds = 5;
  const int rounds = argc > 2 ? std::atoi(argv[2]) : usual_rounds;
  gzd_set_log_function(reinterpret_cast<void*>(&swallow));
  Costs least;
  for (int round = 0; round < rounds; ++round) run_round(argv[1], least);
  std::printf("ns a sample: opening %.1f, walking %.1f, outline %.1f, columns %.1f\n", least.open,
              least.walk, least.outline, least.columns);
  std::printf("opening and columns: %.2f times opening and walking\n",
              (least.open + least.outline + least.columns) / (least.open + least.walk));
  return 0;
}
