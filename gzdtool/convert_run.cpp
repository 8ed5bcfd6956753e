// A pool of processes. Results wait until those before them have been told.
#include "convert_run.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>
#include <map>
#include <optional>

#include "command.h"
#include "progress.h"
#include "recording_json.h"
#include "recording_options.h"
#include "sinks/byte_sink.h"
#include "sinks/escape.h"

namespace gzdtool {

namespace {

using Clock = std::chrono::steady_clock;

struct Outcome {
  const char* state = "converted";  // or "skipped", "failed"
  double seconds = 0;
  ConverterResult result;
};

bool is_done(const std::string& recording, const std::string& text) {
  struct stat from {
  }, to{};
  if (::stat(recording.c_str(), &from) != 0 || ::stat(text.c_str(), &to) != 0) return false;
  return std::pair(to.st_mtim.tv_sec, to.st_mtim.tv_nsec) >=
         std::pair(from.st_mtim.tv_sec, from.st_mtim.tv_nsec);
}

std::int64_t bytes_of(const std::string& path) {
  struct stat facts {};
  return ::stat(path.c_str(), &facts) == 0 ? static_cast<std::int64_t>(facts.st_size) : 0;
}

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t end = std::min(text.find('\n', from), text.size());
    if (end > from) append_shown(lines.emplace_back(), text.substr(from, end - from));
    from = end + 1;
  }
  return lines;
}

class ConvertRun {
 public:
  explicit ConvertRun(const ConvertPlan& plan)
      : plan_(plan), outcomes_(plan.recordings.size()), progress_(plan.recordings.size()) {
    if (!plan.report.empty()) report_ = open_byte_sink(plan.report);
  }
  int run();

 private:
  struct Running {
    std::size_t place;
    Clock::time_point start;
    Conversion conversion;
  };

  [[nodiscard]] std::string text_of(std::size_t place) const {
    return text_of_recording(plan_.recordings[place], plan_.converter.directory);
  }
  void begin(std::size_t place);
  void fail(std::size_t place, const std::string& why);
  void await_one();
  void tell_finished();
  void tell(std::size_t place, const Outcome& outcome);
  [[nodiscard]] Json json_of_outcome(std::size_t place, const Outcome& outcome) const;

  const ConvertPlan& plan_;
  std::vector<std::optional<Outcome>> outcomes_;
  std::map<pid_t, Running> running_;
  std::map<std::string, std::size_t> texts_;  // who writes them
  std::size_t told_ = 0, worked_ = 0, failed_ = 0;
  std::unique_ptr<ByteSink> report_;
  Progress progress_;
};

void ConvertRun::fail(std::size_t place, const std::string& why) {
  outcomes_[place] =
      Outcome{.state = "failed",
              .result = {.status = 1,
                         .messages = "gzdtool: " + plan_.recordings[place] + ": " + why,
                         .findings = {}}};
}

void ConvertRun::begin(std::size_t place) {
  const std::string& recording = plan_.recordings[place];
  const std::string text = text_of(place);
  const auto [first, is_first] = texts_.try_emplace(text, place);
  if (!is_first)
    return fail(place, "has the text of " + plan_.recordings[first->second] + ", not converted");
  if (without_extension(recording) == recording) return fail(place, "is not named .gzd");
  if (!plan_.redoes && is_done(recording, text)) {
    outcomes_[place] = Outcome{.state = "skipped", .result = {}};
    return;
  }
  Conversion conversion(recording, plan_.converter);
  const pid_t process = conversion.process();
  running_.try_emplace(process, Running{place, Clock::now(), std::move(conversion)});
}

void ConvertRun::await_one() {
  int status = 0;
  const pid_t process = ::wait(&status);
  const auto found = running_.find(process);
  if (found == running_.end()) return;
  const Running& ended = found->second;
  Outcome outcome;
  outcome.result = ended.conversion.result(status);
  outcome.seconds = std::chrono::duration<double>(Clock::now() - ended.start).count();
  if (outcome.result.status != 0) outcome.state = "failed";
  outcomes_[ended.place] = std::move(outcome);
  ++worked_;
  running_.erase(found);
}

Json ConvertRun::json_of_outcome(std::size_t place, const Outcome& outcome) const {
  const std::string text = text_of(place);
  const bool has_text = std::string_view(outcome.state) != "failed";
  const Json findings = Json::parse(outcome.result.findings, nullptr, false);
  return {{"file", plan_.recordings[place]},
          {"state", outcome.state},
          {"status", outcome.result.status},
          {"text", has_text ? Json(text) : Json(nullptr)},
          {"bytes", bytes_of(plan_.recordings[place])},
          {"text_bytes", has_text ? Json(bytes_of(text)) : Json(nullptr)},
          {"seconds", std::round(outcome.seconds * 1000) / 1000},
          {"messages", lines_of(outcome.result.messages)},
          {"findings", findings.is_array() ? findings : Json(nullptr)}};
}

void ConvertRun::tell(std::size_t place, const Outcome& outcome) {
  if (std::string_view(outcome.state) == "failed") ++failed_;
  const auto lines = lines_of(outcome.result.messages);
  if (!lines.empty()) progress_.clear();
  for (const std::string& line : lines) std::fprintf(stderr, "%s\n", line.c_str());
  if (report_) report_->write(line_of(json_of_outcome(place, outcome)));
}

void ConvertRun::tell_finished() {
  for (; told_ < outcomes_.size() && outcomes_[told_]; ++told_) {
    tell(told_, *outcomes_[told_]);
    outcomes_[told_]->result = {};
  }
  progress_.show(told_, worked_);
}

int ConvertRun::run() {
  for (std::size_t next = 0; next < outcomes_.size() || !running_.empty();) {
    while (next < outcomes_.size() && running_.size() < plan_.jobs) begin(next++);
    if (!running_.empty()) await_one();
    tell_finished();
  }
  tell_finished();
  if (report_) report_->close();
  return failed_ == 0 ? exit_whole : exit_failed;
}

}  // namespace

int convert_recordings(const ConvertPlan& plan) {
  if (!plan.converter.directory.empty()) make_folder(plan.converter.directory);
  return ConvertRun(plan).run();
}

}  // namespace gzdtool
