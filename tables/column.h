// The values of some rows of a table: a typed buffer a column, and what is null in it.
#ifndef GZDTABLES_COLUMN_H
#define GZDTABLES_COLUMN_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "schema.h"

namespace gzdtables {

// One column of a batch. Its values lie one behind the other in memory, as
//
//   boolean, choice   uint8_t: 0 or 1; the number of the text in Field::choices
//   int32 ... float64 int32_t, int64_t, uint16_t, uint32_t, float, double
//   text              UTF-8 in `characters()`, row r from offsets()[r] to offsets()[r + 1]
//
// A null of a float is NaN, and every NaN is a null. Any other type has a byte a row in `valid()`,
// 0 for a null, whose value is then 0 or an empty text.
class Column {
 public:
  Column(Type type, std::size_t capacity);
  Column(Column&&) noexcept = default;
  Column& operator=(Column&&) noexcept = default;

  [[nodiscard]] Type type() const { return type_; }
  [[nodiscard]] bool is_null(std::size_t row) const {
    if (type_ == Type::float32) return std::isnan(values<float>()[row]);
    if (type_ == Type::float64) return std::isnan(values<double>()[row]);
    return valid_[row] == 0;
  }

  // The first value; valid for as many rows as the batch has. T must be the type of the values.
  template <class T>
  [[nodiscard]] const T* values() const {
    return reinterpret_cast<const T*>(values_.get());
  }
  // A byte a row: 1 for a value, 0 for a null. Null pointer for floats, whose nulls are NaN.
  [[nodiscard]] const std::uint8_t* valid() const { return valid_; }

  [[nodiscard]] std::string_view text(std::size_t row) const;
  [[nodiscard]] std::span<const std::int32_t> offsets() const { return offsets_; }
  [[nodiscard]] const std::string& characters() const { return characters_; }

  // ---- for those who fill it --------------------------------------------------------------------

  template <class T>
  [[nodiscard]] T* filling() {
    return reinterpret_cast<T*>(values_.get());
  }
  [[nodiscard]] std::uint8_t* filling_valid() { return valid_; }
  // Rows of text are appended in order.
  void append_text(std::string_view text);
  void append_null_text();
  // Forgets all rows and keeps the memory.
  void clear();

 private:
  friend std::vector<Column> columns_in_one_piece(const Schema& schema, std::size_t rows);
  // `memory`: as many bytes as bytes_for() tells.
  Column(Type type, std::size_t capacity, std::shared_ptr<std::byte[]> memory);

  Type type_;
  std::shared_ptr<std::byte[]> values_;  // and behind them, in the same memory,
  std::uint8_t* valid_ = nullptr;        // a byte a row, but for floats
  std::vector<std::int32_t> offsets_;
  std::string characters_;
};

// A column for each field of the schema, in memory that they share and that is touched already: for
// rows that are sure to come. It lives as long as any of the columns.
[[nodiscard]] std::vector<Column> columns_in_one_piece(const Schema& schema, std::size_t rows);

// Some rows of a table: a column for each field of its schema, all of `rows` values. Movable; a
// batch that is kept stays valid whatever happens to the recording.
struct Batch {
  std::size_t rows = 0;
  std::vector<Column> columns;
};

// A column to write into, or none when the table is read without it. Writing to none is allowed
// and does nothing.
template <class T>
class Slot {
 public:
  Slot() = default;
  explicit Slot(Column& column) : values_(column.filling<T>()), valid_(column.filling_valid()) {}

  explicit operator bool() const { return values_ != nullptr; }
  void set(std::size_t row, T value) const {
    if (values_ == nullptr) return;
    values_[row] = value;
    if (valid_ != nullptr) valid_[row] = 1;
  }
  // The same value for the rows from `begin` to before `end`.
  void fill(std::size_t begin, std::size_t end, T value) const {
    if (values_ == nullptr) return;
    std::fill(values_ + begin, values_ + end, value);
    if (valid_ != nullptr) std::fill(valid_ + begin, valid_ + end, std::uint8_t{1});
  }
  void fill_null(std::size_t begin, std::size_t end) const {
    if (values_ == nullptr) return;
    std::fill(values_ + begin, values_ + end, null_value());
    if (valid_ != nullptr) std::fill(valid_ + begin, valid_ + end, std::uint8_t{0});
  }
  void set_null(std::size_t row) const {
    if (values_ == nullptr) return;
    values_[row] = null_value();
    if (valid_ != nullptr) valid_[row] = 0;
  }

 private:
  static T null_value() {
    if constexpr (std::numeric_limits<T>::has_quiet_NaN) return std::numeric_limits<T>::quiet_NaN();
    return T{};
  }

  T* values_ = nullptr;
  std::uint8_t* valid_ = nullptr;
};

}  // namespace gzdtables

#endif
