// What the recording knows of its task is when it recorded.
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

void write_when_missing(const std::string& name, const std::string& text) {
  if (std::filesystem::exists(name)) return;
  const auto sink = open_byte_sink(name);
  sink->write(text);
  sink->close();
}

std::string block_rows(Recording& recording, const BidsRun& run) {
  std::string text = "onset\tduration\ttrial_type\n";
  TableReader reader(recording, {.table = gzdtables::Table::blocks});
  const auto column = [&](const char* name) {
    return static_cast<std::size_t>(reader.schema().index_of(name));
  };
  Batch batch;
  while (reader.next(batch))
    for (std::size_t row = 0; row < batch.rows; ++row) {
      const auto number = batch.columns[column("block")].values<std::int32_t>()[row];
      if (number < run.first_block || number > run.last_block) continue;
      const double start = batch.columns[column("start")].values<double>()[row];
      const gzdtables::Column& ends = batch.columns[column("end")];
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
  const Json sidecar = screen_sidecar(target);
  write_when_missing(target.stem + "_events.tsv", block_rows(recording, target.run));
  write_when_missing(target.stem + "_events.json",
                     sidecar.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}

}  // namespace gzdtool
