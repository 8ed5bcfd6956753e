// TSV into a string.
#include "view/whole_table.h"

#include "sinks/table_sink.h"

namespace gzdtool {

namespace {

class StringSink final : public ByteSink {
 public:
  void write(std::string_view bytes) override { text_ += bytes; }
  void close() override {}
  [[nodiscard]] std::string take() { return std::move(text_); }

 private:
  std::string text_;
};

}  // namespace

std::string tsv_of(gzdtables::Recording& recording, const gzdtables::Request& request) {
  StringSink bytes;
  const auto sink = make_table_sink(bytes, {});
  gzdtables::TableReader reader(recording, request);
  sink->begin(reader.schema(), {});
  gzdtables::Batch batch;
  while (reader.next(batch)) sink->write(batch);
  return bytes.take();
}

}  // namespace gzdtool
