// One row after the other into a buffer. The formats differ in what stands between cells and in how
// texts are escaped.
#include "sinks/table_sink.h"

#include <array>
#include <cstring>
#include <vector>

#include "sinks/cell_text.h"
#include "sinks/escape.h"

namespace gzdtool {

namespace {

using gzdtables::Batch;
using gzdtables::Column;
using gzdtables::Field;
using gzdtables::Schema;
using gzdtables::Type;

constexpr std::size_t buffer_bytes = 1 << 18;

// A buffer in front of a byte sink.
class Buffer {
 public:
  explicit Buffer(ByteSink& sink) : sink_(sink), bytes_(new char[buffer_bytes]) {}

  void append(char c) { *reserve(1) = c, ++size_; }
  void append(std::string_view text) {
    if (text.size() > buffer_bytes) {
      flush();
      sink_.write(text);
      return;
    }
    std::memcpy(reserve(text.size()), text.data(), text.size());
    size_ += text.size();
  }
  // Room for one number; `advance` tells where it ended.
  [[nodiscard]] char* number() { return reserve(longest_number); }
  void advance(const char* end) { size_ = static_cast<std::size_t>(end - bytes_.get()); }
  void flush() {
    sink_.write({bytes_.get(), size_});
    size_ = 0;
  }

 private:
  char* reserve(std::size_t bytes) {
    if (size_ + bytes > buffer_bytes) flush();
    return bytes_.get() + size_;
  }

  ByteSink& sink_;
  std::unique_ptr<char[]> bytes_;
  std::size_t size_ = 0;
};

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

class TextSink final : public TableSink {
 public:
  TextSink(ByteSink& bytes, const TextStyle& style)
      : style_(style), dialect_(dialect_of(style.format)), buffer_(bytes) {}

  void begin(const Schema& schema, std::string_view recording) override;
  void write(const Batch& batch) override;

 private:
  void prepare_prefixes(const Schema& schema, std::string_view recording);
  void prepare_choices(const Schema& schema);
  void write_header(const Schema& schema);
  void append_cell(const Column& column, std::size_t index, std::size_t row);
  void append_value(const Column& column, std::size_t index, std::size_t row);
  template <class Integer>
  void append_integer(const Column& column, std::size_t row) {
    buffer_.advance(write_integer(buffer_.number(), column.values<Integer>()[row]));
  }
  [[nodiscard]] std::string escaped(std::string_view text) const;

  TextStyle style_;
  Dialect dialect_;
  Buffer buffer_;
  bool has_begun_ = false;
  std::vector<std::string> prefixes_;  // what stands in front of each cell
  std::vector<std::vector<std::string>> choices_;
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
  prefixes_.clear();
  for (const Field& field : schema.fields) {
    std::string prefix = prefixes_.empty() ? "" : std::string(1, dialect_.separator);
    if (!dialect_.has_header) prefix += escaped(field.name) + ":";
    prefixes_.push_back(prefix);
  }
  std::string first;
  if (style_.has_recording_column && dialect_.has_header)
    first = escaped(recording) + dialect_.separator;
  if (style_.has_recording_column && !dialect_.has_header)
    first = "\"recording\":" + escaped(recording) + ",";
  if (!dialect_.has_header) first.insert(0, "{");
  prefixes_.front().insert(0, first);
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
  buffer_.append(line + "\n");
  buffer_.flush();
}

void TextSink::write(const Batch& batch) {
  const std::string_view end = dialect_.has_header ? "\n" : "}\n";
  for (std::size_t row = 0; row < batch.rows; ++row) {
    for (std::size_t i = 0; i < batch.columns.size(); ++i) {
      buffer_.append(prefixes_[i]);
      append_cell(batch.columns[i], i, row);
    }
    buffer_.append(end);
  }
  buffer_.flush();
}

void TextSink::append_cell(const Column& column, std::size_t index, std::size_t row) {
  if (column.is_null(row))
    buffer_.append(dialect_.null);
  else
    append_value(column, index, row);
}

void TextSink::append_value(const Column& column, std::size_t index, std::size_t row) {
  switch (column.type()) {
    case Type::boolean:
      return buffer_.append(column.values<std::uint8_t>()[row] != 0 ? "true" : "false");
    case Type::int32:
      return append_integer<std::int32_t>(column, row);
    case Type::int64:
      return append_integer<std::int64_t>(column, row);
    case Type::uint16:
      return append_integer<std::uint16_t>(column, row);
    case Type::uint32:
      return append_integer<std::uint32_t>(column, row);
    case Type::float32:
      return buffer_.advance(write_float(buffer_.number(), column.values<float>()[row]));
    case Type::float64:
      return buffer_.advance(write_double(buffer_.number(), column.values<double>()[row]));
    case Type::choice:
      return buffer_.append(choices_[index][column.values<std::uint8_t>()[row]]);
    case Type::text:
      scratch_.clear();
      dialect_.append_escaped(scratch_, column.text(row), style_.is_for_terminal);
      return buffer_.append(scratch_);
  }
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
