// Samples on a regular grid of times; events and messages by onset.
#include "bids_files.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "sinks/byte_sink.h"
#include "sinks/cell_text.h"
#include "sinks/escape.h"
#include "tables/reader.h"

namespace gzdtool {

namespace {

using gzdtables::Batch;
using gzdtables::Column;
using gzdtables::Recording;
using gzdtables::Request;
using gzdtables::Table;
using gzdtables::TableReader;

constexpr double ms_per_second = 1000.0;
constexpr std::array<const char*, 2> eye_names{"left", "right"};

// Rows of tab-separated cells.
class Rows {
 public:
  explicit Rows(const std::string& name) : sink_(open_byte_sink(name)) {}
  void add(double value) {
    std::array<char, longest_number> text;
    add(std::string_view(text.data(), write_double(text.data(), value)));
  }
  void add(float value) {
    if (std::isnan(value)) return add("n/a");
    std::array<char, longest_number> text;
    add(std::string_view(text.data(), write_float(text.data(), value)));
  }
  void add(std::string_view cell) { text_.append(cell).push_back('\t'); }
  void end_row() {
    constexpr std::size_t enough = 1 << 18;
    text_.back() = '\n';
    if (text_.size() >= enough) flush();
  }
  void close() {
    flush();
    sink_->close();
  }

 private:
  void flush() {
    sink_->write(text_);
    text_.clear();
  }

  std::unique_ptr<ByteSink> sink_;
  std::string text_;
};

// Writes samples at their rows, and rows without values between them.
class Grid {
 public:
  Grid(Rows& rows, double rate) : rows_(rows), rate_(rate) {}

  void put(double time, float x, float y, float pupil) {
    if (next_ == 0) start_ = time;
    const auto place =
        static_cast<std::int64_t>(std::llround((time - start_) * rate_ / ms_per_second));
    if (place < next_) {
      ++dropped_;
      return;
    }
    constexpr float none = std::numeric_limits<float>::quiet_NaN();
    spare_rows_ -= place - next_;
    if (spare_rows_ < 0)
      throw gzdtables::ReadError("has more pauses than a regular table can hold");
    while (next_ < place) write(none, none, none);
    write(x, y, pupil);
  }
  [[nodiscard]] std::int64_t dropped() const { return dropped_; }

 private:
  void write(float x, float y, float pupil) {
    rows_.add(start_ + static_cast<double>(next_++) * ms_per_second / rate_);
    rows_.add(x);
    rows_.add(y);
    rows_.add(pupil);
    rows_.end_row();
  }

  Rows& rows_;
  double rate_;
  double start_ = 0;
  std::int64_t next_ = 0;  // row
  std::int64_t dropped_ = 0;
  std::int64_t spare_rows_ = 100'000'000;
};

void put_batch(Grid& grid, const TableReader& reader, const Batch& batch, const BidsRun& run,
               std::size_t eye) {
  const std::string side = eye_names.at(eye);
  const Column& block = column_of(reader, batch, "block");
  const auto* const times = column_of(reader, batch, "time").values<double>();
  const auto* const x = column_of(reader, batch, side + "_x").values<float>();
  const auto* const y = column_of(reader, batch, side + "_y").values<float>();
  const auto* const pupil = column_of(reader, batch, side + "_pupil").values<float>();
  for (std::size_t row = 0; row < batch.rows; ++row) {
    const std::int32_t number = block.is_null(row) ? 0 : block.values<std::int32_t>()[row];
    if (number >= run.first_block && number <= run.last_block)
      grid.put(times[row], x[row], y[row], pupil[row]);
  }
}

std::int64_t write_samples(Recording& recording, const BidsTarget& target, std::size_t eye,
                           const std::string& name) {
  Rows rows(name);
  Grid grid(rows, target.run.rate);
  TableReader reader(recording, {.table = Table::samples});
  Batch batch;
  while (reader.next(batch)) put_batch(grid, reader, batch, target.run, eye);
  rows.close();
  return grid.dropped();
}

// A row of events or messages.
struct EventRow {
  double onset = 0;
  std::optional<double> duration;  // s
  std::string_view trial_type;     // empty: none
  bool blink = false;
  std::string message;  // escaped; empty: none
};

std::string_view type_of(std::uint8_t type) {
  constexpr std::array<std::string_view, 3> names{"fixation", "saccade", ""};
  return names.at(type);
}

void append_events(std::vector<EventRow>& rows, Recording& recording, const Request& request) {
  TableReader reader(recording, request);
  constexpr std::uint8_t blink = 2;
  Batch batch;
  while (reader.next(batch))
    for (std::size_t row = 0; row < batch.rows; ++row) {
      const std::uint8_t type = column_of(reader, batch, "type").values<std::uint8_t>()[row];
      const Column& holds = column_of(reader, batch, "has_blink");
      const bool holds_blink = !holds.is_null(row) && holds.values<std::uint8_t>()[row] != 0;
      const double ms = column_of(reader, batch, "duration").values<double>()[row];
      rows.push_back({column_of(reader, batch, "onset").values<double>()[row], ms / ms_per_second,
                      type_of(type), type == blink || holds_blink, ""});
    }
}

void append_messages(std::vector<EventRow>& rows, Recording& recording, Request request) {
  request.table = Table::messages;
  request.eye = {};
  TableReader reader(recording, request);
  Batch batch;
  while (reader.next(batch)) {
    const Column& texts = column_of(reader, batch, "text");
    for (std::size_t row = 0; row < batch.rows; ++row) {
      EventRow& event = rows.emplace_back();
      event.onset = column_of(reader, batch, "time").values<double>()[row];
      if (!texts.is_null(row)) append_tsv(event.message, texts.text(row), false);
    }
  }
}

void write_event(Rows& rows, const EventRow& event) {
  rows.add(event.onset);
  event.duration ? rows.add(*event.duration) : rows.add("n/a");
  rows.add(event.trial_type.empty() ? "n/a" : event.trial_type);
  rows.add(event.blink ? "1" : "0");
  rows.add(event.message.empty() ? "n/a" : std::string_view(event.message));
  rows.end_row();
}

void write_events(Recording& recording, const BidsTarget& target, std::size_t eye,
                  const std::string& name) {
  Request request{.table = Table::events};
  request.eye = eye == 0 ? gzdtables::Eye::left : gzdtables::Eye::right;
  request.from = target.events_from;
  request.to = target.next_start;
  std::vector<EventRow> events;
  append_events(events, recording, request);
  append_messages(events, recording, request);
  std::stable_sort(events.begin(), events.end(),
                   [](const EventRow& a, const EventRow& b) { return a.onset < b.onset; });
  Rows rows(name);
  for (const EventRow& event : events) write_event(rows, event);
  rows.close();
}

Json described(const char* words, const char* units = nullptr) {
  Json json = {{"Description", words}};
  if (units != nullptr) json["Units"] = units;
  return json;
}

Json physio_sidecar(const BidsTarget& target, std::size_t eye) {
  Json json = target.lab;
  json["PhysioType"] = "eyetrack";
  json["SamplingFrequency"] = json_number(target.run.rate);
  json["StartTime"] = json_number(target.start_time);
  json["RecordedEye"] = eye_names.at(eye);
  json["SampleCoordinateSystem"] = "gaze-on-screen";
  json["Columns"] = {"timestamp", "x_coordinate", "y_coordinate", "pupil_size"};
  json["timestamp"] = described("Time of the tracker's clock", "ms");
  json["x_coordinate"] = described("Gaze on the display, from its left edge", "pixel");
  json["y_coordinate"] = described("Gaze on the display, from its upper edge", "pixel");
  json["pupil_size"] =
      described(target.run.pupil_unit == "diameter" ? "Pupil diameter" : "Pupil area", "arbitrary");
  return json;
}

Json events_sidecar() {
  return {{"Columns", {"onset", "duration", "trial_type", "blink", "message"}},
          {"Description", "Eye events and messages, as the tracker recorded them"},
          {"OnsetSource", "timestamp"},
          {"onset", described("Time of the tracker's clock", "ms")},
          {"duration", described("Duration of an eye event", "s")},
          {"trial_type",
           {{"Description", "Kind of the eye event"},
            {"Levels",
             {{"fixation", described("The eye rests")}, {"saccade", described("The eye jumps")}}}}},
          {"blink",
           {{"Description", "Whether this is a blink, or a saccade that holds one"},
            {"Levels", {{"0", described("No")}, {"1", described("Yes")}}}}},
          {"message", described("Text of a message")}};
}

}  // namespace

std::int64_t write_bids_eye(Recording& recording, const BidsTarget& target, std::size_t eye) {
  const bool is_second = eye == 1 && target.run.eyes[0];
  const std::string stem = target.stem + "_recording-eye" + (is_second ? "2" : "1");
  const std::int64_t dropped = write_samples(recording, target, eye, stem + "_physio.tsv.gz");
  write_events(recording, target, eye, stem + "_physioevents.tsv.gz");
  write_json(stem + "_physioevents.json", events_sidecar());
  write_json(stem + "_physio.json", physio_sidecar(target, eye));
  return dropped;
}

}  // namespace gzdtool
