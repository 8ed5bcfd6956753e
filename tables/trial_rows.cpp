// Rows of `trials`. A trial's row is made when it ends.
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "loss_count.h"
#include "row_builder.h"
#include "trial_rule.h"
#include "utf8.h"

namespace gzdtables {

namespace {

struct TrialState {
  std::int32_t number = 0;  // 0: no trial
  std::int32_t block = 0;
  double start = 0;
  std::optional<double> end;
  std::int64_t samples = 0;
  LossCount loss;
  std::optional<std::string> start_text, end_text;
  std::vector<std::optional<std::string>> variables;
};

void append(Column* column, const std::optional<std::string>& text) {
  text ? column->append_text(*text) : column->append_null_text();
}

void set(const Slot<double>& slot, std::size_t row, std::optional<double> value) {
  value ? slot.set(row, *value) : slot.set_null(row);
}

class TrialRows final : public RowBuilder {
 public:
  TrialRows(Recording& recording, const Request& request)
      : RowBuilder(wanted(recording), request), rule_(recording.options().trials) {
    for (const auto& [name, expression] : rule_.variables) patterns_.emplace_back(expression);
  }

  void bind(Rows&) override {}
  void take(ElementWalk& walk, Rows& rows) override;
  void finish(Rows& rows) override { append_row(rows); }

 private:
  static unsigned wanted(const Recording& recording) {
    return want_samples | (recording.options().trials.variables.empty() ? 0U : want_messages);
  }
  void open(const Element& element, Rows& rows);
  void take_sample(const ElementWalk& walk);
  void take_message(const char* text);
  void close(const Element& element, Rows& rows);
  void append_row(Rows& rows);
  void append_shares(std::size_t row, const Rows& rows) const;

  TrialRule rule_;
  std::vector<Pattern> patterns_;
  TrialState trial_;
};

void TrialRows::take(ElementWalk& walk, Rows& rows) {
  const Element& element = walk.element();
  if (element.opens_trial) open(element, rows);
  if (element.trial == 0) return;
  if (trial_.block == 0) trial_.block = element.block;
  if (element.code == GZD_SAMPLE) take_sample(walk);
  if (element.code == GZD_MESSAGE) take_message(text_of(element.record->fe));
  if (element.closes_trial) close(element, rows);
}

void TrialRows::open(const Element& element, Rows& rows) {
  if (rule_.start) trial_.end = time_of(element);
  append_row(rows);
  trial_ = TrialState{};
  trial_.number = element.trial;
  trial_.start = time_of(element);
  trial_.variables.resize(patterns_.size());
  if (rule_.start) trial_.start_text = as_utf8(text_of(element.record->fe));
}

void TrialRows::close(const Element& element, Rows& rows) {
  trial_.end = time_of(element);
  if (rule_.start) trial_.end_text = as_utf8(text_of(element.record->fe));
  append_row(rows);
}

void TrialRows::take_sample(const ElementWalk& walk) {
  const FSAMPLE& sample = walk.element().record->fs;
  if (walk.is_filled(sample)) return;
  ++trial_.samples;
  if (walk.block() != nullptr)
    trial_.loss.take(sample, *walk.block(), presence_of(sample, walk.eyes()));
}

void TrialRows::take_message(const char* text) {
  if (text == nullptr) return;
  for (std::size_t i = 0; i < patterns_.size(); ++i)
    if (auto match = patterns_[i].find(text)) trial_.variables[i] = as_utf8(*match);
}

void TrialRows::append_row(Rows& rows) {
  const TrialState& trial = trial_;
  if (trial.number != 0 && accepts(trial.start, trial.number)) {
    const std::size_t row = rows.begin_row();
    rows.slot<std::int32_t>("trial").set(row, trial.number);
    set_number(rows.slot<std::int32_t>("block"), row, trial.block);
    rows.slot<double>("start").set(row, trial.start);
    set(rows.slot<double>("end"), row, trial.end);
    const auto duration = trial.end ? std::optional(*trial.end - trial.start) : std::nullopt;
    set(rows.slot<double>("duration"), row, duration);
    rows.slot<std::int64_t>("samples").set(row, trial.samples);
    append_shares(row, rows);
    append(rows.find("start_text"), trial.start_text);
    append(rows.find("end_text"), trial.end_text);
    for (std::size_t i = 0; i < trial.variables.size(); ++i)
      append(rows.find(rule_.variables[i].first), trial.variables[i]);
  }
  trial_.number = 0;
}

void TrialRows::append_shares(std::size_t row, const Rows& rows) const {
  constexpr std::array<const char*, 2> names{"left_lost_share", "right_lost_share"};
  for (const std::size_t eye : {0, 1}) {
    const auto slot = rows.slot<float>(names[eye]);
    const std::int64_t counted = trial_.loss.counted(eye);
    if (counted == 0)
      slot.set_null(row);
    else
      slot.set(row, static_cast<float>(static_cast<double>(trial_.loss.lost(eye)) /
                                       static_cast<double>(counted)));
  }
}

}  // namespace

std::unique_ptr<RowBuilder> make_trial_rows(Recording& recording, const Request& request) {
  return std::make_unique<TrialRows>(recording, request);
}

}  // namespace gzdtables
