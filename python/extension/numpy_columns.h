// Columns as arrays of numpy, over the memory where they lie.
#ifndef GZDPYTHON_NUMPY_COLUMNS_H
#define GZDPYTHON_NUMPY_COLUMNS_H

#include <nanobind/nanobind.h>

#include "extension/frame.h"

namespace gzdpython {

// A pair: the values of a column, and a byte a row that is 0 for a null. The second is None for
// floats, whose nulls are NaN, and for texts, which are a list of str and None. Arrays are
// read-only and keep the frame's rows alive.
[[nodiscard]] nanobind::tuple numpy_column(const Frame& frame, std::size_t index);

}  // namespace gzdpython

#endif
