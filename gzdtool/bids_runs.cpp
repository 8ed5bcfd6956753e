// Where runs begin and end, read off the table of blocks.
#include "bids_runs.h"

#include "tables/reader.h"

namespace gzdtool {

namespace {

using gzdtables::Batch;
using gzdtables::Column;
using gzdtables::Schema;

std::string choice_of(const Schema& schema, const Batch& batch, std::string_view name,
                      std::size_t row) {
  const Column& column = column_of(schema, batch, name);
  if (column.is_null(row)) return "";
  const auto& choices = schema.fields.at(static_cast<std::size_t>(schema.index_of(name))).choices;
  return choices.at(column.values<std::uint8_t>()[row]);
}

struct Block {
  BidsRun run;
  double end = 0;
  bool has_samples = false;
};

Block block_of(const Schema& schema, const Batch& batch, std::size_t row) {
  Block block;
  const std::string eyes = choice_of(schema, batch, "eyes", row);
  block.run.rate = column_of(schema, batch, "rate").values<double>()[row];
  block.run.start = column_of(schema, batch, "start").values<double>()[row];
  block.run.eyes = {eyes == "left" || eyes == "both", eyes == "right" || eyes == "both"};
  block.run.pupil_unit = choice_of(schema, batch, "pupil_unit", row);
  block.run.first_block = block.run.last_block =
      column_of(schema, batch, "block").values<std::int32_t>()[row];
  const Column& end = column_of(schema, batch, "end");
  block.end = end.is_null(row) ? block.run.start : end.values<double>()[row];
  block.has_samples = !eyes.empty() && block.run.rate > 0 &&
                      column_of(schema, batch, "samples").values<std::int64_t>()[row] > 0;
  return block;
}

bool goes_on(const BidsRun& run, double end, const Block& block) {
  const double pause = block.run.start - end;
  return run.rate == block.run.rate && run.eyes == block.run.eyes && pause >= 0 &&
         pause <= longest_pause;
}

}  // namespace

std::vector<BidsRun> runs_of(gzdtables::Recording& recording) {
  gzdtables::TableReader reader(recording, {.table = gzdtables::Table::blocks});
  std::vector<BidsRun> runs;
  Batch batch;
  double end = 0;
  while (reader.next(batch))
    for (std::size_t row = 0; row < batch.rows; ++row) {
      const Block block = block_of(reader.schema(), batch, row);
      if (!block.has_samples) continue;
      if (!runs.empty() && goes_on(runs.back(), end, block))
        runs.back().last_block = block.run.last_block;
      else
        runs.push_back(block.run);
      end = block.end;
    }
  return runs;
}

}  // namespace gzdtool
