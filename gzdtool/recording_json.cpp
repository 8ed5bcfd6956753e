// Keys and values of facts, findings and examinations.
#include "recording_json.h"

#include <cmath>

#include "sinks/byte_sink.h"

namespace gzdtool {

namespace {

using gzdtables::Facts;

template <class Value>
Json value_or_null(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

Json text_or_null(std::string_view text) {
  return text.empty() ? Json(nullptr) : Json(text);
}

Json json_of(const std::vector<gzdtables::Note>& notes) {
  Json list = Json::array();
  for (const auto& note : notes)
    list.push_back({{"time", json_number(note.time)}, {"text", note.text}});
  return list;
}

Json json_of(const gzdtables::ElementCounts& counts) {
  return {{"samples", counts.samples},   {"fixations", counts.fixations},
          {"saccades", counts.saccades}, {"blinks", counts.blinks},
          {"messages", counts.messages}, {"buttons", counts.buttons},
          {"inputs", counts.inputs},     {"blocks", counts.blocks}};
}

Json json_of(const gzdtables::RepairCounts& repairs) {
  return {{"samples_filled", repairs.samples_filled},
          {"samples_dropped", repairs.samples_dropped},
          {"events_retimed", repairs.events_retimed},
          {"blink_starts_inserted", repairs.blink_starts_inserted}};
}

Json json_of(const gzdtables::FixationShift& shift) {
  if (shift.compared == 0) return nullptr;
  return {{"compared", shift.compared}, {"x", shift.x}, {"y", shift.y}};
}

Json display_of(const Facts& facts) {
  if (!facts.display) return nullptr;
  Json edges = Json::array();
  for (const double edge : *facts.display) edges.push_back(json_number(edge));
  return edges;
}

}  // namespace

Json json_number(double number) {
  constexpr double highest_exact = 9007199254740992.0;
  if (!std::isfinite(number)) return nullptr;
  if (std::trunc(number) == number && std::fabs(number) <= highest_exact)
    return static_cast<std::int64_t>(number);
  return number;
}

Json json_number(const std::optional<double>& number) {
  return number ? json_number(*number) : Json(nullptr);
}

Json json_of(const gzdtables::Finding& finding) {
  return {{"kind", finding.name},
          {"eye", text_or_null(finding.eye)},
          {"start", json_number(finding.start)},
          {"end", json_number(finding.end)},
          {"count", finding.count},
          {"detail", finding.detail},
          {"place", value_or_null(finding.place)},
          {"merged", finding.merged},
          {"text", gzdtables::sentence_of(finding)}};
}

Json json_of(const std::vector<gzdtables::Finding>& findings) {
  Json list = Json::array();
  for (const auto& finding : findings) list.push_back(json_of(finding));
  return list;
}

Json json_of(const Facts& facts) {
  return {{"file", facts.file},
          {"bytes", facts.bytes},
          {"compressed", facts.compressed},
          {"preamble", facts.preamble},
          {"date", text_or_null(facts.date)},
          {"generation", facts.generation},
          {"revision", facts.revision},
          {"utf8", facts.utf8},
          {"duration", json_number(facts.duration)},
          {"elements", json_of(facts.elements)},
          {"display", display_of(facts)},
          {"calibrations", json_of(facts.calibrations)},
          {"validations", json_of(facts.validations)},
          {"replaced_messages", facts.replaced_messages},
          {"repairs", json_of(facts.repairs)},
          {"damaged_at", value_or_null(facts.damaged_at)},
          {"findings", json_of(facts.findings)}};
}

Json json_of(const gzdtables::BlockExamination& block) {
  return {{"start", json_number(block.start)},
          {"end", json_number(block.end)},
          {"rate", json_number(block.rate)},
          {"samples", block.samples},
          {"filled", block.filled},
          {"expected", block.expected},
          {"left_lost", value_or_null(block.lost[0])},
          {"right_lost", value_or_null(block.lost[1])}};
}

Json json_of(const gzdtables::Examination& examination) {
  Json blocks = Json::array();
  for (const auto& block : examination.blocks) blocks.push_back(json_of(block));
  return {{"state", examination.findings.empty() ? "sound" : "lossy"},
          {"findings", json_of(examination.findings)},
          {"blocks", blocks},
          {"fixation_shift",
           {{"left", json_of(examination.shifts[0])}, {"right", json_of(examination.shifts[1])}}}};
}

void write_json(const std::string& name, const Json& json) {
  write_file(name, json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}

std::string line_of(const Json& json) {
  return json.dump(-1, ' ', is_terminal("-"), Json::error_handler_t::replace) + "\n";
}

}  // namespace gzdtool
