// Tables in memory and tables that are read in batches.
#ifndef GZDPYTHON_FRAME_H
#define GZDPYTHON_FRAME_H

#include <memory>
#include <string>

#include "extension/arrow_stream.h"
#include "extension/library.h"
#include "tables/reader.h"

namespace gzdpython {

// Rows of a table; shared by all that show them.
struct Frame {
  std::shared_ptr<const gzdtables::Schema> schema;
  std::shared_ptr<const gzdtables::Batch> batch;
};

// A whole table, each column in one piece. In a turn of its own; throws Failure,
// gzdtables::UsageError, and std::length_error for texts above 2 GiB.
[[nodiscard]] Frame read_frame(gzdtables::Recording& recording, gzdtables::Request request);

// The frame's rows as a source of one batch.
[[nodiscard]] std::unique_ptr<BatchSource> source_of(const Frame& frame);

// A table in batches. A batch that nobody shows any more is filled again. Each call is a turn of
// its own. Any other reading of the recording ends the stream.
class TableStream final : public BatchSource {
 public:
  TableStream(OpenRecording recording, const gzdtables::Request& request);
  ~TableStream() override;

  [[nodiscard]] const gzdtables::Schema& schema() const override { return *schema_; }
  [[nodiscard]] std::shared_ptr<const gzdtables::Batch> next() override;
  // The next rows with their schema; a frame without a batch at the end.
  [[nodiscard]] Frame next_frame() { return {schema_, next()}; }

 private:
  class Pool;

  OpenRecording recording_;
  std::unique_ptr<gzdtables::TableReader> reader_;
  std::shared_ptr<const gzdtables::Schema> schema_;
  std::shared_ptr<Pool> pool_;
};

}  // namespace gzdpython

#endif
