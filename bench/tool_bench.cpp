// tool [MINUTES [ROUNDS]]: what gzdtool costs beside what it rests on, in turns, by processor time;
// and what a second process gains when it converts many.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "child.h"
#include "statistics.h"
#include "targets.h"

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

constexpr int small_recordings = 500;
constexpr double mib = 1024.0 * 1024.0;
constexpr double samples_a_minute = 60000;
constexpr double index_bytes_a_sample = 8;

class Scratch {
 public:
  Scratch() {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("cannot make " + path_);
  }
  ~Scratch() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  [[nodiscard]] std::string file(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_ = fs::temp_directory_path() / "gzd-bench-XXXXXX";
};

struct Target {
  const char* work;
  Words above, below;
  double must, aim;
};

class ToolBench {
 public:
  ToolBench(int minutes, int rounds);
  void race_programs() const;
  void race_processes() const;
  void measure_memory() const;

 private:
  [[nodiscard]] Words tool(const char* verb) const { return {BENCH_GZDTOOL, verb, recording_}; }
  [[nodiscard]] Words only(const char* work) const { return {BENCH_TABLES_ONLY, work, recording_}; }
  [[nodiscard]] Words compression(const char* how) const {
    return {BENCH_COMPRESS_ONLY, how, scratch_.file("samples.tsv")};
  }
  void race(const Target& target) const;
  [[nodiscard]] double seconds_of_many(const char* jobs) const;

  Scratch scratch_;
  int minutes_, rounds_;
  std::string recording_ = scratch_.file("recording.gzd");
};

ToolBench::ToolBench(int minutes, int rounds) : minutes_(minutes), rounds_(rounds) {
  run_program(
      {BENCH_GZDSYNTH, "--duration", std::to_string(60 * minutes), "--trials", "40", recording_},
      "/dev/null");
  run_program(tool("samples"), scratch_.file("samples.tsv"));
  fs::create_symlink("/dev/null", scratch_.file("null.asc"));
  fs::create_directory(scratch_.file("many"));
  for (int i = 0; i < small_recordings; ++i)
    run_program({BENCH_GZDSYNTH, "--duration", "4", "--trials", "1", "--seed", std::to_string(i),
                 scratch_.file("many/" + std::to_string(i) + ".gzd")},
                "/dev/null");
}

void ToolBench::race(const Target& target) const {
  std::vector<double> above, below;
  for (int round = -1; round < rounds_; ++round) {
    const double one = run_program(target.above, "/dev/null").cpu_seconds;
    const double other = run_program(target.below, "/dev/null").cpu_seconds;
    if (round < 0) continue;  // to warm up
    above.push_back(one);
    below.push_back(other);
  }
  print_most(target.work, target.must, target.aim, median_ratio(above, below), 2, "x");
}

void ToolBench::race_programs() const {
  const Words conversion{BENCH_GZDCONV, "-y", "-q", recording_, scratch_.file("null")};
  for (const Target& target :
       {Target{"samples as TSV to /dev/null, against the default conversion", tool("samples"),
               conversion, 3, 2},
        Target{"columns of samples alone, against opening and walking", only("columns"),
               only("walk"), 1.5, 1.3},
        Target{"info, against opening", tool("info"), only("open"), 1.1, 1.05},
        Target{"check, against opening and walking", tool("check"), only("walk"), 2, 1.5},
        Target{".gz as gzdtool writes it, against zlib at level 6", compression("gzdtool"),
               compression("zlib"), 0.25, 0.2}})
    race(target);
}

double ToolBench::seconds_of_many(const char* jobs) const {
  Words command{BENCH_GZDTOOL, "convert", "-j", jobs, "--output-dir", scratch_.file("texts")};
  for (int i = 0; i < small_recordings; ++i)
    command.push_back(scratch_.file("many/" + std::to_string(i) + ".gzd"));
  const double seconds = run_program(command, "/dev/null").seconds;
  fs::remove_all(scratch_.file("texts"));
  return seconds;
}

// Wall clock: on a busy machine the second core is not there.
void ToolBench::race_processes() const {
  std::vector<double> one, two;
  for (int round = 0; round < rounds_; ++round) {
    one.push_back(seconds_of_many("1"));
    two.push_back(seconds_of_many("2"));
  }
  print_most("500 small recordings, convert -j 2 against -j 1", 0.59, 0.53, median_ratio(two, one),
             2, "x");
}

void ToolBench::measure_memory() const {
  const long peak = run_program(tool("samples"), "/dev/null").peak_kib;
  const double index = index_bytes_a_sample * samples_a_minute * minutes_;
  print_most("peak memory of samples beyond the index", 64, 32,
             static_cast<double>(peak) / 1024 - index / mib, 1, "MiB");
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const ToolBench bench(argc > 1 ? std::max(1, std::atoi(argv[1])) : 30,
                          argc > 2 ? std::max(1, std::atoi(argv[2])) : 7);
    print_targets_head();
    bench.race_programs();
    bench.race_processes();
    bench.measure_memory();
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "tool: %s\n", error.what());
    return 1;
  }
}
