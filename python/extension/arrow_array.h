// Rows as Arrow takes them: the buffers of the columns where they lie, bitmaps made of their nulls.
#ifndef GZDPYTHON_ARROW_ARRAY_H
#define GZDPYTHON_ARROW_ARRAY_H

#include <memory>

#include "extension/arrow_abi.h"
#include "extension/arrow_schema.h"
#include "tables/column.h"

namespace gzdpython {

// A struct of all columns, which keeps the batch alive until it is released. `out` is the
// caller's. Throws std::bad_alloc, and std::length_error for texts above 2 GiB.
void export_batch(const gzdtables::Schema& schema, const Spelling& spelling,
                  const std::shared_ptr<const gzdtables::Batch>& batch, ArrowArray& out);

}  // namespace gzdpython

#endif
