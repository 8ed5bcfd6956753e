// From recordings to one table in one output.
#include "table_request.h"

#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>

#include "command.h"

namespace gzdtool {

namespace {

using gzdtables::Recording;
using gzdtables::Request;
using gzdtables::Table;
using gzdtables::TableReader;
using gzdtables::UsageError;

Format format_of(const TableOptions& options) {
  if (!options.format.empty()) {
    const auto format = format_named(options.format);
    if (!format) throw UsageError("unknown format '" + options.format + "': tsv, csv or jsonl");
    return *format;
  }
  std::string name = options.output;
  if (name.ends_with(".gz")) name.resize(name.size() - 3);
  const std::size_t dot = name.find_last_of('.');
  if (dot == std::string::npos) return Format::tsv;
  return format_named(name.substr(dot + 1)).value_or(Format::tsv);
}

std::optional<gzdtables::Eye> eye_of(const std::string& name) {
  if (name.empty()) return std::nullopt;
  if (name == "left") return gzdtables::Eye::left;
  if (name == "right") return gzdtables::Eye::right;
  throw UsageError("unknown eye '" + name + "': left or right");
}

// The output never takes the place of a recording.
void check_output(const TableOptions& options) {
  struct stat output {};
  if (options.output == "-" || ::stat(options.output.c_str(), &output) != 0) return;
  for (const std::string& name : options.files) {
    struct stat input {};
    if (::stat(name.c_str(), &input) == 0 && input.st_dev == output.st_dev &&
        input.st_ino == output.st_ino)
      throw UsageError("the output " + options.output + " is a recording of this run");
  }
}

// Of several recordings with different groups of columns, the groups of all: one table has one
// header.
void resolve_all_groups(const TableOptions& options, Request& request) {
  const auto all = std::find(request.groups.begin(), request.groups.end(), "all");
  if (all == request.groups.end() || options.files.size() < 2) return;
  request.groups.erase(all);
  std::set<std::string> announced;
  for (const std::string& file : options.files) {
    try {
      Recording recording(file, options.recording.options());
      for (const std::string& group : gzdtables::announced_groups(recording, request.table))
        announced.insert(group);
    } catch (const gzdtables::ReadError&) {
      continue;  // told when its rows are read
    }
  }
  request.groups.insert(request.groups.end(), announced.begin(), announced.end());
}

void tell_replaced(const std::string& file, std::int64_t messages) {
  if (messages > 0)
    complain(file + ": " + std::to_string(messages) +
             " messages are not UTF-8, what is wrong in them is replaced");
}

void write_rows(Recording& recording, const Request& request, TableSink& sink) {
  TableReader reader(recording, request);
  sink.begin(reader.schema(), name_of_recording(recording.path()));
  gzdtables::Batch batch;
  while (reader.next(batch)) sink.write(batch);
  tell_replaced(recording.path(), reader.replaced_messages());
}

// The tables of many files, one after the other. The output is opened with the first recording.
class TableRun {
 public:
  TableRun(const TableOptions& options, Table table)
      : options_(options),
        request_(request_for(options, table)),
        style_{format_of(options), options.files.size() > 1, is_terminal(options.output)} {}

  int run();

 private:
  bool write_file(const std::string& file);
  TableSink& sink();

  const TableOptions& options_;
  Request request_;
  TextStyle style_;
  std::unique_ptr<ByteSink> bytes_;
  std::unique_ptr<TableSink> sink_;
};

TableSink& TableRun::sink() {
  if (!sink_) {
    bytes_ = open_byte_sink(options_.output);
    sink_ = make_table_sink(*bytes_, style_);
  }
  return *sink_;
}

bool TableRun::write_file(const std::string& file) {
  try {
    Recording recording(file, options_.recording.options());
    write_rows(recording, request_, sink());
    return true;
  } catch (const gzdtables::ReadError& error) {
    complain(file + ": " + sentence_of(error));
    return false;
  }
}

int TableRun::run() {
  bool is_whole = true;
  resolve_all_groups(options_, request_);
  for (const std::string& file : options_.files) is_whole &= write_file(file);
  if (bytes_ && (is_whole || options_.output == "-")) bytes_->close();
  return is_whole ? exit_whole : exit_failed;
}

}  // namespace

Request request_for(const TableOptions& options, Table table) {
  Request request;
  request.table = table;
  request.groups = options.columns;
  request.eye = eye_of(options.eye);
  request.trial = options.trial;
  if (options.from) request.from = *options.from;
  if (options.to) request.to = *options.to;
  gzdtables::check_request(request);
  return request;
}

void declare_table_options(CLI::App& app, TableOptions& options, Table table) {
  app.add_option("FILE", options.files, "Recordings; several get a leading column `recording`")
      ->required()
      ->type_name("");
  app.add_option("-o,--output", options.output,
                 "File to write, - for standard output; .gz is compressed")
      ->type_name("FILE");
  app.add_option("--format", options.format, "tsv, csv or jsonl; by default as the output is named")
      ->type_name("FORMAT");
  if (gzdtables::groups_of(table).size() > 1 && table != Table::messages)
    app.add_option("--columns", options.columns,
                   "Further groups of columns, with commas between; all: what was recorded")
        ->type_name("GROUPS")
        ->delimiter(',')
        ->allow_extra_args(false);
  if (gzdtables::is_told_by_eye(table))
    app.add_option("--eye", options.eye, "left or right: only this eye")->type_name("EYE");
  app.add_option("--trial", options.trial, "Only rows of trial N")->type_name("N");
  app.add_option("--from", options.from, "Only rows from this time on (ms)")->type_name("MS");
  app.add_option("--to", options.to, "Only rows up to this time (ms)")->type_name("MS");
  options.recording.declare(app);
}

int write_table(const TableOptions& options, Table table) {
  check_output(options);
  static_cast<void>(options.recording.options());
  return TableRun(options, table).run();
}

}  // namespace gzdtool
