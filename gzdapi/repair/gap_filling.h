// Fills gaps in the sample stream with dummy entries, and counts irregular steps.
#ifndef GZDAPI_GAP_FILLING_H
#define GZDAPI_GAP_FILLING_H

#include "index/index.h"

namespace gzd {

// Bounds on the entries made for samples that are not there.
struct DummyBudget {
  static constexpr int longest_gap = 10000;    // samples of one gap
  static constexpr int all_gaps = 10'000'000;  // samples of all gaps of a file

  // Takes `count` from what is left of the file's budget. False when one gap or the file would
  // exceed its bound; nothing is taken then.
  bool allows(int count) {
    if (count > longest_gap || count > left) return false;
    if (count > 0) left -= count;
    return true;
  }

  int left = all_gaps;
};

// Follows the times of the samples while the file is scanned.
class SampleClock {
 public:
  // At any boundary of a block; at a start the period has to be found anew.
  void forgetTimes() { last_ = beforeLast_ = unknown_length; }
  void forgetPeriod() { period_ = unknown_length; }

  // The stamp of a sample at `time`: a repeated time counts as half a millisecond later.
  [[nodiscard]] UINT64 stampOf(UINT32 time) const {
    return stamp_of_time(time) + (INT64{time} == last_ ? 1 : 0);
  }
  // The stamp of the sample before; -1 when none is known.
  [[nodiscard]] INT64 previousStamp() const { return 2 * last_ + (last_ == beforeLast_ ? 1 : 0); }
  // Whether largestStep() tells which samples are regular.
  [[nodiscard]] bool isTicking(bool checksGaps) const {
    return last_ >= 1 && beforeLast_ >= 1 && (knowsPeriod() || !checksGaps);
  }
  // From the stamp of the sample before to the next, if nothing is to be missing. Any step that
  // rises when gaps do not matter.
  [[nodiscard]] UINT64 largestStep(bool checksGaps) const {
    constexpr UINT64 any_rise = ~UINT64{0} >> 1;
    return checksGaps ? static_cast<UINT64>(period_) : any_rise;
  }
  // Enters dummies for the samples missing before one with `stamp`, and says so in the log.
  void fillGap(Index& index, UINT64 stamp, float sampleRate, DummyBudget& budget) {
    if (!isRegular(stamp)) examineGap(index, stamp, sampleRate, budget);
  }
  // Goes on to a sample at `time`.
  void advance(UINT32 time) {
    beforeLast_ = last_;
    last_ = time;
  }

 private:
  static constexpr int unknown_length = -1;
  static constexpr INT64 longest_period = 8;

  // Whether nothing is missing before a sample with `stamp`, as far as is known.
  [[nodiscard]] bool isRegular(UINT64 stamp) const {
    if (last_ < 1 || beforeLast_ < 1) return true;
    return knowsPeriod() && static_cast<INT64>(stamp) - previousStamp() <= period_;
  }
  void examineGap(Index& index, UINT64 stamp, float sampleRate, DummyBudget& budget);
  void findPeriod(Index& index, INT64 stamp, float sampleRate);
  [[nodiscard]] bool knowsPeriod() const { return period_ >= 1 && period_ <= longest_period; }

  INT64 last_ = unknown_length;  // ms
  INT64 beforeLast_ = unknown_length;
  INT64 period_ = unknown_length;  // stamps
};

// Enters dummies for samples that are missing at the start of blocks. The index is in time order.
void pad_block_starts(Index& index, DummyBudget& budget);

// Logs samples outside blocks and how many steps between samples are shorter or longer than the
// rate says. The index is in time order.
void report_sample_periods(Index& index);

}  // namespace gzd

#endif
