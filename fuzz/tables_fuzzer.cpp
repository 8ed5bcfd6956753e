// Any bytes as a recording, read as tables; the end of the input chooses how.
//
// Asserts: columns have one length and offsets that rise; texts are UTF-8; what is null has no
// value; samples are as many as the walk's, at its times; so are events, messages and blocks;
// samples of blocks and of trials add up to those of the rows.
#include <array>
#include <cmath>
#include <map>
#include <vector>

#include "harness.h"
#include "tables/element_walk.h"
#include "tables/reader.h"
#include "tables/utf8.h"

namespace {

using namespace gzdtables;

constexpr std::size_t longest_walk = 60000;
constexpr std::uint64_t largest_filling = 100000;

struct Counts {
  std::map<Table, std::size_t> rows;
  std::vector<double> sample_times;
};

void check_texts(const Column& column, std::size_t rows) {
  FUZZ_REQUIRE(column.offsets().size() == rows + 1);
  FUZZ_REQUIRE(static_cast<std::size_t>(column.offsets().back()) == column.characters().size());
  for (std::size_t row = 0; row < rows; ++row) {
    FUZZ_REQUIRE(column.offsets()[row] <= column.offsets()[row + 1]);
    FUZZ_REQUIRE(is_utf8(column.text(row)));
    if (column.is_null(row)) FUZZ_REQUIRE(column.text(row).empty());
  }
}

void check_values(const Field& field, const Column& column, std::size_t rows) {
  FUZZ_REQUIRE(field.type == column.type());
  if (column.type() == Type::text) return check_texts(column, rows);
  for (std::size_t row = 0; row < rows; ++row) {
    if (column.type() == Type::float32)
      FUZZ_REQUIRE(!std::isinf(column.values<float>()[row]) &&
                   column.values<float>()[row] != MISSING_DATA &&
                   column.values<float>()[row] != NOT_RECORDED);
    if (column.type() == Type::choice && !column.is_null(row))
      FUZZ_REQUIRE(column.values<std::uint8_t>()[row] < field.choices.size());
  }
}

std::int64_t sum(const TableReader& reader, const Batch& batch, const char* name) {
  const int index = reader.schema().index_of(name);
  const auto* const values = batch.columns[static_cast<std::size_t>(index)].values<std::int64_t>();
  std::int64_t total = 0;
  for (std::size_t row = 0; row < batch.rows; ++row) total += values[row];
  return total;
}

// Reads a table whole. Returns its rows; `samples` gets the sum of that column where there is one.
std::size_t read_table(Recording& recording, Table table, std::size_t batch_rows,
                       std::int64_t& samples, std::vector<double>& times) {
  TableReader reader(recording, {.table = table, .groups = {"all"}, .batch_rows = batch_rows});
  std::size_t rows = 0;
  Batch batch;
  while (reader.next(batch)) {
    FUZZ_REQUIRE(batch.columns.size() == reader.schema().fields.size());
    for (std::size_t i = 0; i < batch.columns.size(); ++i)
      check_values(reader.schema().fields[i], batch.columns[i], batch.rows);
    rows += batch.rows;
    if (reader.schema().index_of("samples") >= 0) samples += sum(reader, batch, "samples");
    if (table == Table::samples)
      for (std::size_t row = 0; row < batch.rows; ++row)
        times.push_back(batch.columns[2].values<double>()[row]);
  }
  return rows;
}

Counts count_walk(Recording& recording) {
  Counts counts;
  GZDFILE* const file = recording.handle();
  static_cast<void>(recording.begin_walk());
  for (int code = 0; (code = gzd_get_next_data(file)) != GZD_END_OF_DATA;) {
    const ALLF_DATA* const record = gzd_get_float_data(file);
    if (code == GZD_SAMPLE) counts.sample_times.push_back(time_of(record->fs));
    if (is_ended_event(code)) ++counts.rows[Table::events];
    if (code == GZD_MESSAGE) ++counts.rows[Table::messages];
    if (code == GZD_RECORDING && record->rec.state != GZD_BLOCK_END) ++counts.rows[Table::blocks];
  }
  return counts;
}

void check_tables(Recording& recording, std::size_t batch_rows) {
  const Counts walk = count_walk(recording);
  std::map<Table, std::size_t> rows;
  std::map<Table, std::int64_t> samples;
  std::vector<double> times;
  for (const Table table : all_tables())
    rows[table] = read_table(recording, table, batch_rows, samples[table], times);
  FUZZ_REQUIRE(times == walk.sample_times);
  for (const auto& [table, count] : walk.rows) FUZZ_REQUIRE(rows[table] == count);
  FUZZ_REQUIRE(rows[Table::events] ==
               rows[Table::fixations] + rows[Table::saccades] + rows[Table::blinks]);
  FUZZ_REQUIRE(static_cast<std::size_t>(samples[Table::blocks]) <= times.size());
  if (!recording.options().trials.start)
    FUZZ_REQUIRE(rows[Table::trials] == rows[Table::blocks] &&
                 samples[Table::trials] == samples[Table::blocks]);
}

Options options_of(fuzz::Tail& tail) {
  const unsigned bits = tail.byte();
  Options options{.repair = (bits & 1) == 0,
                  .failsafe = (bits & 2) != 0,
                  .message_offsets = (bits & 4) != 0,
                  .message_log = (bits & 8) != 0};
  if ((bits & 16) != 0) options.trials.start = "T";
  if ((bits & 48) == 48) options.trials.end = "END";
  if ((bits & 64) != 0) options.trials.variables = {{"v", "([A-Z]+)"}};
  return options;
}

}  // namespace

FUZZ_TARGET(tables) {
  static fuzz::MemoryFile recording("recording"), log("log");
  fuzz::Tail tail(input);
  const Options options = options_of(tail);
  const std::size_t batch_rows = 1 + tail.byte() % 64;
  log.set(tail.block(tail.byte()));
  recording.set(fuzz::recording_from(tail));
  if (fuzz::is_too_large(recording.path(), largest_filling)) return;
  gzd_set_extra_message_file(log.path().c_str());
  try {
    Recording opened(recording.path(), options);
    if (opened.element_count() <= longest_walk) check_tables(opened, batch_rows);
  } catch (const ReadError&) {
    return;
  }
}
