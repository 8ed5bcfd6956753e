// Keys and values of facts and findings.
#include "extension/facts_dict.h"

#include <cmath>
#include <optional>
#include <string>
#include <string_view>

namespace gzdpython {

namespace {

namespace nb = nanobind;
using gzdtables::Facts;

nb::object text(std::string_view words) {
  return nb::str(words.data(), words.size());
}

nb::object text_or_none(std::string_view words) {
  return words.empty() ? nb::none() : text(words);
}

nb::object number(double value) {
  return std::isfinite(value) ? nb::object(nb::float_(value)) : nb::none();
}

nb::object number(const std::optional<double>& value) {
  return value ? number(*value) : nb::none();
}

nb::object number(const std::optional<std::int64_t>& value) {
  return value ? nb::object(nb::int_(*value)) : nb::none();
}

nb::dict dict_of(const gzdtables::ElementCounts& counts) {
  nb::dict dict;
  dict["samples"] = counts.samples;
  dict["fixations"] = counts.fixations;
  dict["saccades"] = counts.saccades;
  dict["blinks"] = counts.blinks;
  dict["messages"] = counts.messages;
  dict["buttons"] = counts.buttons;
  dict["inputs"] = counts.inputs;
  dict["blocks"] = counts.blocks;
  return dict;
}

nb::dict dict_of(const gzdtables::RepairCounts& repairs) {
  nb::dict dict;
  dict["samples_filled"] = repairs.samples_filled;
  dict["samples_dropped"] = repairs.samples_dropped;
  dict["events_retimed"] = repairs.events_retimed;
  dict["blink_starts_inserted"] = repairs.blink_starts_inserted;
  return dict;
}

nb::list list_of(const std::vector<gzdtables::Note>& notes) {
  nb::list list;
  for (const gzdtables::Note& note : notes) {
    nb::dict dict;
    dict["time"] = number(note.time);
    dict["text"] = text(note.text);
    list.append(dict);
  }
  return list;
}

nb::object display_of(const Facts& facts) {
  if (!facts.display) return nb::none();
  nb::list edges;
  for (const double edge : *facts.display) edges.append(number(edge));
  return edges;
}

nb::list lines_of(const std::vector<std::string>& lines) {
  nb::list list;
  for (const std::string& line : lines) list.append(text(line));
  return list;
}

nb::dict dict_of(const gzdtables::Finding& finding) {
  nb::dict dict;
  dict["kind"] = text(finding.name);
  dict["eye"] = text_or_none(finding.eye);
  dict["start"] = number(finding.start);
  dict["end"] = number(finding.end);
  dict["count"] = finding.count;
  dict["detail"] = finding.detail;
  dict["place"] = number(finding.place);
  dict["merged"] = finding.merged;
  dict["text"] = text(gzdtables::sentence_of(finding));
  return dict;
}

}  // namespace

nb::list list_of(const std::vector<gzdtables::Finding>& findings) {
  nb::list list;
  for (const gzdtables::Finding& finding : findings) list.append(dict_of(finding));
  return list;
}

nb::dict dict_of(const Facts& facts) {
  nb::dict dict;
  dict["file"] = nb::bytes(facts.file.data(), facts.file.size());
  dict["bytes"] = facts.bytes;
  dict["compressed"] = facts.compressed;
  dict["preamble"] = lines_of(facts.preamble);
  dict["date"] = text_or_none(facts.date);
  dict["generation"] = facts.generation;
  dict["revision"] = facts.revision;
  dict["utf8"] = facts.utf8;
  dict["duration"] = number(facts.duration);
  dict["elements"] = dict_of(facts.elements);
  dict["display"] = display_of(facts);
  dict["calibrations"] = list_of(facts.calibrations);
  dict["validations"] = list_of(facts.validations);
  dict["replaced_messages"] = facts.replaced_messages;
  dict["repairs"] = dict_of(facts.repairs);
  dict["damaged_at"] = number(facts.damaged_at);
  dict["findings"] = list_of(facts.findings);
  return dict;
}

}  // namespace gzdpython
