// Each exported array owns its bitmaps, its children and a share of the batch through
// `private_data`.
#include "extension/arrow_array.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace gzdpython {

namespace {

using gzdtables::Batch;
using gzdtables::Column;
using gzdtables::Field;
using gzdtables::Schema;
using gzdtables::Type;

static_assert(std::endian::native == std::endian::little);

// The lowest bits of eight bytes, each 0 or 1, as one byte.
std::uint8_t packed(std::uint64_t flags) {
  constexpr std::uint64_t collect = 0x0102040810204080;  // byte i to bit 56 + i
  return static_cast<std::uint8_t>((flags * collect) >> 56U);
}

// One bit a row, the lowest first.
class Bitmap {
 public:
  // Bits of `test(row)`; counts those that are not set.
  template <class Test>
  void fill(std::size_t rows, Test test) {
    bytes_.reset(new std::uint8_t[(rows + 7) / 8]);
    unset_ = 0;
    for (std::size_t row = 0; row < rows; row += flags_at_once)
      pack(row, std::min(flags_at_once, rows - row), test);
  }
  void drop() { bytes_.reset(); }
  [[nodiscard]] std::size_t unset() const { return unset_; }
  [[nodiscard]] const void* data() const { return bytes_.get(); }

 private:
  static constexpr std::size_t flags_at_once = 256;

  // In two steps that the compiler makes wide: a byte a row, then a bit.
  template <class Test>
  void pack(std::size_t from, std::size_t rows, Test test) {
    std::array<std::uint8_t, flags_at_once> flags{};
    unsigned set = 0;
    for (std::size_t i = 0; i < rows; ++i) {
      flags[i] = test(from + i) ? 1 : 0;
      set += flags[i];
    }
    unset_ += rows - set;
    for (std::size_t i = 0; i < rows; i += 8) {
      std::uint64_t eight = 0;
      std::memcpy(&eight, flags.data() + i, sizeof eight);
      bytes_[(from + i) / 8] = packed(eight);
    }
  }

  std::unique_ptr<std::uint8_t[]> bytes_;
  std::size_t unset_ = 0;
};

// Texts of a choice spelt out, row by row, or the dictionary of its texts.
struct SpeltTexts {
  std::vector<std::int32_t> offsets{0};
  std::string characters;

  void append(const std::string& text) {
    constexpr std::size_t most = std::numeric_limits<std::int32_t>::max();
    if (characters.size() + text.size() > most)
      throw std::length_error("texts of more than 2 GiB: read the table as a stream");
    characters += text;
    offsets.push_back(static_cast<std::int32_t>(characters.size()));
  }
};

void release_one(ArrowArray& array) {
  if (array.release != nullptr) array.release(&array);
}

struct ArrayContent {
  ArrayContent() = default;
  ArrayContent(const ArrayContent&) = delete;
  ArrayContent& operator=(const ArrayContent&) = delete;
  ~ArrayContent() {
    for (ArrowArray& child : children) release_one(child);
    release_one(dictionary);
  }

  std::shared_ptr<const Batch> batch;
  Bitmap valid, values;
  SpeltTexts spelt;
  std::array<const void*, 3> buffers{};
  std::vector<ArrowArray> children;
  std::vector<ArrowArray*> places;
  ArrowArray dictionary{};
};

void release_array(ArrowArray* array) {
  const std::unique_ptr<ArrayContent> content(static_cast<ArrayContent*>(array->private_data));
  array->release = nullptr;
}

void fill(ArrowArray& out, std::size_t rows, int buffers, std::unique_ptr<ArrayContent> content) {
  for (ArrowArray& child : content->children) content->places.push_back(&child);
  content->buffers[0] = content->valid.data();
  out.length = static_cast<std::int64_t>(rows);
  out.null_count = static_cast<std::int64_t>(content->valid.unset());
  out.offset = 0;
  out.n_buffers = buffers;
  out.n_children = static_cast<std::int64_t>(content->children.size());
  out.buffers = content->buffers.data();
  out.children = content->places.data();
  out.dictionary = content->dictionary.release == nullptr ? nullptr : &content->dictionary;
  out.release = &release_array;
  out.private_data = content.release();
}

template <class Float>
void mark_numbers(Bitmap& valid, const Float* values, std::size_t rows) {
  valid.fill(rows, [values](std::size_t row) { return values[row] == values[row]; });
}

void mark_valid(Bitmap& valid, const Column& column, std::size_t rows) {
  if (column.type() == Type::float32)
    mark_numbers(valid, column.values<float>(), rows);
  else if (column.type() == Type::float64)
    mark_numbers(valid, column.values<double>(), rows);
  else
    valid.fill(rows, [flags = column.valid()](std::size_t row) { return flags[row] != 0; });
  if (valid.unset() == 0) valid.drop();
}

void put_texts(ArrayContent& content) {
  content.buffers[1] = content.spelt.offsets.data();
  content.buffers[2] = content.spelt.characters.data();
}

void export_dictionary(const Field& field, ArrowArray& out) {
  auto content = std::make_unique<ArrayContent>();
  for (const std::string& choice : field.choices) content->spelt.append(choice);
  put_texts(*content);
  fill(out, field.choices.size(), 3, std::move(content));
}

void spell_out(ArrayContent& content, const Field& field, const Column& column, std::size_t rows) {
  static const std::string nothing;
  for (std::size_t row = 0; row < rows; ++row)
    content.spelt.append(column.is_null(row) ? nothing
                                             : field.choices[column.values<std::uint8_t>()[row]]);
  put_texts(content);
}

// Fills in what the type asks for, and returns the number of buffers.
int put_values(ArrayContent& content, const Field& field, bool is_plain, const Column& column,
               std::size_t rows) {
  content.buffers[1] = column.values<std::byte>();
  if (field.type == Type::text) {
    content.buffers[1] = column.offsets().data();
    content.buffers[2] = column.characters().data();
    return 3;
  }
  if (field.type == Type::boolean) {
    content.values.fill(
        rows, [flags = column.values<std::uint8_t>()](std::size_t row) { return flags[row] != 0; });
    content.buffers[1] = content.values.data();
  } else if (field.type == Type::choice && is_plain) {
    spell_out(content, field, column, rows);
    return 3;
  } else if (field.type == Type::choice) {
    export_dictionary(field, content.dictionary);
  }
  return 2;
}

void export_column(const Field& field, bool is_plain, const Column& column,
                   const std::shared_ptr<const Batch>& batch, ArrowArray& out) {
  auto content = std::make_unique<ArrayContent>();
  content->batch = batch;
  mark_valid(content->valid, column, batch->rows);
  const int buffers = put_values(*content, field, is_plain, column, batch->rows);
  fill(out, batch->rows, buffers, std::move(content));
}

}  // namespace

void export_batch(const Schema& schema, const Spelling& spelling,
                  const std::shared_ptr<const Batch>& batch, ArrowArray& out) {
  auto content = std::make_unique<ArrayContent>();
  content->children.resize(schema.fields.size());
  for (std::size_t i = 0; i < schema.fields.size(); ++i)
    export_column(schema.fields[i], spelling[i], batch->columns[i], batch, content->children[i]);
  fill(out, batch->rows, 1, std::move(content));
}

}  // namespace gzdpython
