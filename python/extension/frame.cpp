// Reading tables whole and in batches.
#include "extension/frame.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <mutex>
#include <vector>

namespace gzdpython {

namespace {

using gzdtables::Batch;
using gzdtables::Column;
using gzdtables::Recording;
using gzdtables::Request;
using gzdtables::Schema;
using gzdtables::TableReader;
using gzdtables::Type;

constexpr std::size_t rows_of_piece = 1 << 14;  // of a table that is put together of pieces

template <class T>
void copy_values(const Column& from, std::size_t rows, Column& to, std::size_t at) {
  std::memcpy(to.filling<T>() + at, from.values<T>(), rows * sizeof(T));
  if (from.valid() != nullptr) std::memcpy(to.filling_valid() + at, from.valid(), rows);
}

void copy_texts(const Column& from, std::size_t rows, Column& to) {
  constexpr std::size_t most = std::numeric_limits<std::int32_t>::max();
  if (to.characters().size() + from.characters().size() > most)
    throw std::length_error("texts of more than 2 GiB: read the table as a stream");
  for (std::size_t row = 0; row < rows; ++row)
    from.is_null(row) ? to.append_null_text() : to.append_text(from.text(row));
}

void copy_rows(const Column& from, std::size_t rows, Column& to, std::size_t at) {
  switch (from.type()) {
    case Type::boolean:
    case Type::choice:
      return copy_values<std::uint8_t>(from, rows, to, at);
    case Type::uint16:
      return copy_values<std::uint16_t>(from, rows, to, at);
    case Type::int64:
    case Type::float64:
      return copy_values<std::int64_t>(from, rows, to, at);
    case Type::text:
      return copy_texts(from, rows, to);
    default:
      return copy_values<std::int32_t>(from, rows, to, at);
  }
}

Batch joined(const Schema& schema, std::vector<Batch>& pieces) {
  if (pieces.size() == 1) return std::move(pieces.front());
  std::size_t rows = 0;
  for (const Batch& piece : pieces) rows += piece.rows;
  Batch whole{rows, {}};
  for (std::size_t i = 0; i < schema.fields.size(); ++i) {
    Column& column = whole.columns.emplace_back(schema.fields[i].type, rows);
    std::size_t at = 0;
    for (Batch& piece : pieces) {
      const Column taken = std::move(piece.columns[i]);
      copy_rows(taken, piece.rows, column, at);
      at += piece.rows;
    }
  }
  return whole;
}

bool takes_all(const Request& request) {
  return !request.trial && std::isinf(request.from) && std::isinf(request.to);
}

// All samples are read in one piece, whose rows lie where they stay. Other tables are short, and
// the number of rows of a choice is not known.
void choose_pieces(Recording& recording, Request& request) {
  request.batch_rows = rows_of_piece;
  if (request.table != gzdtables::Table::samples || !takes_all(request)) return;
  const std::size_t samples = recording.sample_count();
  request.has_all_rows = samples > rows_of_piece;
  if (samples == 0) request.batch_rows = std::max(1U, recording.element_count());
  if (request.has_all_rows) request.batch_rows = samples + 1;
}

std::vector<Batch> read_pieces(TableReader& reader) {
  std::vector<Batch> pieces;
  do pieces.emplace_back();
  while (reader.next(pieces.back()));
  if (pieces.size() > 1) pieces.pop_back();
  return pieces;
}

class FrameSource final : public BatchSource {
 public:
  explicit FrameSource(const Frame& frame) : frame_(frame) {}
  [[nodiscard]] const Schema& schema() const override { return *frame_.schema; }
  [[nodiscard]] std::shared_ptr<const Batch> next() override { return std::move(frame_.batch); }

 private:
  Frame frame_;
};

}  // namespace

Frame read_frame(Recording& recording, Request request) {
  return in_turn(recording.path(), [&] {
    choose_pieces(recording, request);
    TableReader reader(recording, request);
    std::vector<Batch> pieces = read_pieces(reader);
    return Frame{std::make_shared<Schema>(reader.schema()),
                 std::make_shared<Batch>(joined(reader.schema(), pieces))};
  });
}

std::unique_ptr<BatchSource> source_of(const Frame& frame) {
  return std::make_unique<FrameSource>(frame);
}

// Batches that are shown no more. They come back from any thread, also when the stream is gone.
class TableStream::Pool : public std::enable_shared_from_this<Pool> {
 public:
  Pool() { free_.reserve(most); }
  [[nodiscard]] std::unique_ptr<Batch> take() {
    const std::lock_guard<std::mutex> guard(lock_);
    if (free_.empty()) return std::make_unique<Batch>();
    std::unique_ptr<Batch> batch = std::move(free_.back());
    free_.pop_back();
    return batch;
  }
  // The batch to show; it returns when the last that shows it lets go.
  [[nodiscard]] std::shared_ptr<const Batch> show(std::unique_ptr<Batch> batch) {
    return {batch.release(), [pool = shared_from_this()](Batch* shown) {
              pool->put(std::unique_ptr<Batch>(shown));
            }};
  }

 private:
  static constexpr std::size_t most = 2;

  void put(std::unique_ptr<Batch> batch) noexcept {
    const std::lock_guard<std::mutex> guard(lock_);
    if (free_.size() < most) free_.push_back(std::move(batch));
  }

  std::mutex lock_;
  std::vector<std::unique_ptr<Batch>> free_;
};

TableStream::TableStream(OpenRecording recording, const Request& request)
    : recording_(std::move(recording)), pool_(std::make_shared<Pool>()) {
  reader_ = in_turn(recording_->path(),
                    [&] { return std::make_unique<TableReader>(*recording_, request); });
  schema_ = std::make_shared<Schema>(reader_->schema());
}

TableStream::~TableStream() = default;

std::shared_ptr<const Batch> TableStream::next() {
  std::unique_ptr<Batch> batch = pool_->take();
  const bool is_there = in_turn(recording_->path(), [&] { return reader_->next(*batch); });
  return is_there ? pool_->show(std::move(batch)) : nullptr;
}

}  // namespace gzdpython
