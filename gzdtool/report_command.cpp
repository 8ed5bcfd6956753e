// The verb `report`: recordings as pages for a browser.
#include <CLI/CLI.hpp>
#include <cmath>
#include <map>

#include "command.h"
#include "recording_options.h"
#include "report_page.h"
#include "sinks/byte_sink.h"
#include "tables/schema.h"

namespace gzdtool {

namespace {

using gzdtables::UsageError;

// How long the recording is, and its first findings.
std::string told_of(const Json& data) {
  constexpr std::size_t most = 3;
  const Json& duration = data["facts"]["duration"];
  const Json& findings = data["check"]["findings"];
  std::string told;
  if (duration.is_number())
    told = gzdtables::with_commas(std::round(duration.get<double>() / 1000)) + " s";
  for (std::size_t i = 0; i < findings.size() && i < most; ++i)
    told += "; " + findings[i]["text"].get<std::string>();
  if (findings.size() > most)
    told += "; " + std::to_string(findings.size() - most) + " findings more";
  return told;
}

class ReportCommand final : public Command {
 public:
  ReportCommand() : Command("report", "Write recordings as pages that a browser opens") {}

  void declare(CLI::App& app) override {
    app.add_option("FILE", files_, "Recordings")->required()->type_name("");
    app.add_option("-o,--output", output_, "The page of one recording")->type_name("FILE");
    app.add_option("--output-dir", directory_, "Folder for NAME.html, and index.html over all")
        ->type_name("DIR");
    app.add_option("--page", page_, "The page that becomes a report, when it is not installed")
        ->type_name("FILE");
    recording_.declare(app);
  }
  int run() override;

 private:
  [[nodiscard]] ReportEntry report(const std::string& file, const std::string& output) const;
  [[nodiscard]] ReportEntry try_report(const std::string& file, const std::string& output) const;
  [[nodiscard]] int run_folder() const;
  [[nodiscard]] std::string template_text() const { return report_template(page_); }

  std::vector<std::string> files_;
  std::string output_, directory_, page_;
  RecordingOptions recording_;
};

// A damaged recording is told up to the damage.
ReportEntry ReportCommand::report(const std::string& file, const std::string& output) const {
  gzdtables::Options options = recording_.options();
  options.failsafe = true;
  gzdtables::Recording recording(file, options);
  const Json data = report_data(recording);
  write_file(output, report_page(template_text(), data));
  return {name_of_recording(file), output.substr(output.find_last_of('/') + 1),
          data["check"]["state"], told_of(data)};
}

ReportEntry ReportCommand::try_report(const std::string& file, const std::string& output) const {
  KeptLog::clear();
  try {
    return report(file, output);
  } catch (const gzdtables::ReadError& error) {
    KeptLog::tell();
    complain(file + ": " + sentence_of(error));
    return {name_of_recording(file), "", "unreadable", sentence_of(error)};
  }
}

int ReportCommand::run_folder() const {
  make_folder(directory_);
  std::map<std::string, std::string> names{{"index", "the index"}};
  std::vector<ReportEntry> entries;
  int status = exit_whole;
  for (const std::string& file : files_) {
    const std::string name = name_of_recording(file);
    const auto [place, is_first] = names.try_emplace(name, file);
    if (is_first)
      entries.push_back(try_report(file, directory_ + "/" + name + ".html"));
    else
      complain(file + ": has the report of " + place->second + ", not written");
    if (!is_first || entries.back().file.empty()) status = exit_failed;
  }
  write_file(directory_ + "/index.html", index_page(entries));
  return status;
}

int ReportCommand::run() {
  if (output_.empty() == directory_.empty())
    throw UsageError("report takes either --output FILE or --output-dir DIR");
  if (!output_.empty() && files_.size() != 1)
    throw UsageError("several recordings need --output-dir DIR");
  static_cast<void>(recording_.options());
  static_cast<void>(template_text());
  const KeptLog log;
  if (!directory_.empty()) return run_folder();
  return try_report(files_.front(), output_).file.empty() ? exit_failed : exit_whole;
}

}  // namespace

void append_report_command(std::vector<std::unique_ptr<Command>>& commands) {
  commands.push_back(std::make_unique<ReportCommand>());
}

}  // namespace gzdtool
