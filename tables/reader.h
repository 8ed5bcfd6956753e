// One table of a recording, in batches of rows.
#ifndef GZDTABLES_READER_H
#define GZDTABLES_READER_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "column.h"
#include "recording.h"
#include "schema.h"

namespace gzdtables {

enum class Eye : std::uint8_t { left, right };

// What is wanted of a table.
struct Request {
  Table table = Table::samples;
  // Groups of columns beside those that are always there; "all" stands for those that a block of
  // the recording announces.
  std::vector<std::string> groups = {};
  // Of samples: the columns of this eye only; of events: the rows of this eye only.
  std::optional<Eye> eye = {};
  // Rows of this trial only.
  std::optional<std::int32_t> trial = {};
  // Rows whose time, onset or start lies in here (ms, ends included).
  double from = -std::numeric_limits<double>::infinity();
  double to = std::numeric_limits<double>::infinity();
  // Rows of a batch, at most; a batch of long texts may have fewer. Memory is taken for as many of
  // them as the recording can fill, but touched only where there are rows.
  std::size_t batch_rows = 8192;
  // Of samples: all rows are asked for and come in the first batch, as they are fewer than
  // `batch_rows`. Then their memory is taken at once, which costs less, and one walk does for all.
  bool has_all_rows = false;
};

// Whether a table can be asked for by eye.
[[nodiscard]] bool is_told_by_eye(Table table);

// What "all" stands for: the groups of columns that a block of the recording announces.
[[nodiscard]] std::vector<std::string> announced_groups(Recording& recording, Table table);

// Throws UsageError for a request that no recording can meet.
void check_request(const Request& request);

// Reads one table from its first row to its last. Making a reader ends every other reader of the
// same recording: its next() then throws std::logic_error. The recording must outlive the reader.
class TableReader {
 public:
  // Throws UsageError for a request that cannot be met, ReadError when the recording cannot be read
  // again.
  TableReader(Recording& recording, const Request& request);
  ~TableReader();
  TableReader(TableReader&&) noexcept;

  // The columns: those of every batch.
  [[nodiscard]] const Schema& schema() const;

  // Fills the batch with the next rows; false, and a batch without rows, at the end. A batch of an
  // earlier call may be passed again, its memory is then used again; a batch that is to be kept is
  // left alone, and a fresh one passed. Throws ReadError.
  [[nodiscard]] bool next(Batch& batch);

  // Messages so far whose text was not UTF-8; it has U+FFFD in places.
  [[nodiscard]] std::int64_t replaced_messages() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// The column of that name; it must be one of the schema.
[[nodiscard]] inline const Column& column_of(const Schema& schema, const Batch& batch,
                                             std::string_view name) {
  return batch.columns.at(static_cast<std::size_t>(schema.index_of(name)));
}
[[nodiscard]] inline const Column& column_of(const TableReader& reader, const Batch& batch,
                                             std::string_view name) {
  return column_of(reader.schema(), batch, name);
}

}  // namespace gzdtables

#endif
