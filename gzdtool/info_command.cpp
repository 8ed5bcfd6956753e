// The verb `info`: what is in a recording.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <map>
#include <tuple>

#include "command.h"
#include "recording_json.h"
#include "recording_options.h"
#include "sinks/byte_sink.h"
#include "sinks/escape.h"

namespace gzdtool {

namespace {

using gzdtables::BlockFacts;
using gzdtables::Facts;
using gzdtables::with_commas;

std::string counted(std::int64_t count, const char* one) {
  return with_commas(static_cast<double>(count)) + " " + one + (count == 1 ? "" : "s");
}

std::string seconds(double ms) {
  return fmt::format("{:.1f} s", ms / 1000.0);
}

// A line of the report; texts of recordings do not speak to a terminal.
void append_line(std::string& report, const char* label, const std::string& text) {
  report += fmt::format("  {:<13}", label);
  append_shown(report, text);
  report += '\n';
}

std::string head_of(const Facts& facts) {
  std::string text = with_commas(static_cast<double>(facts.bytes)) + " bytes";
  if (facts.compressed) text += ", compressed";
  text += fmt::format(", tracker generation {}", facts.generation);
  if (facts.revision != 0) text += fmt::format(", format revision {}", facts.revision);
  return text;
}

// Blocks of one kind, in the order of the first.
struct BlockKind {
  std::size_t first = 0;
  std::int64_t blocks = 0, open = 0;
  double shortest = 0, longest = 0;
};

void take_in(BlockKind& kind, const BlockFacts& block) {
  if (!block.end) {
    ++kind.open;
  } else {
    const double length = *block.end - block.start;
    const bool is_first = kind.blocks == kind.open;
    kind.shortest = is_first ? length : std::min(kind.shortest, length);
    kind.longest = is_first ? length : std::max(kind.longest, length);
  }
  ++kind.blocks;
}

std::string told(const BlockKind& kind, const BlockFacts& block) {
  const std::string eyes =
      block.eyes.empty() ? "no eye"
                         : std::string(block.eyes) + (block.eyes == "both" ? " eyes" : " eye");
  std::string text =
      fmt::format("{} of {:g} Hz, {}", counted(kind.blocks, "block"), block.rate, eyes);
  if (kind.blocks > kind.open) {
    text += ", " + seconds(kind.shortest);
    if (seconds(kind.longest) != seconds(kind.shortest)) text += " to " + seconds(kind.longest);
  }
  if (kind.open != 0) text += fmt::format(", {} without an end", kind.open);
  return text;
}

void append_blocks(std::string& report, const Facts& facts) {
  using Key = std::tuple<double, std::string_view>;
  std::map<Key, BlockKind> kinds;
  std::vector<Key> order;
  for (std::size_t i = 0; i < facts.blocks.size(); ++i) {
    const BlockFacts& block = facts.blocks[i];
    const Key key{block.rate, block.eyes};
    const auto [place, is_new] = kinds.try_emplace(key, BlockKind{.first = i});
    if (is_new) order.push_back(key);
    take_in(place->second, block);
  }
  for (const Key& key : order)
    append_line(report, "blocks", told(kinds[key], facts.blocks[kinds[key].first]));
}

void append_counts(std::string& report, const Facts& facts) {
  const auto& counts = facts.elements;
  std::string samples = counted(counts.samples, "sample");
  if (facts.repairs.samples_filled != 0)
    samples +=
        ", " + with_commas(static_cast<double>(facts.repairs.samples_filled)) + " more filled in";
  append_line(report, "samples", samples);
  append_line(report, "eye events",
              counted(counts.fixations, "fixation") + ", " + counted(counts.saccades, "saccade") +
                  ", " + counted(counts.blinks, "blink"));
  append_line(report, "others",
              counted(counts.messages, "message") + ", " +
                  counted(counts.buttons, "button change") + ", " +
                  counted(counts.inputs, "input change"));
}

void append_notes(std::string& report, const char* label,
                  const std::vector<gzdtables::Note>& notes) {
  for (const auto& note : notes)
    append_line(report, label, with_commas(note.time) + " ms: " + note.text);
}

void append_findings(std::string& report, const Facts& facts) {
  constexpr std::size_t most = 20;
  const auto& findings = facts.findings;
  if (findings.empty()) return append_line(report, "findings", "none");
  for (std::size_t i = 0; i < findings.size() && i < most; ++i)
    append_line(report, "finding", gzdtables::sentence_of(findings[i]));
  if (findings.size() > most)
    append_line(
        report, "findings",
        with_commas(static_cast<double>(findings.size() - most)) + " more, told by gzdtool check");
}

using Loss = std::array<std::optional<double>, 2>;  // shares by eye

void append_loss(std::string& report, const Loss& loss) {
  std::string text;
  for (const std::size_t eye : {0, 1})
    if (loss[eye])
      text += fmt::format("{}{} eye {:.1f} %", text.empty() ? "" : ", ",
                          eye == 0 ? "left" : "right", 100.0 * *loss[eye]);
  append_line(report, "lost", text.empty() ? "no eye was recorded" : text + " of samples");
}

std::string report_of(const Facts& facts, const std::optional<Loss>& loss) {
  std::string report;
  append_shown(report, facts.file);
  report += '\n';
  append_line(report, "file", head_of(facts));
  if (!facts.date.empty()) append_line(report, "date", facts.date);
  if (facts.duration) append_line(report, "duration", seconds(*facts.duration));
  append_blocks(report, facts);
  append_counts(report, facts);
  if (loss) append_loss(report, *loss);
  if (facts.display) {
    const auto& [left, top, right, bottom] = *facts.display;
    append_line(
        report, "display",
        fmt::format("{:g} {:g} {:g} {:g} (left, top, right, bottom)", left, top, right, bottom));
  }
  append_notes(report, "calibration", facts.calibrations);
  append_notes(report, "validation", facts.validations);
  if (facts.replaced_messages != 0)
    append_line(report, "texts", counted(facts.replaced_messages, "message") + " not UTF-8");
  append_findings(report, facts);
  return report;
}

std::string json_line(const Facts& facts, const std::optional<Loss>& loss) {
  Json json = json_of(facts);
  const auto share = [&](std::size_t eye) { return json_number((*loss)[eye]); };
  if (loss) json["loss"] = {{"left", share(0)}, {"right", share(1)}};
  return line_of(json);
}

Loss loss_of(gzdtables::Recording& recording) {
  const auto examination = gzdtables::examine(recording);
  return {gzdtables::lost_share(examination, 0), gzdtables::lost_share(examination, 1)};
}

class InfoCommand final : public Command {
 public:
  InfoCommand() : Command("info", "Tell what is in recordings") {}

  void declare(CLI::App& app) override {
    app.add_option("FILE", files_, "Recordings")->required()->type_name("");
    app.add_flag("--json", json_, "One line of JSON a recording");
    app.add_flag("--loss", loss_,
                 "Also the share of lost samples by eye; takes several times as long");
    recording_.declare_basic(app);
  }
  int run() override;

 private:
  bool tell(const std::string& file, ByteSink& output) const;

  std::vector<std::string> files_;
  bool json_ = false, loss_ = false;
  RecordingOptions recording_;
};

// A damaged recording is told up to the damage.
bool InfoCommand::tell(const std::string& file, ByteSink& output) const {
  KeptLog::clear();
  try {
    gzdtables::Options options = recording_.options();
    options.failsafe = true;
    gzdtables::Recording recording(file, options);
    const Facts facts = gzdtables::facts_of(recording);
    const auto loss = loss_ ? std::optional(loss_of(recording)) : std::nullopt;
    output.write(json_ ? json_line(facts, loss) : report_of(facts, loss));
    return true;
  } catch (const gzdtables::ReadError& error) {
    KeptLog::tell();
    complain(file + ": " + sentence_of(error));
    return false;
  }
}

int InfoCommand::run() {
  const KeptLog log;
  const auto output = open_byte_sink("-");
  bool is_whole = true;
  for (const std::string& file : files_) is_whole &= tell(file, *output);
  return is_whole ? exit_whole : exit_failed;
}

}  // namespace

void append_info_command(std::vector<std::unique_ptr<Command>>& commands) {
  commands.push_back(std::make_unique<InfoCommand>());
}

}  // namespace gzdtool
