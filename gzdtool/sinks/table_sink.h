// Tables as text: TSV, CSV, JSON lines.
#ifndef GZDTOOL_TABLE_SINK_H
#define GZDTOOL_TABLE_SINK_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "sinks/byte_sink.h"
#include "tables/column.h"
#include "tables/schema.h"

namespace gzdtool {

enum class Format { tsv, csv, jsonl };

// How a table is written.
struct TextStyle {
  Format format = Format::tsv;
  // A leading column `recording`: rows of several recordings in one table.
  bool has_recording_column = false;
  // Control characters of texts are shown, not sent.
  bool is_for_terminal = false;
};

class TableSink {
 public:
  TableSink() = default;
  virtual ~TableSink() = default;
  TableSink(const TableSink&) = delete;
  TableSink& operator=(const TableSink&) = delete;

  // Begins the rows of a recording. The first call writes the header line; schemas of later calls
  // have the same columns.
  virtual void begin(const gzdtables::Schema& schema, std::string_view recording) = 0;
  virtual void write(const gzdtables::Batch& batch) = 0;
};

// Writes to `bytes`, which is closed by its owner. All throw WriteError.
[[nodiscard]] std::unique_ptr<TableSink> make_table_sink(ByteSink& bytes, const TextStyle& style);

// The format of that name; nothing when there is none.
[[nodiscard]] std::optional<Format> format_named(std::string_view name);

}  // namespace gzdtool

#endif
