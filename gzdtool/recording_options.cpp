// From the command line to the options of a recording.
#include "recording_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstring>

#include <strings.h>

#include "sinks/escape.h"
#include "tables/schema.h"

namespace gzdtool {

namespace {

constexpr const char* trials = "Trials";
constexpr const char* reading = "Reading";

std::string& kept_log() {
  static std::string log;
  return log;
}

void keep(const char* message) {
  constexpr std::size_t most = 1 << 16;
  if (kept_log().size() < most) kept_log() += message;
}

// Lines to standard error; what is in them does not speak to a terminal.
void print_lines(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string line;
    append_shown(line, text.substr(0, end));
    std::fprintf(stderr, end < text.size() ? "%s\n" : "%s", line.c_str());
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void tell_at_once(const char* message) {
  print_lines(message);
}

std::pair<std::string, std::string> variable_of(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos)
    throw gzdtables::UsageError("--trial-variable takes NAME=REGEX, not '" + text + "'");
  return {text.substr(0, equals), text.substr(equals + 1)};
}

}  // namespace

void RecordingOptions::declare_basic(CLI::App& app) {
  app.add_flag("--no-repair", no_repair_, "Take the recording as it is")->group(reading);
  app.add_flag("--message-offsets", message_offsets_,
               "A number at the start of a message is an offset of its time")
      ->group(reading);
  app.add_flag("--message-log", message_log_,
               "Merge tq_messages.log, the experiment's log in the recording's folder")
      ->group(reading);
}

void RecordingOptions::declare(CLI::App& app) {
  app_ = &app;
  declare_basic(app);
  app.add_flag("--failsafe", failsafe_, "Read a damaged recording up to the damage")
      ->group(reading);
  app.add_option("--trial-start", trial_start_, "Messages that contain TEXT open a trial")
      ->type_name("TEXT")
      ->group(trials);
  app.add_option("--trial-end", trial_end_, "Messages that contain TEXT end the trial")
      ->type_name("TEXT")
      ->group(trials);
  app.add_option("--trial-variable", variables_,
                 "A column of trials: what the one group of REGEX matches in the last message of "
                 "the trial that matches")
      ->type_name("NAME=REGEX")
      ->allow_extra_args(false)
      ->group(trials);
}

gzdtables::Options RecordingOptions::options() const {
  gzdtables::Options options;
  options.repair = !no_repair_;
  options.failsafe = failsafe_;
  options.message_offsets = message_offsets_;
  options.message_log = message_log_;
  if (app_ != nullptr && app_->count("--trial-start") > 0) options.trials.start = trial_start_;
  if (app_ != nullptr && app_->count("--trial-end") > 0) options.trials.end = trial_end_;
  for (const std::string& text : variables_) options.trials.variables.push_back(variable_of(text));
  gzdtables::check_options(options);
  return options;
}

KeptLog::KeptLog() {
  gzd_set_log_function(reinterpret_cast<void*>(&keep));
  gzd_set_notice_function(&keep);
}

KeptLog::~KeptLog() {
  clear();
  log_to_standard_error();
}

void KeptLog::tell() {
  print_lines(kept_log());
  clear();
}

void KeptLog::clear() {
  kept_log().clear();
}

void log_to_standard_error() {
  gzd_set_log_function(reinterpret_cast<void*>(&tell_at_once));
  gzd_set_notice_function(&tell_at_once);
}

std::string sentence_of(const gzdtables::ReadError& error) {
  std::string text = error.what();
  if (error.reason() != 0) text.append(": ").append(std::strerror(error.reason()));
  return text;
}

std::string without_extension(const std::string& path) {
  constexpr std::string_view extension = ".gzd";
  const std::string name = path.substr(path.find_last_of('/') + 1);
  if (name.size() <= extension.size()) return path;
  const std::size_t stem = path.size() - extension.size();
  return ::strcasecmp(path.c_str() + stem, extension.data()) == 0 ? path.substr(0, stem) : path;
}

std::string name_of_recording(const std::string& path) {
  return without_extension(path.substr(path.find_last_of('/') + 1));
}

}  // namespace gzdtool
