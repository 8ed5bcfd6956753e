// A table as an Arrow stream of record batches.
#ifndef GZDPYTHON_ARROW_STREAM_H
#define GZDPYTHON_ARROW_STREAM_H

#include <memory>

#include "extension/arrow_abi.h"
#include "extension/arrow_schema.h"
#include "tables/column.h"

namespace gzdpython {

// Rows in batches, each once.
class BatchSource {
 public:
  virtual ~BatchSource() = default;
  BatchSource(const BatchSource&) = delete;
  BatchSource& operator=(const BatchSource&) = delete;

  [[nodiscard]] virtual const gzdtables::Schema& schema() const = 0;
  // The next rows; null at the end. Throws what reading throws.
  [[nodiscard]] virtual std::shared_ptr<const gzdtables::Batch> next() = 0;

 protected:
  BatchSource() = default;
};

// `out` is the caller's, and to be released by it. An exception of the source becomes the stream's
// last error.
void export_stream(std::unique_ptr<BatchSource> source, const Spelling& spelling,
                   ArrowArrayStream& out);

}  // namespace gzdpython

#endif
