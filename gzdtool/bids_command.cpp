// The verb `bids`: recordings in the exchange form of the field.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>

#include "bids_events.h"
#include "command.h"
#include "recording_options.h"
#include "sinks/byte_sink.h"
#include "tables/schema.h"

namespace gzdtool {

namespace {

using gzdtables::Recording;
using gzdtables::UsageError;

void check_label(const std::string& name, const std::string& label) {
  const bool is_label = std::all_of(label.begin(), label.end(), [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  });
  if (label.empty() || !is_label)
    throw UsageError(name + " takes letters and digits, not '" + label + "'");
}

Json lab_of(const std::string& file) {
  if (file.empty()) return Json::object();
  std::ifstream stream(file);
  Json lab = Json::parse(stream, nullptr, false);
  if (!lab.is_object()) throw UsageError("the lab file " + file + " holds no JSON object");
  return lab;
}

constexpr std::array screen_keys{"ScreenDistance", "ScreenOrigin", "ScreenRefreshRate",
                                 "ScreenResolution", "ScreenSize"};

// Keys of the screen go into an object of their own; the resolution is the recording's.
Json sidecar_base(const Json& lab, const gzdtables::Facts& facts) {
  Json base = lab;
  Json screen = base.value("StimulusPresentation", Json::object());
  for (const char* const key : screen_keys)
    if (base.contains(key)) {
      screen[key] = base[key];
      base.erase(key);
    }
  if (facts.display && !screen.contains("ScreenResolution")) {
    const auto& [left, top, right, bottom] = *facts.display;
    screen["ScreenResolution"] = {json_number(right - left), json_number(bottom - top)};
  }
  if (!screen.empty()) base["StimulusPresentation"] = screen;
  return base;
}

// What the exchange form asks for and nobody told.
std::string missing_in(const Json& base) {
  const Json screen = base.value("StimulusPresentation", Json::object());
  std::string names;
  const auto look = [&](const Json& place, const char* key) {
    if (!place.contains(key)) names.append(names.empty() ? "" : ", ").append(key);
  };
  for (const char* const key : {"ScreenDistance", "ScreenResolution", "ScreenSize"})
    look(screen, key);
  for (const char* const key : {"Manufacturer", "ManufacturersModelName"}) look(base, key);
  return names;
}

class BidsCommand final : public Command {
 public:
  BidsCommand() : Command("bids", "Write recordings into a BIDS dataset") {}

  void declare(CLI::App& app) override;
  int run() override;

 private:
  bool write_file(const std::string& file);
  void write_runs(Recording& recording);
  [[nodiscard]] std::string stem_of(bool has_runs);
  void describe_dataset() const;

  std::vector<std::string> files_;
  std::string directory_, subject_, session_, task_, datatype_ = "beh", lab_file_, dataset_name_;
  std::optional<int> run_;
  double start_time_ = 0;
  RecordingOptions recording_;
  Json lab_;
  int next_run_ = 1;
};

void BidsCommand::declare(CLI::App& app) {
  app.add_option("FILE", files_, "Recordings of one subject; each is a run")
      ->required()
      ->type_name("");
  app.add_option("--output-dir", directory_, "Folder of the dataset")->required()->type_name("DIR");
  app.add_option("--subject", subject_, "Label of the subject")->required()->type_name("LABEL");
  app.add_option("--session", session_, "Label of the session")->type_name("LABEL");
  app.add_option("--task", task_, "Label of the task")->required()->type_name("LABEL");
  app.add_option("--run", run_, "Number of the first run")->type_name("N");
  app.add_option("--datatype", datatype_, "Folder of the data: beh (the default), func, eeg, meg")
      ->type_name("DATATYPE");
  app.add_option("--lab", lab_file_,
                 "JSON of what recordings do not tell: ScreenSize and ScreenDistance (m), "
                 "Manufacturer, ManufacturersModelName and more")
      ->type_name("FILE");
  app.add_option("--dataset-name", dataset_name_,
                 "Name of the dataset, for a dataset_description.json where there is none")
      ->type_name("TEXT");
  app.add_option("--start-time", start_time_, "StartTime of the sidecars (s), 0 by default")
      ->type_name("S");
  recording_.declare_basic(app);
}

std::string BidsCommand::stem_of(bool has_runs) {
  std::string folder = directory_ + "/sub-" + subject_;
  std::string name = "sub-" + subject_;
  if (!session_.empty()) {
    folder += "/ses-" + session_;
    name += "_ses-" + session_;
  }
  folder += "/" + datatype_;
  make_folder(folder);
  name += "_task-" + task_;
  if (has_runs) name += "_run-" + std::to_string(next_run_++);
  return folder + "/" + name;
}

void BidsCommand::write_runs(Recording& recording) {
  const std::vector<BidsRun> runs = runs_of(recording);
  if (runs.empty()) throw gzdtables::ReadError("holds no samples");
  const Json base = sidecar_base(lab_, gzdtables::facts_of(recording));
  const std::string missing = missing_in(base);
  if (!missing.empty()) complain(recording.path() + ": not told by recording or --lab: " + missing);
  const bool has_runs = run_ || files_.size() > 1 || runs.size() > 1;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const double next = i + 1 < runs.size() ? std::nextafter(runs[i + 1].start, 0.0)
                                            : std::numeric_limits<double>::infinity();
    BidsTarget target{runs[i], next, stem_of(has_runs), base, start_time_};
    if (i == 0) target.events_from = -std::numeric_limits<double>::infinity();
    std::int64_t dropped = 0;
    for (const std::size_t eye : {0, 1})
      if (runs[i].eyes[eye]) dropped = write_bids_eye(recording, target, eye);
    write_bids_task_events(recording, target);
    if (dropped != 0)
      complain(recording.path() + ": " + std::to_string(dropped) +
               " samples found their row of the regular table taken, and were left out");
  }
}

bool BidsCommand::write_file(const std::string& file) {
  KeptLog::clear();
  try {
    Recording recording(file, recording_.options());
    write_runs(recording);
    return true;
  } catch (const gzdtables::ReadError& error) {
    KeptLog::tell();
    complain(file + ": " + sentence_of(error));
    return false;
  }
}

// A dataset has a name, which nobody but the user knows.
void BidsCommand::describe_dataset() const {
  const std::string name = directory_ + "/dataset_description.json";
  if (std::filesystem::exists(name)) return;
  if (dataset_name_.empty())
    return complain("the dataset has no dataset_description.json yet: name it with --dataset-name");
  const Json description = {
      {"Name", dataset_name_},
      {"BIDSVersion", "1.11.0"},
      {"DatasetType", "raw"},
      {"GeneratedBy", Json::array({Json{{"Name", "gzdtool"}, {"Version", GZDTOOL_VERSION}}})}};
  write_json(name, description);
}

int BidsCommand::run() {
  check_label("--subject", subject_);
  check_label("--task", task_);
  check_label("--datatype", datatype_);
  if (!session_.empty()) check_label("--session", session_);
  if (run_ && *run_ < 0) throw UsageError("--run counts from 0 or 1");
  next_run_ = run_.value_or(1);
  lab_ = lab_of(lab_file_);
  const KeptLog log;
  bool is_whole = true;
  for (const std::string& file : files_) is_whole &= write_file(file);
  describe_dataset();
  return is_whole ? exit_whole : exit_failed;
}

}  // namespace

void append_bids_command(std::vector<std::unique_ptr<Command>>& commands) {
  commands.push_back(std::make_unique<BidsCommand>());
}

}  // namespace gzdtool
