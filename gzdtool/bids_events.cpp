// Events of a run: its blocks, the only part of the task that a recording tells.
#include "bids_events.h"

#include <fmt/format.h>

#include <filesystem>

#include "sinks/byte_sink.h"
#include "tables/reader.h"

namespace gzdtool {

namespace {

using gzdtables::Batch;
using gzdtables::Recording;
using gzdtables::TableReader;

constexpr double ms_per_second = 1000.0;

std::string block_rows(Recording& recording, const BidsRun& run) {
  std::string text = "onset\tduration\ttrial_type\n";
  TableReader reader(recording, {.table = gzdtables::Table::blocks});
  Batch batch;
  const auto column = [&](const char* name) -> const gzdtables::Column& {
    return column_of(reader, batch, name);
  };
  while (reader.next(batch))
    for (std::size_t row = 0; row < batch.rows; ++row) {
      const auto number = column("block").values<std::int32_t>()[row];
      if (number < run.first_block || number > run.last_block) continue;
      const double start = column("start").values<double>()[row];
      const gzdtables::Column& ends = column("end");
      const std::string duration =
          ends.is_null(row)
              ? "n/a"
              : fmt::format("{}", (ends.values<double>()[row] - start) / ms_per_second);
      text += fmt::format("{}\t{}\trecording\n", (start - run.start) / ms_per_second, duration);
    }
  return text;
}

// Gaze is told from the upper left corner of the screen.
Json screen_sidecar(const BidsTarget& target) {
  Json screen = target.lab.value("StimulusPresentation", Json::object());
  if (!screen.contains("ScreenOrigin")) screen["ScreenOrigin"] = {"top", "left"};
  return {{"trial_type",
           {{"Description", "What the tracker did"},
            {"Levels", {{"recording", {{"Description", "It recorded a block of samples"}}}}}}},
          {"StimulusPresentation", screen}};
}

}  // namespace

void write_bids_task_events(Recording& recording, const BidsTarget& target) {
  const std::string rows = target.stem + "_events.tsv", sidecar = target.stem + "_events.json";
  if (!std::filesystem::exists(rows)) write_file(rows, block_rows(recording, target.run));
  if (!std::filesystem::exists(sidecar)) write_json(sidecar, screen_sidecar(target));
}

}  // namespace gzdtool
