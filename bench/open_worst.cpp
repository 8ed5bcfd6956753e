// Opens recordings made to be as hard as they can:
//
//   1. a million samples outside blocks, and a million blinks without a partner, each raced against
//      a sound recording of the same size, laid out alike: at most twice its time;
//   2. one kind of trouble after the other, at 1, 10 and 100 MB: time and memory must grow as the
//      file does.
//
// Every opening is a process of its own, which opens with repairs, counts the trials, then walks
// all elements without velocities. Times are processor times, so that a busy machine tells the
// same.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "GzdWriter.h"
#include "gzd.h"
#include "statistics.h"

namespace {

namespace fs = std::filesystem;
using gzdsynth::EventRecord;
using gzdsynth::GzdWriter;

constexpr std::uint32_t first_time = 1000;
constexpr int million = 1'000'000;

// ---- the recordings -----------------------------------------------------------------------------

// Writes records until a file has its size.
class Filling {
 public:
  Filling(GzdWriter& writer, std::uint64_t size) : w(writer), size_(size) {}

  [[nodiscard]] bool wants_more() const { return w.body_size() < size_; }
  void sample(std::uint32_t time) {
    w.sample({.time = time, .gx = {5120}, .gy = {3840}, .pa = {900}});
  }
  void blink(unsigned type, std::uint32_t time) {
    EventRecord record(type);
    record.start(time);
    if (type == GZD_END_BLINK) record.end(time);
    w.event(record);
  }

  GzdWriter& w;

 private:
  std::uint64_t size_;
};

void sound_samples(Filling& f) {
  std::uint32_t time = first_time;
  f.w.start_block({.time = time});
  for (; f.wants_more(); ++time) f.sample(time);
  f.w.end_block(time);
}

void stray_samples(Filling& f) {
  std::uint32_t time = first_time;
  for (; f.wants_more(); ++time) f.sample(time);
  f.w.start_block({.time = time}).end_block(time + 1);
}

void sound_blinks(Filling& f) {
  std::uint32_t time = first_time;
  f.w.start_block({.time = time});
  for (; f.wants_more(); time += 2) {
    f.blink(GZD_START_BLINK, time);
    f.blink(GZD_END_BLINK, time + 1);
  }
  f.w.end_block(time);
}

// Blinks that begin only, or only end.
template <unsigned type>
void unpaired_blinks(Filling& f) {
  std::uint32_t time = first_time;
  f.w.start_block({.time = time});
  for (; f.wants_more(); ++time) f.blink(type, time);
  f.w.end_block(time);
}

// Each block has the end of a blink and of a fixation before their starts.
void swapped_events(Filling& f) {
  std::uint32_t time = first_time;
  for (; f.wants_more(); time += 20) {
    f.w.start_block({.time = time});
    f.blink(GZD_END_BLINK, time + 2);
    f.w.event(EventRecord(GZD_END_FIXATION).start(time + 1).end(time + 3));
    f.blink(GZD_START_BLINK, time + 4);
    f.w.event(EventRecord(GZD_START_FIXATION).start(time + 5));
    f.w.end_block(time + 10);
  }
}

// Blocks that follow each other at once, so that their messages are moved.
void many_blocks(Filling& f) {
  std::uint32_t time = first_time;
  for (; f.wants_more(); time += 4) {
    f.w.start_block({.time = time});
    f.w.message(time, "RECCFG CR 1000");
    f.w.message(time + 1, "second");
    f.sample(time + 1);
    f.w.end_block(time + 2);
  }
}

void long_messages(Filling& f) {
  const std::string text(3000, 'x');
  std::uint32_t time = first_time;
  f.w.start_block({.time = time});
  for (int id = 1; f.wants_more(); ++id, ++time) f.w.long_message(time, id, text);
  f.w.end_block(time);
}

// Pieces that all belong to one message.
void endless_message(Filling& f) {
  f.w.start_block({.time = first_time});
  f.w.long_message(first_time, 1, "begin " + std::string(900, 'x'));
  while (f.wants_more()) f.w.message(first_time, "!V LONGMS_CONT 1_" + std::string(450, 'y'));
  f.w.end_block(first_time + 1);
}

void huge_gaps(Filling& f) {
  constexpr std::uint32_t samples_between = 400, gap = 4000;
  std::uint32_t time = first_time;
  f.w.start_block({.time = time});
  for (std::uint32_t i = 1; f.wants_more(); ++i, time += i % samples_between == 0 ? gap : 1)
    f.sample(time);
  f.w.end_block(time);
}

// Blocks whose first samples are missing.
void late_starts(Filling& f) {
  constexpr std::uint32_t samples_in_block = 100, delay = 300;
  std::uint32_t time = first_time;
  while (f.wants_more()) {
    f.w.start_block({.time = time});
    for (std::uint32_t i = 0; i < samples_in_block; ++i) f.sample(time + delay + i);
    time += delay + samples_in_block;
    f.w.end_block(time);
    time += 100;
  }
}

void same_time(Filling& f) {
  f.w.start_block({.time = first_time});
  while (f.wants_more()) f.w.button(first_time + 1, 0x0101);
  f.w.end_block(first_time + 2);
}

// A start and an end of blink of different eyes come before each other.
void endless_circle(Filling& f) {
  f.w.start_block({.time = first_time});
  while (f.wants_more()) {
    f.w.event(EventRecord(GZD_START_BLINK, GZD_LEFT_EYE).start(first_time));
    f.w.event(EventRecord(GZD_END_BLINK, GZD_RIGHT_EYE).start(first_time).end(first_time));
  }
  f.w.end_block(first_time + 2);
}

// Every window has to be sorted.
void time_running_back(Filling& f) {
  f.w.start_block({.time = first_time});
  for (std::uint32_t time = 2'000'000'000; f.wants_more(); --time) f.sample(time);
  f.w.end_block(2'000'000'001);
}

struct Trouble {
  const char* label;
  void (*fill)(Filling&);
};

constexpr Trouble troubles[] = {
    {"sound samples", sound_samples},
    {"stray samples", stray_samples},
    {"starts of blinks", unpaired_blinks<GZD_START_BLINK>},
    {"ends of blinks", unpaired_blinks<GZD_END_BLINK>},
    {"swapped events", swapped_events},
    {"many blocks", many_blocks},
    {"long messages", long_messages},
    {"one endless message", endless_message},
    {"huge gaps", huge_gaps},
    {"late first samples", late_starts},
    {"events of one time", same_time},
    {"events that come before each other", endless_circle},
    {"time running back", time_running_back},
};

void write_recording(const std::string& path, void (*fill)(Filling&), std::uint64_t size) {
  GzdWriter writer(3);
  writer.stream_to(path);
  Filling filling(writer, size);
  fill(filling);
  writer.finish();
}

// ---- opening ------------------------------------------------------------------------------------

struct Opening {
  double open_seconds = 0;  // trials counted
  double walk_seconds = 0;
  unsigned elements = 0;
  double peak_mib = 0;
};

// Processor time of this process.
double seconds_used() {
  timespec used{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

void swallow(const char* /*message*/) {}

// In a process of its own.
Opening open_and_walk(const std::string& path) {
  gzd_set_log_function(reinterpret_cast<void*>(&swallow));
  Opening opening;
  double start = seconds_used();
  int result = 0;
  GZDFILE* const file =
      gzd_open_file(path.c_str(), GZD_CONSISTENCY_REPAIR, GZD_LOAD_EVENTS, 1, &result);
  if (file == nullptr) std::_Exit(1);
  gzd_get_trial_count(file);
  opening.open_seconds = seconds_used() - start;
  opening.elements = gzd_get_element_count(file);
  start = seconds_used();
  gzd_set_velocity_kinds(file, GZD_VELOCITY_NONE);
  while (gzd_get_next_data(file) != GZD_END_OF_DATA) gzd_get_float_data(file);
  opening.walk_seconds = seconds_used() - start;
  gzd_close_file(file);
  return opening;
}

// The library prints some repairs itself: out of the way of the tables.
[[noreturn]] void child(const std::string& path, int answer) {
  if (std::freopen("/dev/null", "w", stdout) == nullptr) std::_Exit(1);
  const Opening opening = open_and_walk(path);
  const bool sent = write(answer, &opening, sizeof opening) == sizeof opening;
  std::_Exit(sent ? 0 : 1);
}

Opening measure(const std::string& path) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  std::fflush(stdout);
  const pid_t process = fork();
  if (process < 0) throw std::runtime_error("no process");
  if (process == 0) child(path, ends[1]);
  close(ends[1]);
  Opening opening;
  const bool received = read(ends[0], &opening, sizeof opening) == sizeof opening;
  close(ends[0]);
  int status = 0;
  rusage used{};
  if (wait4(process, &status, 0, &used) != process || status != 0 || !received)
    throw std::runtime_error("opening failed: " + path);
  opening.peak_mib = static_cast<double>(used.ru_maxrss) / 1024;
  return opening;
}

// ---- tables -------------------------------------------------------------------------------------

struct Settings {
  int rounds = 5;
  int count = million;  // of stray samples, of blinks
  int largest_mb = 100;
  std::string scratch = fs::temp_directory_path();
};

class Worst {
 public:
  explicit Worst(const Settings& settings)
      : settings_(settings), directory_(settings.scratch + "/gzd-worst-XXXXXX") {
    if (mkdtemp(directory_.data()) == nullptr)
      throw std::runtime_error("cannot make " + directory_);
  }
  ~Worst() {
    std::error_code ignored;
    fs::remove_all(directory_, ignored);
  }
  Worst(const Worst&) = delete;
  Worst& operator=(const Worst&) = delete;

  void run() {
    std::printf(
        "| against a sound recording of the same size | sound ms | this ms | ratio |\n"
        "|---|---|---|---|\n");
    race("stray samples", stray_samples, sound_samples, sample_size);
    race("starts of blinks", unpaired_blinks<GZD_START_BLINK>, sound_blinks, blink_size);
    race("ends of blinks", unpaired_blinks<GZD_END_BLINK>, sound_blinks, blink_size);
    std::printf(
        "\n| trouble | MB | elements | open ms | walk ms | open ns a byte | peak MiB | time "
        "for ten times the size |\n|---|---|---|---|---|---|---|---|\n");
    for (const Trouble& trouble : troubles) grow(trouble);
  }

 private:
  static constexpr std::uint64_t sample_size = 12;  // bytes of a record
  static constexpr std::uint64_t blink_size = 10;   // about: starts are shorter than ends

  void race(const char* label, void (*trouble)(Filling&), void (*sound)(Filling&),
            std::uint64_t record_size);
  void grow(const Trouble& trouble);

  [[nodiscard]] std::string file(const char* name) const { return directory_ + "/" + name; }

  Settings settings_;
  std::string directory_;
};

void Worst::race(const char* label, void (*trouble)(Filling&), void (*sound)(Filling&),
                 std::uint64_t record_size) {
  const std::uint64_t size = record_size * static_cast<std::uint64_t>(settings_.count);
  write_recording(file("sound.gzd"), sound, size);
  write_recording(file("trouble.gzd"), trouble, size);
  std::vector<double> sound_seconds, trouble_seconds;
  for (int round = -1; round < settings_.rounds; ++round) {
    const double one = measure(file("sound.gzd")).open_seconds;
    const double other = measure(file("trouble.gzd")).open_seconds;
    if (round < 0) continue;  // warming up
    sound_seconds.push_back(one);
    trouble_seconds.push_back(other);
  }
  std::printf("| %s | %.2f | %.2f | %.2f |\n", label, median(sound_seconds) * 1e3,
              median(trouble_seconds) * 1e3, median_ratio(trouble_seconds, sound_seconds));
}

void Worst::grow(const Trouble& trouble) {
  double before = 0;
  for (int mb = 1; mb <= settings_.largest_mb; mb *= 10) {
    write_recording(file("trouble.gzd"), trouble.fill, std::uint64_t{1'000'000} * mb);
    const auto size = static_cast<double>(fs::file_size(file("trouble.gzd")));
    std::vector<double> seconds, walk_seconds;
    Opening opening;
    for (int round = 0; round < settings_.rounds; ++round) {
      opening = measure(file("trouble.gzd"));
      seconds.push_back(opening.open_seconds);
      walk_seconds.push_back(opening.walk_seconds);
    }
    const double middle = median(seconds);
    std::printf("| %s | %d | %u | %.2f | %.2f | %.2f | %.1f | ", trouble.label, mb,
                opening.elements, middle * 1e3, median(walk_seconds) * 1e3, middle * 1e9 / size,
                opening.peak_mib);
    std::printf(before > 0 ? "%.1f |\n" : "|\n", middle / before);
    before = middle;
  }
}

bool parse(int argc, char** argv, Settings& settings) {
  for (int i = 1; i < argc; i += 2) {
    if (i + 1 == argc) return false;
    const std::string word = argv[i];
    const char* const value = argv[i + 1];
    if (word == "--scratch")
      settings.scratch = value;
    else if (word == "--rounds")
      settings.rounds = std::atoi(value);
    else if (word == "--count")
      settings.count = std::atoi(value);
    else if (word == "--largest")
      settings.largest_mb = std::atoi(value);
    else
      return false;
  }
  return settings.rounds > 0 && settings.count > 0 && settings.largest_mb > 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Settings settings;
    if (!parse(argc, argv, settings)) {
      std::fputs(
          "Usage: open_worst [--rounds 5] [--count 1000000] [--largest 100 (MB)] "
          "[--scratch DIR]\n",
          stderr);
      return 2;
    }
    Worst(settings).run();
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "open_worst: %s\n", error.what());
    return 1;
  }
}
