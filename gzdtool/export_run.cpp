// A sidecar is written last: where one stands with these options, younger than its recording, the
// tables that it names are whole.
#include "export_run.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <map>

#include "command.h"
#include "recording_json.h"
#include "sha256.h"

namespace gzdtool {

namespace {

using gzdtables::Recording;
using gzdtables::Table;
using gzdtables::UsageError;

constexpr std::string_view compressed = ".gz";

// "tsv.gz" is tsv, compressed.
Format format_of(const std::string& extension) {
  std::string_view name = extension;
  if (name.ends_with(compressed)) name.remove_suffix(compressed.size());
  const auto format = format_named(name);
  if (!format) throw UsageError("unknown format '" + extension + "': tsv, tsv.gz, csv or jsonl");
  return *format;
}

bool has_group(Table table, const std::string& name) {
  const auto& groups = gzdtables::groups_of(table);
  if (name == "all") return groups.size() > 1;
  return std::any_of(groups.begin(), groups.end(),
                     [&](const gzdtables::Group& group) { return group.name == name; });
}

// What a table can be asked of what was asked.
gzdtables::Request request_of(const ExportPlan& plan, Table table) {
  TableOptions options = plan.options;
  std::erase_if(options.columns, [&](const std::string& name) { return !has_group(table, name); });
  if (!gzdtables::is_told_by_eye(table)) options.eye.clear();
  return request_for(options, table);
}

void check_plan(const ExportPlan& plan) {
  for (const std::string& name : plan.options.columns) {
    const bool is_known = std::any_of(plan.tables.begin(), plan.tables.end(),
                                      [&](Table table) { return has_group(table, name); });
    if (!is_known) gzdtables::check_groups(plan.tables.front(), std::vector{name});
  }
  for (const Table table : plan.tables) static_cast<void>(request_of(plan, table));
}

Json options_json(const ExportPlan& plan) {
  const TableOptions& options = plan.options;
  const gzdtables::Options reading = options.recording.options();
  const auto text = [](const std::optional<std::string>& value) {
    return value ? Json(*value) : Json(nullptr);
  };
  Json variables = Json::array();
  for (const auto& [name, expression] : reading.trials.variables)
    variables.push_back(name + "=" + expression);
  return {{"repair", reading.repair},
          {"failsafe", reading.failsafe},
          {"message_offsets", reading.message_offsets},
          {"message_log", reading.message_log},
          {"trial_start", text(reading.trials.start)},
          {"trial_end", text(reading.trials.end)},
          {"trial_variables", variables},
          {"format", options.format},
          {"columns", options.columns},
          {"eye", options.eye.empty() ? Json(nullptr) : Json(options.eye)},
          {"trial", options.trial ? Json(*options.trial) : Json(nullptr)},
          {"from", json_number(options.from)},
          {"to", json_number(options.to)}};
}

Json columns_json(const gzdtables::Schema& schema) {
  Json columns = Json::array();
  for (const gzdtables::Field& field : schema.fields) {
    Json column = {{"name", field.name},
                   {"type", gzdtables::name_of(field.type)},
                   {"unit", field.unit.empty() ? Json(nullptr) : Json(field.unit)},
                   {"description", field.description}};
    if (!field.choices.empty()) column["choices"] = field.choices;
    columns.push_back(column);
  }
  return columns;
}

// The tables of one recording.
class RecordingExport {
 public:
  RecordingExport(const ExportPlan& plan, const std::string& file)
      : plan_(plan),
        file_(file),
        stem_(plan.directory + "/" + name_of_recording(file)),
        options_(options_json(plan)) {}

  // Throws ReadError and WriteError.
  void run();

 private:
  [[nodiscard]] std::string sidecar_name() const { return stem_ + ".json"; }
  [[nodiscard]] std::string name_of_table(Table table) const {
    return stem_ + "_" + std::string(name_of(table)) + "." + plan_.options.format;
  }
  [[nodiscard]] Json tables_done() const;
  [[nodiscard]] Json write_table(Recording& recording, Table table) const;
  void write_sidecar(Recording& recording, const Json& tables) const;

  const ExportPlan& plan_;
  const std::string& file_;
  std::string stem_;
  Json options_;
};

// What the sidecar says of tables that need not be written again.
Json RecordingExport::tables_done() const {
  struct stat recording {
  }, sidecar{};
  if (::stat(file_.c_str(), &recording) != 0 || ::stat(sidecar_name().c_str(), &sidecar) != 0)
    return Json::object();
  const bool is_younger = std::pair(sidecar.st_mtim.tv_sec, sidecar.st_mtim.tv_nsec) >
                          std::pair(recording.st_mtim.tv_sec, recording.st_mtim.tv_nsec);
  std::ifstream stream(sidecar_name());
  const Json json = Json::parse(stream, nullptr, false);
  if (!is_younger || !json.is_object() || json.value("bytes", Json()) != recording.st_size ||
      json.value("options", Json()) != options_ || json.value("version", Json()) != version_text())
    return Json::object();
  Json done = json.value("tables", Json::object());
  if (!done.is_object()) return Json::object();
  for (const Table table : gzdtables::all_tables())
    if (::access(name_of_table(table).c_str(), F_OK) != 0) done.erase(std::string(name_of(table)));
  return done;
}

Json RecordingExport::write_table(Recording& recording, Table table) const {
  gzdtables::TableReader reader(recording, request_of(plan_, table));
  const std::string name = name_of_table(table);
  const auto bytes = open_byte_sink(name);
  const auto sink = make_table_sink(*bytes, {.format = format_of(plan_.options.format)});
  sink->begin(reader.schema(), name_of_recording(file_));
  gzdtables::Batch batch;
  std::int64_t rows = 0;
  while (reader.next(batch)) {
    sink->write(batch);
    rows += static_cast<std::int64_t>(batch.rows);
  }
  bytes->close();
  return {{"file", name.substr(plan_.directory.size() + 1)},
          {"rows", rows},
          {"columns", columns_json(reader.schema())}};
}

void RecordingExport::write_sidecar(Recording& recording, const Json& tables) const {
  Json json = json_of(gzdtables::facts_of(recording));
  json["sha256"] = sha256_of_file(file_);
  json["version"] = version_text();
  json["options"] = options_;
  json["tables"] = tables;
  write_json(sidecar_name(), json);
}

void RecordingExport::run() {
  Json tables = tables_done();
  std::vector<Table> missing;
  for (const Table table : plan_.tables)
    if (!tables.contains(std::string(name_of(table)))) missing.push_back(table);
  if (missing.empty()) return complain(file_ + ": done before");
  Recording recording(file_, plan_.options.recording.options());
  ::unlink(sidecar_name().c_str());  // it would speak of other tables
  for (const Table table : missing)
    tables[std::string(name_of(table))] = write_table(recording, table);
  write_sidecar(recording, tables);
}

// Two recordings of one name would write the same files.
bool is_first_of_name(std::map<std::string, std::string>& names, const std::string& file) {
  const auto [place, is_first] = names.try_emplace(name_of_recording(file), file);
  if (!is_first) complain(file + ": has the tables of " + place->second + ", not exported");
  return is_first;
}

bool export_one(const ExportPlan& plan, const std::string& file) {
  KeptLog::clear();
  try {
    RecordingExport(plan, file).run();
    return true;
  } catch (const gzdtables::ReadError& error) {
    KeptLog::tell();
    complain(file + ": " + sentence_of(error));
    return false;
  }
}

}  // namespace

int export_tables(const ExportPlan& plan) {
  static_cast<void>(format_of(plan.options.format));
  check_plan(plan);
  make_folder(plan.directory);
  const KeptLog log;  // sidecars tell findings
  std::map<std::string, std::string> names;
  bool is_whole = true;
  for (const std::string& file : plan.options.files)
    is_whole &= is_first_of_name(names, file) && export_one(plan, file);
  return is_whole ? exit_whole : exit_failed;
}

}  // namespace gzdtool
