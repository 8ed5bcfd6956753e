// One walk over samples and events, and what the library found before it.
#include "examination.h"

#include <cstdio>

#include "element_walk.h"
#include "fixation_means.h"
#include "loss_count.h"

namespace gzdtables {

namespace {

class Examiner {
 public:
  Examiner(Recording& recording, Examination& result)
      : file_(recording.handle()), result_(result), has_filled_(has_filled(result.findings)) {
    static_cast<void>(recording.begin_walk());
  }

  void run();

 private:
  void take(int code, const ALLF_DATA& record);
  void take_recording(const RECORDINGS& record);
  void take_sample(const FSAMPLE& sample);
  void take_recorded(const FSAMPLE& sample);
  void note_repeat(double time);
  void end_block();
  void tell_comparisons();

  GZDFILE* file_;
  Examination& result_;
  const bool has_filled_;  // else origins need not be asked for
  BlockExamination block_;
  bool in_block_ = false;
  double first_ = 0, last_ = 0;  // times of the block's samples
  LossCount loss_;
  RECORDINGS record_{};
  FixationMeans fixations_;
  Finding repeats_ = make_finding(finding_times_repeat);
};

void Examiner::run() {
  while (const int code = gzd_get_next_data(file_)) {
    const bool is_wanted = code == GZD_SAMPLE || code == GZD_RECORDING ||
                           code == GZD_START_FIXATION || code == GZD_END_FIXATION;
    if (!is_wanted) continue;
    const ALLF_DATA* const record = gzd_get_float_data(file_);
    if (record == nullptr) throw ReadError("an element could not be read again");
    take(code, *record);
  }
  end_block();
  tell_comparisons();
}

void Examiner::take(int code, const ALLF_DATA& record) {
  if (code == GZD_SAMPLE)
    take_sample(record.fs);
  else if (code == GZD_RECORDING)
    take_recording(record.rec);
  else if (code == GZD_START_FIXATION)
    fixations_.begin_fixation(record.fe);
  else
    fixations_.end_fixation(record.fe);
}

void Examiner::take_recording(const RECORDINGS& record) {
  if (record.state == GZD_BLOCK_END) {
    block_.end = record.time;
    return end_block();
  }
  end_block();
  in_block_ = true;
  record_ = record;
  block_.start = record.time;
  block_.rate = static_cast<double>(record.sample_rate);
}

void Examiner::take_sample(const FSAMPLE& sample) {
  if (!in_block_) return;
  const double time = time_of(sample);
  const bool is_first = block_.samples + block_.filled == 0;
  if (is_first) first_ = time;
  if (!is_first && time <= last_) note_repeat(time);
  last_ = time;
  if (has_filled_ && gzd_get_element_origin(file_) == GZD_ORIGIN_GAP)
    ++block_.filled;
  else
    take_recorded(sample);
}

void Examiner::take_recorded(const FSAMPLE& sample) {
  ++block_.samples;
  const Presence there = presence_of(sample, record_.eye);
  loss_.take(sample, record_, there);
  fixations_.take_sample(sample, there);
}

void Examiner::note_repeat(double time) {
  if (repeats_.count++ == 0) repeats_.start = time;
  repeats_.end = time;
}

void Examiner::end_block() {
  if (!in_block_) return;
  in_block_ = false;
  if (block_.samples + block_.filled != 0)
    block_.expected = expected_samples(first_, last_, block_.rate);
  for (const std::size_t eye : {0, 1}) {
    if (!block_has(record_, eye) || LossCount::first_kind(record_) == 0) continue;
    block_.lost.at(eye) = loss_.lost(eye);
    block_.counted.at(eye) = loss_.counted(eye);
  }
  result_.blocks.push_back(block_);
  block_ = {};
  loss_ = {};
}

void Examiner::tell_comparisons() {
  if (repeats_.count != 0) result_.findings.push_back(repeats_);
  for (const std::size_t eye : {0, 1}) {
    const FixationShift shift = result_.shifts.at(eye) = fixations_.shift(eye);
    if (!shift.is_off) continue;
    Finding finding = make_finding(finding_fixations_shifted);
    finding.eye = eye == 0 ? "left" : "right";
    finding.count = shift.compared;
    std::array<char, 100> note{};
    std::snprintf(note.data(), note.size(), "by %+.1f, %+.1f px in the median", shift.x, shift.y);
    finding.note = note.data();
    result_.findings.push_back(finding);
  }
}

}  // namespace

std::optional<double> lost_share(const Examination& examination, std::size_t eye) {
  std::int64_t lost = 0, counted = 0;
  for (const BlockExamination& block : examination.blocks) {
    lost += block.lost.at(eye).value_or(0);
    counted += block.counted.at(eye);
  }
  if (counted == 0) return std::nullopt;
  return static_cast<double>(lost) / static_cast<double>(counted);
}

Examination examine(Recording& recording) {
  Examination result;
  result.findings = findings_of(recording);
  Examiner(recording, result).run();
  return result;
}

}  // namespace gzdtables
