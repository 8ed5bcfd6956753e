// Arrays over columns.
#include "extension/numpy_columns.h"

#include <nanobind/ndarray.h>

#include <memory>

namespace gzdpython {

namespace {

namespace nb = nanobind;
using gzdtables::Batch;
using gzdtables::Column;
using gzdtables::Type;

using Share = std::shared_ptr<const Batch>;

template <class T>
nb::object array_over(const T* values, const Share& batch) {
  const nb::capsule owner(new Share(batch),
                          [](void* share) noexcept { delete static_cast<Share*>(share); });
  return nb::cast(nb::ndarray<nb::numpy, const T, nb::ndim<1>>(values, {batch->rows}, owner));
}

nb::object values_of(const Column& column, const Share& batch) {
  switch (column.type()) {
    case Type::int32:
      return array_over(column.values<std::int32_t>(), batch);
    case Type::int64:
      return array_over(column.values<std::int64_t>(), batch);
    case Type::uint16:
      return array_over(column.values<std::uint16_t>(), batch);
    case Type::uint32:
      return array_over(column.values<std::uint32_t>(), batch);
    case Type::float32:
      return array_over(column.values<float>(), batch);
    case Type::float64:
      return array_over(column.values<double>(), batch);
    default:
      return array_over(column.values<std::uint8_t>(), batch);
  }
}

nb::list texts_of(const Column& column, std::size_t rows) {
  nb::list texts;
  for (std::size_t row = 0; row < rows; ++row) {
    const std::string_view text = column.text(row);
    texts.append(column.is_null(row) ? nb::object(nb::none())
                                     : nb::object(nb::str(text.data(), text.size())));
  }
  return texts;
}

}  // namespace

nb::tuple numpy_column(const Frame& frame, std::size_t index) {
  const Column& column = frame.batch->columns.at(index);
  if (column.type() == Type::text)
    return nb::make_tuple(texts_of(column, frame.batch->rows), nb::none());
  const nb::object valid =
      column.valid() == nullptr ? nb::object(nb::none()) : array_over(column.valid(), frame.batch);
  return nb::make_tuple(values_of(column, frame.batch), valid);
}

}  // namespace gzdpython
