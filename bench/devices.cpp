// The recordings and options of the odd races, and the lines they print.
#include "devices.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <vector>

#include "child.h"
#include "statistics.h"
#include "targets.h"

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

constexpr int rate = 1000;
constexpr int seconds_a_minute = 60;
constexpr int small_files = 10000;

struct Work {
  const char* label;
  Words recording;  // options of gzdsynth
  Words options;    // of the converter
  double must, aim;
};

const Words usual = {};
const Words target_and_pose = {"--generation", "4", "--pose", "--target"};
const Words ellipse = {"--generation", "4", "--ellipse", "56"};
const Words pose = {"--generation", "4", "--pose", "--geometry"};
const Words all_positions = {"--coords", "gaze,href,raw"};
const Words first_generation = {"--generation", "1"};
const std::string screen = "700,760,-200,150,200,-150,0,0,1023,767";

// The first, by the reference, is what the others are held against. Targets are nanoseconds where
// that takes 37.
const std::vector<Work>& works() {
  static const std::vector<Work> all = {
      {"reference", usual, {}, 37, 37},
      {"default", usual, {}, 37 * 1.02, 37},
      {"packed camera data", {"--raw-packed"}, {}, 250, 150},
      {"packed camera data, -cl", {"--raw-packed"}, {"-cl"}, 250, 150},
      {"head pose and target", target_and_pose, {}, 180, 120},
      {"pupil ellipse, -pe", ellipse, {"-pe"}, 150, 100},
      {"-cl", usual, {"-cl"}, 120, 80},
      {"-t", usual, {"-t"}, 60, 45},
      {"-fp 1", usual, {"-fp", "1"}, 60, 45},
      {"-fp 5", usual, {"-fp", "5"}, 60, 45},
      {"-t -ftime -fp 2", usual, {"-t", "-ftime", "-fp", "2"}, 60, 45},
      {"-vel", usual, {"-vel"}, 75, 60},
      {"-fvel", usual, {"-fvel"}, 75, 60},
      {"head pose, -g3DScr -g3DEye", pose, {"-g3DScr", "-g3DEye"}, 250, 180},
      {"all positions, -sh", all_positions, {"-sh"}, 50, 42},
      {"generation 1 at 250 Hz", first_generation, {}, 50, 42},
      {"-SEPRES", usual, {"-SEPRES", screen}, 48, 42},
  };
  return all;
}

class Devices {
 public:
  Devices(const std::string& parent, const std::string& gzdconv, const std::string& reference,
          int minutes, int rounds)
      : directory_(parent + "/devices"),
        gzdconv_(gzdconv),
        reference_(reference),
        minutes_(minutes),
        rounds_(rounds) {
    fs::create_directory(directory_);
    fs::create_symlink("/dev/null", null_ + ".asc");
  }

  void race_works();
  void race_whole_runs();

 private:
  [[nodiscard]] double samples() const { return 1.0 * minutes_ * seconds_a_minute * rate; }
  std::string record(const Words& options);
  [[nodiscard]] Words conversion(const std::string& recording, const Words& options) const;
  [[nodiscard]] double cost(const Words& command) const {
    return run_program(command, "/dev/null").cpu_seconds;
  }
  [[nodiscard]] double median_cost(const Words& command) const;
  [[nodiscard]] double cost_of_small_files(const std::string& recording) const;

  const std::string directory_, gzdconv_, reference_;
  const std::string null_ = directory_ + "/null";
  const int minutes_, rounds_;
  std::map<Words, std::string> made_;
};

// As many samples whatever the rate is.
std::string Devices::record(const Words& options) {
  std::string& path = made_[options];
  if (!path.empty()) return path;
  path = directory_ + "/" + std::to_string(made_.size()) + ".gzd";
  const bool slow = options == first_generation;
  const int seconds = minutes_ * seconds_a_minute * (slow ? 4 : 1);
  Words command = {BENCH_GZDSYNTH, "--duration", std::to_string(seconds), "--trials",
                   "40",           "--rate",     slow ? "250" : "1000"};
  command.insert(command.end(), options.begin(), options.end());
  command.push_back(path);
  run_program(command, "/dev/null");
  return path;
}

Words Devices::conversion(const std::string& recording, const Words& options) const {
  Words command = {gzdconv_, "-y", "-q"};
  command.insert(command.end(), options.begin(), options.end());
  command.insert(command.end(), {recording, null_});
  return command;
}

double Devices::median_cost(const Words& command) const {
  std::vector<double> costs;
  for (int round = 0; round < rounds_; ++round) costs.push_back(cost(command));
  return median(costs);
}

void Devices::race_works() {
  std::vector<Words> commands;
  for (const Work& work : works())
    commands.push_back(conversion(record(work.recording), work.options));
  commands[0][0] = reference_;
  std::vector<std::vector<double>> costs(commands.size());
  for (int round = 0; round < rounds_; ++round)
    for (std::size_t i = 0; i < commands.size(); ++i) costs[i].push_back(cost(commands[i]));
  std::printf("\nDefault conversion here: %.1f ns of processor time a sample\n",
              median(costs[1]) * 1e9 / samples());
  print_targets_head();
  for (std::size_t i = 1; i < commands.size(); ++i) {
    const Work& work = works()[i];
    const double each = works()[0].must;
    print_most(work.label, work.must / each, work.aim / each, median_ratio(costs[i], costs[0]), 2,
               "x");
  }
}

double Devices::cost_of_small_files(const std::string& recording) const {
  const fs::path many = directory_ + "/many";
  fs::create_directory(many);
  Words command = {gzdconv_, "-y", "-q"};
  for (int i = 0; i < small_files; ++i) {
    command.push_back(many / (std::to_string(i) + ".gzd"));
    fs::create_hard_link(recording, command.back());
  }
  const double seconds = cost(command);
  fs::remove_all(many);
  return seconds / small_files;
}

void Devices::race_whole_runs() {
  const std::string second = directory_ + "/second.gzd", blocks = directory_ + "/blocks.gzd",
                    events = directory_ + "/events.gzd";
  const std::string seconds = std::to_string(minutes_ * seconds_a_minute);
  run_program({BENCH_GZDSYNTH, "--duration", "1", "--trials", "1", second}, "/dev/null");
  run_program({BENCH_GZDSYNTH, "--duration", seconds, "--trials",
               std::to_string(minutes_ * seconds_a_minute * 10), blocks},
              "/dev/null");
  run_program({BENCH_GZDSYNTH, "--duration", seconds, "--no-samples", events}, "/dev/null");
  const double usual_cost = median_cost(conversion(record(usual), {}));
  std::printf("\n| whole run | |\n|---|---|\n");
  std::printf("| one second of recording | %.2f ms |\n", median_cost(conversion(second, {})) * 1e3);
  std::printf("| blocks of 100 ms, against blocks of %.0f s | %.2f x |\n", minutes_ * 1.5,
              median_cost(conversion(blocks, {})) / usual_cost);
  std::printf("| events alone, against samples and events | %.2f x |\n",
              median_cost(conversion(events, {})) / usual_cost);
  std::printf("| %d recordings of one second in one call, each | %.2f ms |\n", small_files,
              cost_of_small_files(second) * 1e3);
}

}  // namespace

void race_devices(const std::string& directory, const std::string& gzdconv,
                  const std::string& reference, int minutes, int rounds) {
  Devices devices(directory, gzdconv, reference, minutes, rounds);
  devices.race_works();
  devices.race_whole_runs();
}
