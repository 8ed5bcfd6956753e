// Times whole conversions:
//
//   1. makes the recordings with gzdsynth in a scratch directory;
//   2. proves the text: limit's lines are the converter's, compressed input gives the same text;
//   3. races, always in turns: every kind of conversion to every kind of output against limit,
//      compressed input against its parts, opening alone, sizes against each other;
//   4. prints medians, ratios, peak memory, and the table of targets;
//   5. races what other devices record, and other options, against the default conversion.
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "bench_recordings.h"
#include "checks.h"
#include "child.h"
#include "devices.h"
#include "race.h"
#include "targets.h"

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

struct Settings {
  int minutes = 60;
  int rounds = 5;
  bool keep = false;
  bool only_devices = false;
  std::string scratch = fs::temp_directory_path();
  std::string gzdconv = BENCH_GZDCONV;
  std::string reference;
};

constexpr const char* usage_text =
    "Usage: convert [options]\n"
    "  --minutes N     size of the main recording (60); others follow from it\n"
    "  --rounds N      measurements of each (5)\n"
    "  --devices       other devices and options only\n"
    "  --quick         2 minutes, 1 round: to see that it works\n"
    "  --scratch DIR   where recordings and files on disk go (the temporary directory)\n"
    "  --gzdconv PATH  converter to measure (the one built along)\n"
    "  --reference PATH  converter whose default conversion other devices and options are held\n"
    "                  against (the one to measure)\n"
    "  --keep          leave the recordings\n";

// A directory of its own, removed at the end.
class ScratchDirectory {
 public:
  ScratchDirectory(const std::string& parent, bool keep)
      : path_(parent + "/gzd-bench-XXXXXX"), keep_(keep) {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("cannot make " + path_);
  }
  ~ScratchDirectory() {
    std::error_code ignored;
    if (!keep_) fs::remove_all(path_, ignored);
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
  bool keep_;
};

// ---- kinds of conversion and of output ----------------------------------------------------------

struct Kind {
  const char* label;
  Words options;
};

// Places in the list.
constexpr std::size_t default_kind = 0, samples_only = 1, with_velocity = 3;

const std::vector<Kind>& kinds() {
  static const std::vector<Kind> all = {
      {"default", {}},    {"-s", {"-s"}},     {"-e", {"-e"}},
      {"-vel", {"-vel"}}, {"-res", {"-res"}}, {"-t -ftime -fp 2", {"-t", "-ftime", "-fp", "2"}},
  };
  return all;
}

// Where text goes: a name without ".asc", and the file to remove before each run.
struct Sink {
  const char* label;
  std::string name;
  bool is_file;

  [[nodiscard]] std::string file() const { return is_file ? name + ".asc" : ""; }
};

class Bench {
 public:
  explicit Bench(const Settings& settings)
      : settings_(settings),
        disk_(settings.scratch, settings.keep),
        memory_("/dev/shm", false),
        sinks_{{"/dev/null", disk_.path() + "/null", false},
               {"/dev/shm", memory_.path() + "/out", true},
               {"file", disk_.path() + "/out", true}} {
    fs::create_symlink("/dev/null", disk_.path() + "/null.asc");
  }

  void run();

 private:
  void run_usual();
  [[nodiscard]] const Sink& null() const { return sinks_[0]; }
  [[nodiscard]] const Sink& on_disk() const { return sinks_[2]; }

  [[nodiscard]] Runner conversion(const Recording& from, const Kind& kind, const Sink& to) const;
  [[nodiscard]] Runner limit(const Recording& from, const Sink& to) const;
  [[nodiscard]] double text_size(const Recording& from, const Kind& kind) const;

  void check() const;
  void check_limit(const Recording& recording) const;
  void check_compressed() const;

  [[nodiscard]] std::vector<double> text_sizes(const Recording& recording) const;
  void race_recording(const Recording& recording, bool with_limit);
  void race_kinds(const Recording& recording, const Sink& to, bool with_limit,
                  const std::vector<double>& sizes);
  void note_targets(const Sink& to, const std::vector<Runner>& runners, const Runner& floor,
                    const std::vector<double>& sizes);
  void race_compressed();
  void race_opening();
  void race_sizes();

  const Settings settings_;
  ScratchDirectory disk_, memory_;
  std::vector<Sink> sinks_;
  Recordings recordings_;
  Measured measured_;
};

Runner Bench::conversion(const Recording& from, const Kind& kind, const Sink& to) const {
  Runner runner{kind.label, {settings_.gzdconv, "-y", "-q"}, to.file()};
  runner.command.insert(runner.command.end(), kind.options.begin(), kind.options.end());
  runner.command.insert(runner.command.end(), {from.path, to.name});
  return runner;
}

Runner Bench::limit(const Recording& from, const Sink& to) const {
  return {"limit", {BENCH_LIMIT, from.path, to.name + ".asc"}, to.file()};
}

double Bench::text_size(const Recording& from, const Kind& kind) const {
  const Sink& to = on_disk();
  run_program(conversion(from, kind, to).command, "/dev/null");
  const auto size = static_cast<double>(fs::file_size(to.file()));
  fs::remove(to.file());
  return size;
}

// ---- proof --------------------------------------------------------------------------------------

void Bench::check_limit(const Recording& recording) const {
  const Sink lines{"", disk_.path() + "/lines", true};
  run_program(limit(recording, lines).command, "/dev/null");
  run_program(conversion(recording, kinds()[samples_only], on_disk()).command, "/dev/null");
  check_sample_lines(lines.file(), on_disk().file());
  fs::remove(lines.file());
  fs::remove(on_disk().file());
}

void Bench::check_compressed() const {
  const Sink other{"", disk_.path() + "/other", true};
  run_program(conversion(recordings_.hour, kinds()[default_kind], on_disk()).command, "/dev/null");
  run_program(conversion(recordings_.compressed, kinds()[default_kind], other).command,
              "/dev/null");
  check_same_asc(on_disk().file(), other.file());
  fs::remove(on_disk().file());
  fs::remove(other.file());
}

void Bench::check() const {
  check_limit(recordings_.hour);
  check_limit(recordings_.monocular);
  check_compressed();
  std::printf(
      "Checked: sample lines equal those of limit, compressed input gives the same text.\n");
}

// ---- races --------------------------------------------------------------------------------------

void print_head() {
  std::printf("\n| recording | options | to | ns each | MB/s of text | peak MiB | x limit |\n");
  std::printf("|---|---|---|---|---|---|---|\n");
}

void print_row(const Recording& recording, const Sink& to, const Runner& runner, double text,
               const Runner* limit) {
  const double seconds = runner.median_seconds();
  std::printf("| %s | %s | %s | %.1f | %.0f | %.1f | ", recording.name.c_str(),
              runner.label.c_str(), to.label, seconds * 1e9 / items_of(recording),
              text / seconds / 1e6, static_cast<double>(runner.peak_kib) / 1024);
  if (limit != nullptr)
    std::printf("%.2f |\n", ratio(runner, *limit));
  else
    std::printf("|\n");
  std::fflush(stdout);
}

std::vector<double> Bench::text_sizes(const Recording& recording) const {
  std::vector<double> sizes;
  for (const Kind& kind : kinds()) sizes.push_back(text_size(recording, kind));
  return sizes;
}

void Bench::race_recording(const Recording& recording, bool with_limit) {
  const std::vector<double> sizes = text_sizes(recording);
  for (const Sink& to : sinks_) race_kinds(recording, to, with_limit, sizes);
}

void Bench::race_kinds(const Recording& recording, const Sink& to, bool with_limit,
                       const std::vector<double>& sizes) {
  std::vector<Runner> runners;
  for (const Kind& kind : kinds()) runners.push_back(conversion(recording, kind, to));
  Runner floor = limit(recording, to);
  std::vector<Runner*> all;
  if (with_limit) all.push_back(&floor);
  for (Runner& runner : runners) all.push_back(&runner);
  race(all, settings_.rounds);

  if (with_limit) print_row(recording, to, floor, sizes[samples_only], nullptr);
  for (std::size_t i = 0; i < runners.size(); ++i)
    print_row(recording, to, runners[i], sizes[i], with_limit ? &floor : nullptr);
  if (&recording == &recordings_.hour) note_targets(to, runners, floor, sizes);
}

void Bench::note_targets(const Sink& to, const std::vector<Runner>& runners, const Runner& floor,
                         const std::vector<double>& sizes) {
  const Runner& plain = runners[default_kind];
  if (&to == &on_disk()) measured_.file_against_limit = ratio(plain, floor);
  if (&to != &null()) return;
  measured_.null_against_limit = ratio(plain, floor);
  measured_.text_rate = sizes[default_kind] / plain.median_seconds() / 1e6;
  measured_.velocity_against_default = ratio(runners[with_velocity], plain);
  measured_.peak_bytes = static_cast<double>(plain.peak_kib) * 1024;
  measured_.allowed_bytes = 24 * recordings_.hour.elements + 16 * 1024 * 1024;
}

void Bench::race_compressed() {
  Runner inflation{"inflation alone", {BENCH_INFLATE_ONLY, recordings_.compressed.path}};
  Runner plain = conversion(recordings_.hour, kinds()[default_kind], null());
  Runner compressed = conversion(recordings_.compressed, kinds()[default_kind], null());
  race({&inflation, &plain, &compressed}, settings_.rounds);
  Runner parts{"parts", {}};
  for (std::size_t i = 0; i < plain.seconds.size(); ++i)
    parts.seconds.push_back(inflation.seconds[i] + plain.seconds[i]);
  measured_.compressed_against_parts = ratio(compressed, parts);
  std::printf(
      "\nCompressed input: inflation alone %.1f ms, plain conversion %.1f ms, conversion "
      "%.1f ms (%.2f times both together)\n",
      inflation.median_seconds() * 1e3, plain.median_seconds() * 1e3,
      compressed.median_seconds() * 1e3, measured_.compressed_against_parts);
}

void Bench::race_opening() {
  Runner opening{"opening", {BENCH_OPEN_ONLY, recordings_.hour.path}};
  Runner plain = conversion(recordings_.hour, kinds()[default_kind], null());
  race({&opening, &plain}, settings_.rounds);
  measured_.open_against_default = ratio(opening, plain);
  std::printf(
      "Opening alone: %.1f ms, %.1f ns a sample, peak %.1f MiB, %.0f %% of the default "
      "conversion\n",
      opening.median_seconds() * 1e3, opening.median_seconds() * 1e9 / recordings_.hour.samples,
      static_cast<double>(opening.peak_kib) / 1024, 100 * measured_.open_against_default);
}

// What starting costs is that of the shortest recording, and taken off the others.
void Bench::race_sizes() {
  Runner start = conversion(recordings_.second, kinds()[default_kind], null());
  Runner small = conversion(recordings_.minute, kinds()[default_kind], null());
  Runner middle = conversion(recordings_.hour, kinds()[default_kind], null());
  Runner large = conversion(recordings_.long_one, kinds()[default_kind], null());
  start.repeats = small.repeats = 15;
  race({&start, &small, &middle, &large}, settings_.rounds);
  const auto each = [&](const Runner& runner, const Recording& recording) {
    return (runner.median_seconds() - start.median_seconds()) * 1e9 /
           (recording.samples - recordings_.second.samples);
  };
  const auto print = [&](const Runner& runner, const Recording& recording) {
    std::printf("| %.0f s | %.3f | %.1f | %.1f | %.1f |\n", recording.samples / 1000,
                runner.median_seconds() * 1e3, runner.median_seconds() * 1e9 / recording.samples,
                &runner == &start ? 0.0 : each(runner, recording),
                static_cast<double>(runner.peak_kib) / 1024);
  };
  std::printf(
      "\n| recorded time | ms | ns a sample | the same without starting | peak MiB |\n"
      "|---|---|---|---|---|\n");
  print(start, recordings_.second);
  print(small, recordings_.minute);
  print(middle, recordings_.hour);
  print(large, recordings_.long_one);
  measured_.growth = each(large, recordings_.long_one) / each(small, recordings_.minute) - 1;
}

// ---- the whole ----------------------------------------------------------------------------------

std::string cpu_model() {
  std::ifstream in("/proc/cpuinfo");
  for (std::string line; std::getline(in, line);)
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  return "unknown processor";
}

void print_circumstances(const Settings& settings) {
  utsname system{};
  uname(&system);
  double load = 0;
  if (getloadavg(&load, 1) != 1) load = 0;
  std::printf("%s, %ld cores; %s %s; GCC %s; %d minutes, %d rounds\n", cpu_model().c_str(),
              sysconf(_SC_NPROCESSORS_ONLN), system.sysname, system.release, __VERSION__,
              settings.minutes, settings.rounds);
  if (load > 0.5) std::printf("The machine is busy (load %.1f): do not trust the figures.\n", load);
  std::fflush(stdout);
}

void Bench::run() {
  print_circumstances(settings_);
  if (!settings_.only_devices) run_usual();
  const std::string& reference =
      settings_.reference.empty() ? settings_.gzdconv : settings_.reference;
  race_devices(disk_.path(), settings_.gzdconv, reference, std::max(1, settings_.minutes / 4),
               settings_.rounds);
}

void Bench::run_usual() {
  recordings_ = make_recordings(disk_.path(), settings_.minutes);
  check();
  print_head();
  race_recording(recordings_.hour, true);
  race_recording(recordings_.monocular, true);
  race_recording(recordings_.compressed, false);
  race_recording(recordings_.events, false);
  race_compressed();
  race_opening();
  race_sizes();
  print_targets(measured_);
}

int positive(const std::string& text) {
  const int value = std::atoi(text.c_str());
  if (value < 1) throw std::runtime_error("\"" + text + "\" is no positive number");
  return value;
}

bool parse(const Words& arguments, Settings& settings) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& word = arguments[i];
    const auto value = [&] { return i + 1 < arguments.size() ? arguments[++i] : std::string(); };
    if (word == "--minutes")
      settings.minutes = positive(value());
    else if (word == "--rounds")
      settings.rounds = positive(value());
    else if (word == "--quick")
      settings.minutes = 2, settings.rounds = 1;
    else if (word == "--devices")
      settings.only_devices = true;
    else if (word == "--scratch")
      settings.scratch = value();
    else if (word == "--gzdconv")
      settings.gzdconv = value();
    else if (word == "--reference")
      settings.reference = value();
    else if (word == "--keep")
      settings.keep = true;
    else
      return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Settings settings;
    if (!parse({argv + 1, argv + argc}, settings)) {
      std::fputs(usage_text, stderr);
      return 2;
    }
    Bench(settings).run();
    return 0;
  } catch (const std::exception& error) {
    std::fflush(stdout);
    std::fprintf(stderr, "convert: %s\n", error.what());
    return 1;
  }
}
