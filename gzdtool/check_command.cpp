// The verb `check`: whether a recording can be trusted.
#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "command.h"
#include "recording_json.h"
#include "recording_options.h"
#include "sinks/byte_sink.h"
#include "sinks/escape.h"

namespace gzdtool {

namespace {

using gzdtables::BlockExamination;
using gzdtables::Examination;
using gzdtables::with_commas;

std::string loss_of(const BlockExamination& block) {
  constexpr std::array<const char*, 2> names{"left", "right"};
  std::string text;
  for (const std::size_t eye : {0, 1}) {
    if (!block.lost[eye]) continue;
    const auto counted = static_cast<double>(block.counted[eye]);
    const double share =
        counted > 0 ? 100.0 * static_cast<double>(*block.lost[eye]) / counted : 0.0;
    text += fmt::format(", {} eye lost in {:.1f} %", names[eye], share);
  }
  return text;
}

std::string told(const BlockExamination& block, std::size_t number) {
  const std::string end = block.end ? with_commas(*block.end) + " ms" : "the end of the file";
  std::string text =
      fmt::format("block {}, {} to {}: {} of {} samples", number, with_commas(block.start), end,
                  with_commas(static_cast<double>(block.samples)),
                  with_commas(static_cast<double>(block.expected)));
  if (block.filled != 0)
    text += fmt::format(" ({} filled in)", with_commas(static_cast<double>(block.filled)));
  return text + loss_of(block);
}

Json json_line(const std::string& file, const Examination& examination) {
  Json line{{"file", file}};
  line.update(json_of(examination));
  return line;
}

std::string report_of(const std::string& file, const Examination& examination) {
  std::string report;
  append_shown(report, file);
  const std::size_t count = examination.findings.size();
  report +=
      count == 0 ? ": sound\n" : fmt::format(": {} finding{}\n", count, count == 1 ? "" : "s");
  for (const auto& finding : examination.findings) {
    report += "  ";
    append_shown(report, gzdtables::sentence_of(finding));
    report += '\n';
  }
  for (std::size_t i = 0; i < examination.blocks.size(); ++i)
    report += "  " + told(examination.blocks[i], i + 1) + "\n";
  return report;
}

class CheckCommand final : public Command {
 public:
  CheckCommand() : Command("check", "Tell whether recordings can be trusted") {}

  void declare(CLI::App& app) override {
    app.add_option("FILE", files_, "Recordings")->required()->type_name("");
    app.add_flag("--json", json_, "One line of JSON a recording");
    recording_.declare_basic(app);
    app.footer(
        "Ends with status 0 when all are sound, 3 when one is lossy or was repaired, 1 when "
        "one cannot be read.");
  }
  int run() override;

 private:
  int check(const std::string& file, ByteSink& output) const;
  int tell_unreadable(const std::string& file, const std::string& reason, ByteSink& output) const;

  std::vector<std::string> files_;
  bool json_ = false;
  RecordingOptions recording_;
};

int CheckCommand::check(const std::string& file, ByteSink& output) const {
  KeptLog::clear();
  try {
    gzdtables::Options options = recording_.options();
    options.failsafe = true;
    gzdtables::Recording recording(file, options);
    const Examination examination = gzdtables::examine(recording);
    output.write(json_ ? line_of(json_line(file, examination)) : report_of(file, examination));
    return examination.findings.empty() ? exit_whole : exit_lossy;
  } catch (const gzdtables::ReadError& error) {
    return tell_unreadable(file, sentence_of(error), output);
  }
}

int CheckCommand::tell_unreadable(const std::string& file, const std::string& reason,
                                  ByteSink& output) const {
  KeptLog::tell();
  complain(file + ": " + reason);
  if (json_) output.write(line_of({{"file", file}, {"state", "unreadable"}, {"reason", reason}}));
  return exit_failed;
}

// The worst counts: not readable before lossy before sound.
int CheckCommand::run() {
  const KeptLog log;
  const auto output = open_byte_sink("-");
  int status = exit_whole;
  for (const std::string& file : files_) {
    const int result = check(file, *output);
    if (status != exit_failed && result != exit_whole) status = result;
  }
  return status;
}

}  // namespace

void append_check_command(std::vector<std::unique_ptr<Command>>& commands) {
  commands.push_back(std::make_unique<CheckCommand>());
}

}  // namespace gzdtool
