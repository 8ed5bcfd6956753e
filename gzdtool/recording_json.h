// What is told of a recording, as JSON.
#ifndef GZDTOOL_RECORDING_JSON_H
#define GZDTOOL_RECORDING_JSON_H

#include <nlohmann/json.hpp>
#include <string>

#include "tables/examination.h"
#include "tables/facts.h"

namespace gzdtool {

using Json = nlohmann::ordered_json;

[[nodiscard]] Json json_of(const gzdtables::Finding& finding);
[[nodiscard]] Json json_of(const std::vector<gzdtables::Finding>& findings);
[[nodiscard]] Json json_of(const gzdtables::Facts& facts);
[[nodiscard]] Json json_of(const gzdtables::BlockExamination& block);
[[nodiscard]] Json json_of(const gzdtables::Examination& examination);

// A number, without a point when it is whole; null when there is none.
[[nodiscard]] Json json_number(double number);
[[nodiscard]] Json json_number(const std::optional<double>& number);

// Indented, as a file. Throws WriteError.
void write_json(const std::string& name, const Json& json);

// One line, for standard output: nothing in it speaks to a terminal.
[[nodiscard]] std::string line_of(const Json& json);

}  // namespace gzdtool

#endif
