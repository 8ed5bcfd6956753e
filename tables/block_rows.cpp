// Rows of `blocks`. A block's row is made when it ends.
#include <array>
#include <string>

#include "loss_count.h"
#include "outline.h"
#include "row_builder.h"

namespace gzdtables {

namespace {

struct BlockState {
  RECORDINGS record{};
  std::int32_t number = 0;  // 0: no block
  std::int32_t trial = 0;
  std::optional<double> end;
  std::int64_t samples = 0, filled = 0;
  double first = 0, last = 0;  // times of the samples
  LossCount loss;
  std::array<std::int32_t, 3> events{};  // by EventType
};

std::string positions_of(const RECORDINGS& block) {
  std::string text;
  const auto append = [&](int bit, const char* name) {
    if ((block.sflags & bit) != 0) text.append(text.empty() ? "" : ",").append(name);
  };
  append(SMP_GAZE, "gaze");
  append(SMP_HREF, "href");
  append(SMP_PUPIL_POS, "raw");
  return text;
}

// Number of the choice of `events_in`, or -1.
int events_in(const RECORDINGS& block) {
  switch (block.pos_type) {
    case GZD_POSITION_GAZE:
      return 0;
    case GZD_POSITION_HREF:
      return 1;
    case GZD_POSITION_PUPIL:
      return 2;
    default:
      return -1;
  }
}

void set_choice(const Slot<std::uint8_t>& slot, std::size_t row, int choice) {
  choice < 0 ? slot.set_null(row) : slot.set(row, static_cast<std::uint8_t>(choice));
}

std::int64_t expected_samples(const BlockState& block) {
  if (block.samples + block.filled == 0) return 0;
  return gzdtables::expected_samples(block.first, block.last,
                                     static_cast<double>(block.record.sample_rate));
}

class BlockRows final : public RowBuilder {
 public:
  BlockRows(Recording& recording, const Request& request)
      : RowBuilder(want_samples | want_ended_events, request),
        has_revision_(gzd_get_revision(recording.handle()) != 0) {}

  void bind(Rows& rows) override { rows_ = &rows; }
  void take(ElementWalk& walk, Rows& rows) override;
  void finish(Rows& rows) override { append(rows); }

 private:
  void take_recording(const Element& element, Rows& rows);
  void take_sample(const ElementWalk& walk);
  void append(Rows& rows);
  void append_facts(std::size_t row, Rows& rows) const;
  void append_counts(std::size_t row, const Rows& rows) const;

  bool has_revision_;
  BlockState block_;
  Rows* rows_ = nullptr;
};

void BlockRows::take(ElementWalk& walk, Rows& rows) {
  const Element& element = walk.element();
  if (element.code == GZD_RECORDING) return take_recording(element, rows);
  if (element.block == 0) return;
  if (element.code == GZD_SAMPLE) return take_sample(walk);
  if (is_ended_event(element.code))
    ++block_.events.at(static_cast<std::size_t>(event_type_of(element.code)));
}

void BlockRows::take_recording(const Element& element, Rows& rows) {
  const RECORDINGS& record = element.record->rec;
  if (record.state == GZD_BLOCK_END) {
    if (element.block != 0) block_.end = record.time;
    return append(rows);
  }
  append(rows);
  block_ = BlockState{};
  block_.record = record;
  block_.number = element.block;
  block_.trial = element.trial;
}

void BlockRows::take_sample(const ElementWalk& walk) {
  const FSAMPLE& sample = walk.element().record->fs;
  if (block_.samples + block_.filled == 0) block_.first = time_of(sample);
  block_.last = time_of(sample);
  if (walk.is_filled(sample)) {
    ++block_.filled;
    return;
  }
  ++block_.samples;
  block_.loss.take(sample, block_.record, presence_of(sample, block_.record.eye));
}

void BlockRows::append(Rows& rows) {
  if (block_.number != 0 && accepts(block_.record.time, block_.trial)) {
    const std::size_t row = rows.begin_row();
    append_facts(row, rows);
    append_counts(row, rows);
  }
  block_.number = 0;
}

void BlockRows::append_facts(std::size_t row, Rows& rows) const {
  const RECORDINGS& record = block_.record;
  const bool has_events = (record.record_type & GZD_RECORD_EVENTS) != 0;
  rows.slot<std::int32_t>("block").set(row, block_.number);
  rows.slot<double>("start").set(row, record.time);
  if (block_.end)
    rows.slot<double>("end").set(row, *block_.end);
  else
    rows.slot<double>("end").set_null(row);
  rows.slot<double>("rate").set(row, static_cast<double>(record.sample_rate));
  set_choice(rows.slot<std::uint8_t>("eyes"), row, record.eye - 1);
  rows.slot<std::uint8_t>("has_samples").set(row, record.record_type & GZD_RECORD_SAMPLES);
  rows.slot<std::uint8_t>("has_events").set(row, has_events ? 1 : 0);
  const std::string positions = positions_of(record);
  Column* const text = rows.find("positions");
  positions.empty() ? text->append_null_text() : text->append_text(positions);
  set_choice(rows.slot<std::uint8_t>("events_in"), row, has_events ? events_in(record) : -1);
  rows.slot<std::uint8_t>("pupil_unit").set(row, record.pupil_type == 0 ? 0 : 1);
  set_choice(rows.slot<std::uint8_t>("tracking"), row,
             has_revision_ ? static_cast<int>(record.recording_mode != 0) : -1);
  const auto filter = rows.slot<std::int32_t>("filter");
  has_revision_ ? filter.set(row, record.filter_type) : filter.set_null(row);
}

void BlockRows::append_counts(std::size_t row, const Rows& rows) const {
  rows.slot<std::int64_t>("samples").set(row, block_.samples);
  rows.slot<std::int64_t>("filled").set(row, block_.filled);
  rows.slot<std::int64_t>("expected").set(row, expected_samples(block_));
  constexpr std::array<const char*, 2> lost{"left_lost", "right_lost"};
  for (const std::size_t eye : {0, 1}) {
    const bool counts = block_has(block_.record, eye) && LossCount::first_kind(block_.record) != 0;
    const auto slot = rows.slot<std::int64_t>(lost[eye]);
    counts ? slot.set(row, block_.loss.lost(eye)) : slot.set_null(row);
  }
  constexpr std::array<const char*, 3> events{"fixations", "saccades", "blinks"};
  for (std::size_t type = 0; type < events.size(); ++type)
    rows.slot<std::int32_t>(events[type]).set(row, block_.events[type]);
}

}  // namespace

std::unique_ptr<RowBuilder> make_block_rows(Recording& recording, const Request& request) {
  return std::make_unique<BlockRows>(recording, request);
}

}  // namespace gzdtables
