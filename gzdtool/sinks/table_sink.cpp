// One row after the other into a buffer. The formats differ in what stands between cells and in how
// texts are escaped. Columns that seldom change (blocks, trials, events) are text already for as
// long as they stay what they are.
#include "sinks/table_sink.h"

#include <algorithm>
#include <vector>

#include "sinks/cell_text.h"
#include "sinks/escape.h"
#include "sinks/ready_cells.h"
#include "sinks/text_buffer.h"

namespace gzdtool {

namespace {

using gzdtables::Batch;
using gzdtables::Column;
using gzdtables::Field;
using gzdtables::Schema;
using gzdtables::Type;

constexpr std::size_t longest_cell = longest_number + 64;  // and the end of the line

// What a format makes of texts and nulls.
struct Dialect {
  std::string_view null;
  char separator;
  void (*append_escaped)(std::string& to, std::string_view text, bool is_for_terminal);
  bool has_header;  // a header line; else the name stands with each value
};

Dialect dialect_of(Format format) {
  switch (format) {
    case Format::csv:
      return {"n/a", ',', append_csv, true};
    case Format::jsonl:
      return {"null", ',', append_json, false};
    default:
      return {"n/a", '\t', append_tsv, true};
  }
}

// Whether a column is of few values, each for many rows.
bool is_steady(Type type) {
  return type == Type::boolean || type == Type::choice || type == Type::int32;
}

// The first row from `begin` on that has another value than `begin`. Many at a time, without a
// jump.
template <class T>
std::size_t end_of_run(const T* values, std::size_t begin, std::size_t end) {
  constexpr std::size_t many = 32;
  const T first = values[begin];
  std::size_t row = begin;
  for (; row + many <= end; row += many) {
    unsigned others = 0;
    for (std::size_t i = 0; i < many; ++i)
      others |= static_cast<unsigned>(values[row + i] != first);
    if (others != 0) break;
  }
  while (row < end && values[row] == first) ++row;
  return row;
}

std::size_t end_of_run(const Column& column, std::size_t begin, std::size_t end) {
  end = end_of_run(column.valid(), begin, end);
  return column.type() == Type::int32 ? end_of_run(column.values<std::int32_t>(), begin, end)
                                      : end_of_run(column.values<std::uint8_t>(), begin, end);
}

class TextSink final : public TableSink {
 public:
  TextSink(ByteSink& bytes, const TextStyle& style)
      : style_(style), dialect_(dialect_of(style.format)), buffer_(bytes), null_(dialect_.null) {}

  void begin(const Schema& schema, std::string_view recording) override;
  void write(const Batch& batch) override;

 private:
  // A cell of a row, and the text between it and the one before.
  struct Step {
    Snippet text;
    const Column* column;
    std::size_t index;  // of the column
  };

  void prepare_prefixes(const Schema& schema, std::string_view recording);
  void prepare_choices(const Schema& schema);
  void write_header(const Schema& schema);
  [[nodiscard]] std::size_t end_of_rows_alike(const Batch& batch, std::size_t row);
  void plan_rows(const Batch& batch, std::size_t row);
  [[nodiscard]] std::string steady_text(const Column& column, std::size_t index,
                                        std::size_t row) const;
  char* write_row(char* place, std::size_t row);
  char* write_cell(char* place, const Step& step, std::size_t row);
  char* write_other(char* place, const Column& column, std::size_t row);
  char* write_text(char* place, std::string_view text);

  [[nodiscard]] std::string escaped(std::string_view text) const;

  TextStyle style_;
  Dialect dialect_;
  TextBuffer buffer_;
  ReadyFloats floats_;
  bool has_begun_ = false;
  std::vector<std::string> prefixes_;  // what stands in front of each cell
  std::vector<std::vector<std::string>> choices_;
  std::vector<RisingNumber> times_;  // by column, where it is one
  std::vector<std::size_t> ends_;    // of the runs at hand of steady columns
  std::vector<Step> steps_;          // of the rows at hand
  Snippet end_{""};                  // what stands behind their last cell
  Snippet null_;
  std::size_t row_bytes_ = 0;  // of a row at most, texts and what is behind them left out
  std::string scratch_;
};

std::string TextSink::escaped(std::string_view text) const {
  std::string result;
  dialect_.append_escaped(result, text, style_.is_for_terminal);
  return result;
}

void TextSink::begin(const Schema& schema, std::string_view recording) {
  prepare_prefixes(schema, recording);
  prepare_choices(schema);
  if (!has_begun_ && dialect_.has_header) write_header(schema);
  has_begun_ = true;
}

void TextSink::prepare_prefixes(const Schema& schema, std::string_view recording) {
  std::string first;
  if (style_.has_recording_column && dialect_.has_header)
    first = escaped(recording) + dialect_.separator;
  if (style_.has_recording_column && !dialect_.has_header)
    first = "\"recording\":" + escaped(recording) + ",";
  if (!dialect_.has_header) first.insert(0, "{");
  prefixes_.clear();
  times_.assign(schema.fields.size(), {});
  row_bytes_ = 0;
  for (const Field& field : schema.fields) {
    std::string prefix = prefixes_.empty() ? first : std::string(1, dialect_.separator);
    if (!dialect_.has_header) prefix += escaped(field.name) + ":";
    row_bytes_ += prefix.size() + longest_cell;
    prefixes_.push_back(std::move(prefix));
  }
}

void TextSink::prepare_choices(const Schema& schema) {
  choices_.clear();
  for (const Field& field : schema.fields) {
    auto& texts = choices_.emplace_back();
    for (const std::string& choice : field.choices) texts.push_back(escaped(choice));
  }
}

void TextSink::write_header(const Schema& schema) {
  std::string line = style_.has_recording_column ? "recording" : "";
  for (const Field& field : schema.fields) {
    if (!line.empty()) line += dialect_.separator;
    line += escaped(field.name);
  }
  buffer_.flush(buffer_.append(buffer_.begin(), line + "\n"));
}

// In runs of rows that differ in no steady column.
void TextSink::write(const Batch& batch) {
  char* place = buffer_.begin();
  ends_.assign(batch.columns.size(), 0);
  for (std::size_t row = 0; row < batch.rows;) {
    const std::size_t end = end_of_rows_alike(batch, row);
    plan_rows(batch, row);
    for (; row < end; ++row) place = write_row(place, row);
  }
  buffer_.flush(place);
}

std::size_t TextSink::end_of_rows_alike(const Batch& batch, std::size_t row) {
  std::size_t end = batch.rows;
  for (std::size_t i = 0; i < batch.columns.size(); ++i) {
    if (!is_steady(batch.columns[i].type())) continue;
    if (ends_[i] <= row) ends_[i] = end_of_run(batch.columns[i], row, batch.rows);
    end = std::min(end, ends_[i]);
  }
  return end;
}

// What the rows from `row` on have in common.
void TextSink::plan_rows(const Batch& batch, std::size_t row) {
  steps_.clear();
  scratch_.clear();
  for (std::size_t i = 0; i < batch.columns.size(); ++i) {
    const Column& column = batch.columns[i];
    scratch_ += prefixes_[i];
    if (is_steady(column.type())) {
      scratch_ += steady_text(column, i, row);
    } else {
      steps_.push_back({Snippet(scratch_), &column, i});
      scratch_.clear();
    }
  }
  end_ = Snippet(scratch_ + (dialect_.has_header ? "\n" : "}\n"));
}

std::string TextSink::steady_text(const Column& column, std::size_t index, std::size_t row) const {
  if (column.is_null(row)) return std::string(dialect_.null);
  if (column.type() == Type::int32) return std::to_string(column.values<std::int32_t>()[row]);
  const std::uint8_t value = column.values<std::uint8_t>()[row];
  if (column.type() == Type::choice) return choices_[index][value];
  return value != 0 ? "true" : "false";
}

char* TextSink::write_row(char* place, std::size_t row) {
  place = buffer_.reserve(place, row_bytes_);
  for (const Step& step : steps_) place = write_cell(step.text.put(place), step, row);
  return end_.put(place);
}

char* TextSink::write_cell(char* place, const Step& step, std::size_t row) {
  const Column& column = *step.column;
  if (column.is_null(row)) return null_.put(place);
  if (column.type() == Type::float32) return floats_.write(place, column.values<float>()[row]);
  if (column.type() == Type::float64)
    return times_[step.index].write(place, column.values<double>()[row]);
  return write_other(place, column, row);
}

char* TextSink::write_other(char* place, const Column& column, std::size_t row) {
  switch (column.type()) {
    case Type::int64:
      return write_integer(place, column.values<std::int64_t>()[row]);
    case Type::uint16:
      return write_integer(place, column.values<std::uint16_t>()[row]);
    case Type::uint32:
      return write_integer(place, column.values<std::uint32_t>()[row]);
    default:
      return write_text(place, column.text(row));
  }
}

char* TextSink::write_text(char* place, std::string_view text) {
  scratch_.clear();
  dialect_.append_escaped(scratch_, text, style_.is_for_terminal);
  return buffer_.reserve(buffer_.append(place, scratch_), row_bytes_);
}

}  // namespace

std::unique_ptr<TableSink> make_table_sink(ByteSink& bytes, const TextStyle& style) {
  return std::make_unique<TextSink>(bytes, style);
}

std::optional<Format> format_named(std::string_view name) {
  if (name == "tsv") return Format::tsv;
  if (name == "csv") return Format::csv;
  if (name == "jsonl") return Format::jsonl;
  return std::nullopt;
}

}  // namespace gzdtool
