// Buffers of columns.
#include "column.h"

#include "touched_memory.h"

namespace gzdtables {

namespace {

std::size_t size_of(Type type) {
  switch (type) {
    case Type::boolean:
    case Type::choice:
      return 1;
    case Type::uint16:
      return sizeof(std::uint16_t);
    case Type::int64:
    case Type::float64:
      return sizeof(double);
    case Type::text:
      return 0;
    default:
      return sizeof(float);
  }
}

bool is_float(Type type) {
  return type == Type::float32 || type == Type::float64;
}

// Of values, and of what tells which are valid; columns that follow in memory begin at a boundary
// of a line of the cache.
std::size_t bytes_for(Type type, std::size_t capacity) {
  constexpr std::size_t line = 64;
  const std::size_t bytes = capacity * (size_of(type) + (is_float(type) ? 0 : 1));
  return (bytes + line - 1) / line * line;
}

std::shared_ptr<std::byte[]> new_memory(std::size_t bytes) {
  return std::shared_ptr<std::byte[]>(new std::byte[bytes]);
}

}  // namespace

Column::Column(Type type, std::size_t capacity)
    : Column(type, capacity, new_memory(bytes_for(type, capacity))) {}

Column::Column(Type type, std::size_t capacity, std::shared_ptr<std::byte[]> memory)
    : type_(type), values_(std::move(memory)) {
  if (!is_float(type))
    valid_ = reinterpret_cast<std::uint8_t*>(values_.get() + capacity * size_of(type));
  if (type == Type::text) offsets_.assign(1, 0);
}

std::vector<Column> columns_in_one_piece(const Schema& schema, std::size_t rows) {
  std::size_t bytes = 0;
  for (const Field& field : schema.fields) bytes += bytes_for(field.type, rows);
  const std::shared_ptr<std::byte[]> memory = new_touched_memory(bytes);
  std::vector<Column> columns;
  std::size_t place = 0;
  for (const Field& field : schema.fields) {
    columns.push_back({field.type, rows, {memory, memory.get() + place}});
    place += bytes_for(field.type, rows);
  }
  return columns;
}

std::string_view Column::text(std::size_t row) const {
  const auto begin = static_cast<std::size_t>(offsets_[row]);
  return std::string_view(characters_)
      .substr(begin, static_cast<std::size_t>(offsets_[row + 1]) - begin);
}

void Column::append_text(std::string_view text) {
  valid_[offsets_.size() - 1] = 1;
  characters_.append(text);
  offsets_.push_back(static_cast<std::int32_t>(characters_.size()));
}

void Column::append_null_text() {
  valid_[offsets_.size() - 1] = 0;
  offsets_.push_back(offsets_.back());
}

void Column::clear() {
  characters_.clear();
  if (type_ == Type::text) offsets_.assign(1, 0);
}

}  // namespace gzdtables
