// Calls gzdsynth for each of them.
#include "bench_recordings.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "child.h"

namespace {

constexpr int trials_a_minute = 2;
constexpr int seconds_a_minute = 60;
constexpr int growth = 4;

class Maker {
 public:
  explicit Maker(std::string directory) : directory_(std::move(directory)) {}

  Recording make(const std::string& name, int seconds, int rate,
                 const std::vector<std::string>& options) {
    Recording recording{name, directory_ + "/" + name + ".gzd", 0, 0};
    const int trials = std::max(1, seconds * trials_a_minute / seconds_a_minute);
    std::vector<std::string> command = {
        BENCH_GZDSYNTH,         "--duration", std::to_string(seconds), "--trials",
        std::to_string(trials), "--rate",     std::to_string(rate)};
    command.insert(command.end(), options.begin(), options.end());
    command.push_back(recording.path);
    run_program(command, "/dev/null");
    const bool has_samples =
        std::find(options.begin(), options.end(), "--no-samples") == options.end();
    if (has_samples) recording.samples = static_cast<double>(seconds) * rate;
    recording.elements = count_elements(recording.path);
    return recording;
  }

 private:
  double count_elements(const std::string& path) {
    const std::string answer = directory_ + "/elements.txt";
    run_program({BENCH_OPEN_ONLY, path}, answer);
    std::ifstream in(answer);
    for (std::string word; in >> word;) {
      double count = 0;
      if (word == "elements" && in >> count) return count;
    }
    throw std::runtime_error("open_only did not tell the number of elements");
  }

  std::string directory_;
};

}  // namespace

Recordings make_recordings(const std::string& directory, int minutes) {
  Maker maker(directory);
  const int seconds = minutes * seconds_a_minute;
  Recordings all;
  all.hour = maker.make("binocular", seconds, 1000, {});
  all.compressed = maker.make("compressed", seconds, 1000, {"--zip"});
  all.monocular = maker.make("monocular", seconds / 2, 2000, {"--eyes", "left"});
  all.events = maker.make("events-only", seconds, 1000, {"--no-samples"});
  all.second = maker.make("one-second", 1, 1000, {});
  all.minute = maker.make("one-minute", seconds_a_minute, 1000, {});
  all.long_one = maker.make("four-times", growth * seconds, 1000, {});
  return all;
}
