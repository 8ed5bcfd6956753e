// Buffers of columns.
#include "column.h"

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

}  // namespace

Column::Column(Type type, std::size_t capacity)
    : type_(type), values_(new std::byte[capacity * size_of(type)]) {
  if (!is_float(type)) valid_.reset(new std::uint8_t[capacity]);
  if (type == Type::text) offsets_.assign(1, 0);
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
