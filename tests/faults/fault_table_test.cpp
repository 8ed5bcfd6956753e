// One table of surroundings over one table of runs: calls that fail, once and from then on, signals
// at any moment, recordings that shrink and vanish, closed descriptors, limits, places that take no
// file. Whatever happens, a text under its final name is that of the undisturbed run to the last
// byte, or the one that was there before; a text that is not made is named on standard error; the
// files before and after it in the run are converted; and nothing else is left behind.
//
// Of a disturbed call each moment is tried, up to the first few dozen; of those after them ever
// fewer, or, with GZD_TEST_EXTRAS=1 in the environment, all the same each.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <set>

#include "companions.h"
#include "converter_run.h"

namespace {

using Path = std::filesystem::path;

// ---- runs ---------------------------------------------------------------------------------------

struct Conversion {
  const char* name;
  Words words;
  const char* recording = "rec.gzd";  // the one that shrinks or vanishes
  bool keeps_what_was_read = false;
};

const Conversion all_runs[] = {
    {"plain", {"-vel", "rec.gzd"}},
    {"raw", {"-s", "-eh", "-r", "raw.gzd"}, "raw.gzd"},
    {"log", {"-logmsg", "rec.gzd"}},
    {"video", {"-i", "-utf8", "rec.gzd"}},
    {"compressed", {"zip.gzd"}, "zip.gzd"},
    {"failsafe", {"-failsafe", "-logmsg", "zip.gzd"}, "zip.gzd", true},
    {"several",
     {"-logmsg", "rec.gzd", "a name of 17 chars.gzd", "zip.gzd", "raw.gzd",
      "a_name_with_more_than_thirty_two_characters.gzd"}},
};

void PrintTo(const Conversion& run, std::ostream* out) {
  *out << run.name;
}

gzdsynth::SessionSettings kind_of(const std::string& name) {
  gzdsynth::SessionSettings kind{.rate = 250, .seconds = 1, .trials = 2, .seed = 7};
  kind.zip = name == "zip.gzd";
  kind.raw = kind.rawPacked = name == "raw.gzd";
  kind.longMessages = true;
  kind.messageLog = "tq_messages.log";
  return kind;
}

// Each recording that a run names, with the tables of its video, and the message log of all.
void make_inputs(const Path& directory, const Words& words) {
  for (const std::string& name : words) {
    if (!name.ends_with(".gzd")) continue;
    const gzdsynth::SessionSettings kind = kind_of(name);
    gzdsynth::GzdWriter writer = gzdsynth::session_writer(kind);
    const auto trials = gzdsynth::Session(kind, writer).run();
    writer.save(directory / name);
    std::ofstream(directory / kind.messageLog) << gzdsynth::message_log_text(trials);
    for (std::size_t i = 0; i < trials.size(); ++i)
      gzdsynth::save_bytes(gzdsynth::frame_table_bytes(trials[i]),
                           directory / gzdsynth::frame_table_name(name, i));
  }
}

// ---- surroundings -------------------------------------------------------------------------------

struct Surrounding {
  std::string name;
  std::map<std::string, std::string> orders = {};  // of the shim, see fault_shim.c
  std::function<void(long)> in_child = {};         // with the moment, from 1
  long moments = 0;                                // 0: the calls that the shim counts
  bool once = false;                               // what is disturbed costs one text at most
  bool leaves_part = false;
  int signal = 0;
};

void PrintTo(const Surrounding& surrounding, std::ostream* out) {
  *out << surrounding.name;
}

void limit(int resource, long value) {
  const rlimit both{static_cast<rlim_t>(value), static_cast<rlim_t>(value)};
  if (setrlimit(static_cast<__rlimit_resource>(resource), &both) != 0) _exit(126);
}

void leave_few_descriptors(long count) {
  close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);  // those of the test itself
  limit(RLIMIT_NOFILE, STDERR_FILENO + 1 + count);
}

void close_some(long which) {
  for (int descriptor = 0; descriptor <= STDERR_FILENO; ++descriptor)
    if ((which >> descriptor & 1) != 0) close(descriptor);
}

void break_standard_output(long /*moment*/) {
  int ends[2];
  if (pipe(ends) != 0 || dup2(ends[1], STDOUT_FILENO) < 0) _exit(126);
  close(ends[0]);
  close(ends[1]);
}

void fill_standard_output(long /*moment*/) {
  const int full = open("/dev/full", O_WRONLY);
  if (full < 0 || dup2(full, STDOUT_FILENO) < 0) _exit(126);
}

void be_nobody(long /*moment*/) {
  constexpr unsigned nobody = 65534;
  if (chmod("out", 0555) != 0 || (geteuid() == 0 && setuid(nobody) != 0)) _exit(126);
}

std::vector<Surrounding> all_surroundings() {
  std::vector<Surrounding> all = {
      {"closed_descriptors", {}, close_some, 7},
      {"broken_pipe", {}, break_standard_output, 2},
      {"full_standard_output", {}, fill_standard_output, 2},
      {"read_only_directory", {}, be_nobody, 2},
      {"file_size", {}, [](long moment) { limit(RLIMIT_FSIZE, (moment - 1) * 4093); }, 24},
      {"descriptors", {}, leave_few_descriptors, 8},
      {"shrinks", {{"FAULT_CALL", "fread"}, {"FAULT_CUT", ""}}},
      {"vanishes", {{"FAULT_CALL", "any"}, {"FAULT_REMOVE", ""}}},
  };
  for (const auto& [name, number] :
       {std::pair{"INT", SIGINT}, {"TERM", SIGTERM}, {"HUP", SIGHUP}, {"KILL", SIGKILL}})
    all.push_back({.name = name,
                   .orders = {{"FAULT_CALL", "any"}, {"FAULT_SIGNAL", std::to_string(number)}},
                   .leaves_part = number == SIGKILL,
                   .signal = number});
  for (const char* call : {"fopen", "fdopen", "open", "mkstemp", "fread", "fgets", "fseek",
                           "fwrite", "fflush", "fclose", "rename", "malloc"}) {
    all.push_back({.name = call, .orders = {{"FAULT_CALL", call}}, .once = true});
    all.push_back({.name = std::string(call) + "_for_good",
                   .orders = {{"FAULT_CALL", call}, {"FAULT_EVERY", "1"}}});
  }
  return all;
}

long after(long moment) {
  static const bool each = std::getenv("GZD_TEST_EXTRAS") != nullptr;
  constexpr long dense = 32;
  return moment + 1 + (each ? 0 : moment / dense);
}

// ---- the table ----------------------------------------------------------------------------------

class FaultTable : public testing::TestWithParam<std::tuple<Surrounding, Conversion>> {
 protected:
  FaultTable() {
    make_inputs(scratch.path(), run_.words);
    words_.insert(words_.end(), run_.words.begin(), run_.words.end());
  }

  // Old texts are there at every second moment.
  Outcome convert(long moment) {
    std::filesystem::remove_all(scratch / "out");
    std::filesystem::create_directory(scratch / "out");
    before_ = moment % 2 == 1 ? "a text of before\n" : "";
    for (const auto& [name, text] : whole_)
      if (!before_.empty()) std::ofstream(scratch / name) << before_;
    Circumstances circumstances{.directory = scratch.path(), .faults = surrounding_.orders};
    if (!surrounding_.orders.empty()) {
      circumstances.faults["FAULT_AT"] = std::to_string(moment);
      circumstances.faults["FAULT_REPORT"] = scratch / "calls";
    }
    for (auto& [name, value] : circumstances.faults)
      if (value.empty()) value = run_.recording;
    if (moment > 0 && surrounding_.in_child)
      circumstances.in_child = [this, moment] { surrounding_.in_child(moment); };
    if (damages_inputs()) make_inputs(scratch.path(), run_.words);
    return run_converter(words_, circumstances);
  }

  [[nodiscard]] bool damages_inputs() const {
    return surrounding_.orders.contains("FAULT_CUT") ||
           surrounding_.orders.contains("FAULT_REMOVE");
  }

  std::map<std::string, std::string> texts() const {
    std::map<std::string, std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(scratch / "out"))
      found["out/" + entry.path().filename().string()] = without_date(content_of(entry.path()));
    return found;
  }

  // The texts that are not there, each as it was before.
  std::vector<std::string> missing_of(const std::map<std::string, std::string>& found) const {
    std::vector<std::string> missing;
    for (const auto& [name, text] : whole_) {
      const auto now = found.find(name);
      if (now != found.end() && now->second == text) continue;
      missing.push_back(Path(name).stem());
      const bool is_as_before = now == found.end() ? before_.empty() : now->second == before_;
      EXPECT_TRUE(is_as_before) << name << " is half a text";
    }
    return missing;
  }

  void expect_told(const std::vector<std::string>& missing, const Outcome& outcome) const {
    const bool hears_nothing = surrounding_.name == "closed_descriptors";
    for (const std::string& name : missing) {
      if (hears_nothing || outcome.output.ends_with("gzdconv: Cannot allocate memory\n")) continue;
      EXPECT_NE(outcome.output.find(name), std::string::npos) << name << " is not named";
    }
  }

  void check(const Outcome& outcome) const {
    const std::map<std::string, std::string> found = texts();
    for (const auto& [name, text] : found)
      EXPECT_TRUE(whole_.contains(name) || surrounding_.leaves_part) << name << " is left over";
    const bool was_ended = outcome.signal != 0 && outcome.signal == surrounding_.signal;
    EXPECT_TRUE(was_ended || outcome.status == 0 || outcome.status == 1) << outcome.signal;
    if (run_.keeps_what_was_read && (outcome.status == 1 || damages_inputs())) return;
    const std::vector<std::string> missing = missing_of(found);
    EXPECT_TRUE(missing.empty() || outcome.status != 0);
    if (was_ended) return;
    expect_told(missing, outcome);
    EXPECT_TRUE(!surrounding_.once || missing.size() < 2 ||
                outcome.output.starts_with("gzdconv: C"));
  }

  const Surrounding surrounding_ = std::get<Surrounding>(GetParam());
  const Conversion run_ = std::get<Conversion>(GetParam());
  Words words_ = {"-q", "-y", "-p", "out"};
  std::map<std::string, std::string> whole_;
  std::string before_;
  ScratchDirectory scratch;
};

TEST_P(FaultTable, EveryTextIsWholeOrAsBefore) {
  const Outcome undisturbed = convert(0);
  ASSERT_TRUE(undisturbed.ended_well()) << undisturbed.output;
  whole_ = texts();
  ASSERT_FALSE(whole_.empty());
  const bool counts = surrounding_.moments == 0;
  const long moments = counts ? std::stol(content_of(scratch / "calls")) : surrounding_.moments;
  RecordProperty("moments", static_cast<int>(moments));
  for (long moment = 1; moment <= moments && !HasFailure(); moment = after(moment)) {
    const Outcome outcome = convert(moment);
    SCOPED_TRACE("moment " + std::to_string(moment) + " of " + std::to_string(moments) +
                 ", status " + std::to_string(outcome.status) + "\n" + outcome.output);
    check(outcome);
  }
}

std::string name_of(const testing::TestParamInfo<std::tuple<Surrounding, Conversion>>& info) {
  return std::get<Surrounding>(info.param).name + "_" + std::get<Conversion>(info.param).name;
}

INSTANTIATE_TEST_SUITE_P(Surroundings, FaultTable,
                         testing::Combine(testing::ValuesIn(all_surroundings()),
                                          testing::ValuesIn(all_runs)),
                         name_of);

}  // namespace
