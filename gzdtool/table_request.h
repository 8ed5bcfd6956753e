// Options of every verb that writes tables.
#ifndef GZDTOOL_TABLE_REQUEST_H
#define GZDTOOL_TABLE_REQUEST_H

#include <optional>
#include <string>
#include <vector>

#include "recording_options.h"
#include "sinks/table_sink.h"
#include "tables/reader.h"

namespace CLI {
class App;
}

namespace gzdtool {

// What the user wants of a table.
struct TableOptions {
  RecordingOptions recording;
  std::vector<std::string> files;
  std::string output = "-";
  std::string format;
  std::vector<std::string> columns;
  std::string eye;
  std::optional<std::int32_t> trial;
  std::optional<double> from, to;
};

// Declares them all but --columns and --eye for tables that have none.
void declare_table_options(CLI::App& app, TableOptions& options, gzdtables::Table table);

// Writes the table of all files to the output. Returns an exit status. Throws
// gzdtables::UsageError.
[[nodiscard]] int write_table(const TableOptions& options, gzdtables::Table table);

// The request without what depends on a recording.
[[nodiscard]] gzdtables::Request request_for(const TableOptions& options, gzdtables::Table table);

}  // namespace gzdtool

#endif
