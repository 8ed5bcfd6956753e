// The table of options, and the settings that they make.
#include "synth_options.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <limits>

#include "session.h"

namespace gzdsynth {

namespace {

using Settings = SessionSettings;

struct Option {
  std::string_view name;
  std::string_view value;  // placeholder in the usage text; empty for a switch
  std::string_view help;
  std::function<void(Settings&, std::string_view)> apply;
};

[[noreturn]] void reject(std::string_view name, std::string_view value, std::string_view wanted) {
  throw UsageError(std::string(name) + ": \"" + std::string(value) + "\" is not " +
                   std::string(wanted));
}

std::uint64_t number(std::string_view name, std::string_view text, std::uint64_t low,
                     std::uint64_t high) {
  std::uint64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end || value < low || value > high)
    reject(name, text,
           "a whole number from " + std::to_string(low) + " to " + std::to_string(high));
  return value;
}

int one_of(std::string_view name, std::string_view text, const std::vector<int>& allowed) {
  std::string list;
  for (const int value : allowed) {
    if (text == std::to_string(value)) return value;
    list += (list.empty() ? "" : ", ") + std::to_string(value);
  }
  reject(name, text, "one of " + list);
}

void set_eyes(Settings& s, std::string_view value) {
  if (value != "left" && value != "right" && value != "both")
    reject("--eyes", value, "left, right or both");
  s.left = value != "right";
  s.right = value != "left";
}

void set_coordinates(Settings& s, std::string_view list) {
  s.gaze = s.href = s.raw = false;
  const std::string_view whole = list;
  while (true) {
    const std::size_t comma = list.find(',');
    const std::string_view word = list.substr(0, comma);
    if (word == "gaze") {
      s.gaze = true;
    } else if (word == "href") {
      s.href = true;
    } else if (word == "raw") {
      s.raw = true;
    } else {
      reject("--coords", whole, "a list of gaze, href and raw");
    }
    if (comma == std::string_view::npos) return;
    list.remove_prefix(comma + 1);
  }
}

// A whole number of a range into a member.
template <typename Member>
auto whole(std::string_view name, Member Settings::*member, std::uint64_t low, std::uint64_t high) {
  return [=](Settings& s, std::string_view value) {
    s.*member = static_cast<Member>(number(name, value, low, high));
  };
}

auto choice(std::string_view name, int Settings::*member, const std::vector<int>& allowed) {
  return [name, member, allowed](Settings& s, std::string_view value) {
    s.*member = one_of(name, value, allowed);
  };
}

auto flag(bool Settings::*member, bool value) {
  return [=](Settings& s, std::string_view) { s.*member = value; };
}

const std::vector<Option>& table() {
  using S = Settings;
  constexpr std::uint64_t max32 = std::numeric_limits<std::uint32_t>::max();
  constexpr std::uint64_t max64 = std::numeric_limits<std::uint64_t>::max();
  static const std::vector<Option> options = {
      {"--generation", "1..4", "tracker: 1 old, 2 Kestrel, 3 Falcon (default), 4 Osprey",
       choice("--generation", &S::generation, {1, 2, 3, 4})},
      {"--rate", "HZ", "250, 500, 1000 (default) or 2000; generation 1 has 250 only",
       choice("--rate", &S::rate, {250, 500, 1000, 2000})},
      {"--eyes", "EYES", "left, right or both (default)", set_eyes},
      {"--coords", "LIST", "positions recorded, of gaze,href,raw (default gaze)", set_coordinates},
      {"--duration", "SECONDS", "recorded time over all trials (default 10)",
       whole("--duration", &S::seconds, 1, 1000000)},
      {"--trials", "N", "number of trials (default 4)", whole("--trials", &S::trials, 1, 1000000)},
      {"--seed", "N", "another seed, other movements (default 1)",
       whole("--seed", &S::seed, 0, max64)},
      {"--start-time", "MS", "time of the first message (default 100000)",
       whole("--start-time", &S::startTime, 1, max32)},
      {"--zip", "", "compressed records", flag(&S::zip, true)},
      {"--target", "", "head-target words in the samples", flag(&S::target, true)},
      {"--pose", "", "head-pose blocks and events (generation 4)", flag(&S::pose, true)},
      {"--geometry", "", "set-up messages of camera, screen and eyes, for three-dimensional gaze",
       flag(&S::geometry, true)},
      {"--ellipse", "BYTES", "pupil-ellipse blocks of 56 or 72 bytes (generation 4)",
       choice("--ellipse", &S::ellipse, {56, 72})},
      {"--raw-packed", "", "packed camera data, told by negative pupils",
       flag(&S::rawPacked, true)},
      {"--long-messages", "", "a message of several records in each trial",
       flag(&S::longMessages, true)},
      {"--no-resolution", "", "samples and events without resolution", flag(&S::resolution, false)},
      {"--no-input", "", "no input words and events", flag(&S::input, false)},
      {"--no-buttons", "", "no button words and events", flag(&S::buttons, false)},
      {"--no-samples", "", "events only", flag(&S::samples, false)},
      {"--message-log", "FILE", "also write the experiment's message log",
       [](S& s, std::string_view value) { s.messageLog = value; }},
      {"--video-table", "", "also write a video frame table for each trial",
       flag(&S::videoTable, true)},
      {"--gap", "MS", "fault: samples lost for MS now and then", whole("--gap", &S::gap, 1, 60000)},
      {"--repeat-times", "", "fault: samples that repeat the time before",
       flag(&S::repeatTimes, true)},
      {"--unpaired-blinks", "", "fault: starts and ends of blinks missing",
       flag(&S::unpairedBlinks, true)},
      {"--stray-samples", "", "fault: samples outside recording blocks",
       flag(&S::straySamples, true)},
      {"--cut", "BYTES", "fault: the end of the file left away", whole("--cut", &S::cut, 1, max64)},
      {"--no-end-tag", "", "fault: no closing zero tag", flag(&S::end_tag, false)},
  };
  return options;
}

const Option& find_option(std::string_view name) {
  for (const Option& option : table())
    if (option.name == name) return option;
  throw UsageError("unknown option " + std::string(name));
}

bool has_name(const std::vector<std::string_view>& arguments, std::string_view name) {
  return std::find(arguments.begin(), arguments.end(), name) != arguments.end();
}

void require(bool good, const char* text) {
  if (!good) throw UsageError(text);
}

void check(const Settings& s) {
  require(!s.output.empty(), "no output file named");
  const std::string& name = s.output;
  require(name.size() > 4 && name.substr(name.size() - 4) == ".gzd",
          "the output's name must end in .gzd");
  require(s.generation != 1 || s.rate == 250, "generation 1 records 250 samples per second only");
  require(s.generation == 4 || (!s.pose && s.ellipse == 0),
          "--pose and --ellipse need --generation 4");
  require(!s.rawPacked || s.generation < 4, "--raw-packed needs a generation before 4");
  require(!s.rawPacked || !s.target, "--raw-packed and --target share the head words");
  require(s.generation != 1 || !s.zip, "generation 1 does not compress");
  require(s.trials <= 10 * s.seconds, "a trial must last at least 100 ms");
  require(session_end(s) <= std::numeric_limits<std::uint32_t>::max(),
          "the recording would run beyond the last time of 32 bits");
}

}  // namespace

SynthCommand parse_command(const std::vector<std::string_view>& arguments) {
  SynthCommand command;
  command.help = has_name(arguments, "--help");
  command.version = has_name(arguments, "--version");
  if (command.help || command.version) return command;
  Settings& settings = command.settings;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string_view word = arguments[i];
    if (!word.starts_with("-")) {
      require(settings.output.empty(), "more than one output file named");
      settings.output = word;
      continue;
    }
    const Option& option = find_option(word);
    const bool valued = !option.value.empty();
    if (valued && i + 1 == arguments.size())
      throw UsageError(std::string(word) + ": value missing");
    option.apply(settings, valued ? arguments[++i] : std::string_view());
  }
  if (settings.generation == 1 && !has_name(arguments, "--rate")) settings.rate = 250;
  check(settings);
  return command;
}

std::string usage_text() {
  std::string text =
      "Usage: gzdsynth [options] OUTPUT.gzd\n"
      "Writes a synthetic eye-tracker recording.\n\n";
  const auto line = [&text](std::string left, std::string_view help) {
    left.resize(std::max<std::size_t>(left.size() + 1, 24), ' ');
    text.append("  ").append(left).append(help).push_back('\n');
  };
  for (const Option& option : table()) {
    std::string left(option.name);
    if (!option.value.empty()) left.append(" ").append(option.value);
    line(left, option.help);
  }
  line("--help", "this text");
  line("--version", "the version");
  return text;
}

}  // namespace gzdsynth
