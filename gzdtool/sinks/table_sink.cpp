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
constexpr std::size_t longest_cell = longest_number + 64;  // and the end of the line

// A buffer in front of a byte sink. Writers of cells move a place in it along; room is asked for
// once a row, and for texts of any length as they come.
class Buffer {
 public:
  explicit Buffer(ByteSink& sink) : sink_(sink), bytes_(new char[buffer_bytes]) {}

  [[nodiscard]] char* begin() { return bytes_.get(); }
  // `place`, or the beginning when there is no room for so many bytes behind it.
  [[nodiscard]] char* reserve(char* place, std::size_t bytes) {
    return static_cast<std::size_t>(place - begin()) + bytes <= buffer_bytes ? place : flush(place);
  }
  [[nodiscard]] char* append(char* place, std::string_view text) {
    if (text.size() <= buffer_bytes) {
      place = reserve(place, text.size());
      return put(place, text);
    }
    place = flush(place);
    sink_.write(text);
    return place;
  }
  char* flush(const char* place) {
    sink_.write({begin(), static_cast<std::size_t>(place - begin())});
    return begin();
  }
  // Where room is known to be.
  [[nodiscard]] static char* put(char* place, std::string_view text) {
    std::memcpy(place, text.data(), text.size());
    return place + text.size();
  }

 private:
  ByteSink& sink_;
  std::unique_ptr<char[]> bytes_;
};

// A short text that is copied at once, whatever its length: a jump costs more than a few bytes.
class Snippet {
 public:
  explicit Snippet(std::string_view text) : size_(text.size()) {
    if (size_ <= bytes_.size())
      text.copy(bytes_.data(), size_);
    else
      long_ = text;
  }
  [[nodiscard]] std::size_t size() const { return size_; }
  // Writes to where there is room for it and for `slack` bytes.
  [[nodiscard]] char* put(char* place) const {
    if (size_ > bytes_.size()) [[unlikely]]
      return Buffer::put(place, long_);
    std::memcpy(place, bytes_.data(), bytes_.size());
    return place + size_;
  }

  static constexpr std::size_t slack = 48;

 private:
  std::array<char, slack> bytes_{};
  std::size_t size_;
  std::string long_;
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
      : style_(style), dialect_(dialect_of(style.format)), buffer_(bytes), null_(dialect_.null) {}

  void begin(const Schema& schema, std::string_view recording) override;
  void write(const Batch& batch) override;

 private:
  void prepare_prefixes(const Schema& schema, std::string_view recording);
  void prepare_choices(const Schema& schema);
  void write_header(const Schema& schema);
  char* write_row(char* place, const Batch& batch, std::size_t row);
  char* write_value(char* place, const Column& column, std::size_t index, std::size_t row);
  char* write_text(char* place, std::string_view text);

  [[nodiscard]] std::string escaped(std::string_view text) const;

  TextStyle style_;
  Dialect dialect_;
  Buffer buffer_;
  bool has_begun_ = false;
  std::vector<Snippet> prefixes_;  // what stands in front of each cell
  std::vector<std::vector<Snippet>> choices_;
  Snippet null_, true_{"true"}, false_{"false"};
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
  row_bytes_ = 0;
  for (const Field& field : schema.fields) {
    std::string prefix = prefixes_.empty() ? first : std::string(1, dialect_.separator);
    if (!dialect_.has_header) prefix += escaped(field.name) + ":";
    row_bytes_ += prefix.size() + longest_cell;
    prefixes_.emplace_back(prefix);
  }
}

void TextSink::prepare_choices(const Schema& schema) {
  choices_.clear();
  for (const Field& field : schema.fields) {
    auto& texts = choices_.emplace_back();
    for (const std::string& choice : field.choices) texts.emplace_back(escaped(choice));
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

void TextSink::write(const Batch& batch) {
  char* place = buffer_.begin();
  for (std::size_t row = 0; row < batch.rows; ++row) place = write_row(place, batch, row);
  buffer_.flush(place);
}

char* TextSink::write_row(char* place, const Batch& batch, std::size_t row) {
  place = buffer_.reserve(place, row_bytes_);
  for (std::size_t i = 0; i < batch.columns.size(); ++i)
    place = write_value(prefixes_[i].put(place), batch.columns[i], i, row);
  return Buffer::put(place, dialect_.has_header ? "\n" : "}\n");
}

char* TextSink::write_text(char* place, std::string_view text) {
  scratch_.clear();
  dialect_.append_escaped(scratch_, text, style_.is_for_terminal);
  return buffer_.reserve(buffer_.append(place, scratch_), row_bytes_);
}

char* TextSink::write_value(char* place, const Column& column, std::size_t index, std::size_t row) {
  if (column.is_null(row)) return null_.put(place);
  switch (column.type()) {
    case Type::boolean:
      return (column.values<std::uint8_t>()[row] != 0 ? true_ : false_).put(place);
    case Type::int32:
      return write_integer(place, column.values<std::int32_t>()[row]);
    case Type::int64:
      return write_integer(place, column.values<std::int64_t>()[row]);
    case Type::uint16:
      return write_integer(place, column.values<std::uint16_t>()[row]);
    case Type::uint32:
      return write_integer(place, column.values<std::uint32_t>()[row]);
    case Type::float32:
      return write_float(place, column.values<float>()[row]);
    case Type::float64:
      return write_double(place, column.values<double>()[row]);
    case Type::choice:
      return choices_[index][column.values<std::uint8_t>()[row]].put(place);
    case Type::text:
      return write_text(place, column.text(row));
  }
  return place;
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
