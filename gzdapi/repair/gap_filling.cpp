// Three steps over the sample stream: gaps between samples are filled while the file is scanned
// (SampleClock), gaps between the start of a block and its first sample once the index is in order
// (pad_block_starts), and what is irregular after that is counted (report_sample_periods).
#include "repair/gap_filling.h"

#include <algorithm>
#include <cstdio>

#include "base/log.h"

namespace gzd {

namespace {

constexpr double largest_count = 2147483647.0;

unsigned long long printable(UINT64 value) {
  return value;
}

GZDItem dummy_sample(UINT64 stamp) {
  return {position_of_dummy, GZD_SAMPLE, SIDE_NONE, 0, stamp};
}

}  // namespace

void SampleClock::findPeriod(Index& index, INT64 stamp, float sampleRate) {
  const INT64 observed = stamp - previousStamp();
  if (observed > longest_period || observed <= 0) return;
  period_ = observed;
  const int expected = stamps_per_sample(sampleRate);
  if (expected < 1 || expected > longest_period || expected == observed) return;
  print_log(
      "Intersample period does not match with the sample rate given by the start recording event! "
      "Using start recording sample rate. %d %d %d %d \n",
      expected, static_cast<int>(observed), static_cast<int>(previousStamp()),
      static_cast<int>(stamp));
  period_ = expected;
  index.findings.add({.kind = GZD_FINDING_PERIOD_MISMATCH,
                      .detail = static_cast<int>(observed),
                      .start = previousStamp(),
                      .end = stamp});
}

void SampleClock::examineGap(Index& index, UINT64 unsignedStamp, float sampleRate,
                             DummyBudget& budget) {
  const INT64 stamp = static_cast<INT64>(unsignedStamp);
  if (!knowsPeriod()) findPeriod(index, stamp, sampleRate);
  if (!knowsPeriod() || stamp - previousStamp() <= period_) return;

  const int missing = static_cast<INT32>(stamp - 2 * last_) / static_cast<INT32>(period_);
  const int added = static_cast<int>(static_cast<unsigned>(missing) - 1);  // may wrap
  print_log("Missing %d samples. Inserting dummy samples \n", missing);
  print_log("Missing (%llu-%llu) samples. Calculating speriod \n",
            printable(static_cast<UINT64>(last_)), printable(unsignedStamp >> 1));
  std::fflush(nullptr);
  Finding gap = {.kind = GZD_FINDING_GAP_LEFT,
                 .count = (stamp - previousStamp() - 1) / period_,
                 .start = previousStamp(),
                 .end = stamp};
  if (missing > DummyBudget::longest_gap || !budget.allows(added)) {
    print_log("Missing samples are over 10000, skip it without addimg missing samples\n ");
    index.findings.add(gap);
    return;
  }
  for (INT64 k = 1; k < missing; ++k) {
    index.gzdItemList.push_back(dummy_sample(static_cast<UINT64>(previousStamp() + k * period_)));
  }
  if (missing > 1) {
    gap.kind = GZD_FINDING_GAP_FILLED;
    gap.count = missing - 1;
  }
  if (gap.count > 0) index.findings.add(gap);
}

// ---- block starts -------------------------------------------------------------------------------

namespace {

class BlockStartPadding {
 public:
  BlockStartPadding(DummyBudget& dummyBudget, Findings& found)
      : budget_(dummyBudget), findings_(found) {}

  // Pads between the block starts since the last sample and `sample`: the dummies, in ascending
  // order, go to `dummies`.
  void pad(const std::vector<const Recording*>& starts, UINT64 sampleStamp) {
    dummies.clear();
    firstStamp_ = sampleStamp;
    for (const Recording* start : starts) padOne(*start);
    std::reverse(dummies.begin(), dummies.end());
  }

  std::vector<GZDItem> dummies;

 private:
  void padOne(const Recording& start) {
    if (firstStamp_ <= start.getTime()) return;
    const int diff = static_cast<int>((firstStamp_ - start.getTime()) / 2);
    const double samples = diff / (1000.0 / static_cast<double>(start.sample_rate));
    const int count = static_cast<int>(std::clamp(samples, -largest_count, largest_count));
    print_log(
        "Missing sample at trial start. Trial start time = %llu First sample time=%llu diff=%d  "
        "SampleRate=%.1f  Missing Sample count=%d\n",
        printable(start.getTime() >> 1), printable(firstStamp_ >> 1), diff,
        static_cast<double>(start.sample_rate), count);
    const bool allowed = budget_.allows(count);
    if (count > 0)
      note(start, allowed ? GZD_FINDING_BLOCK_START_FILLED : GZD_FINDING_GAP_LEFT, count);
    if (!allowed) return;
    const UINT64 sampleStamp = firstStamp_;
    const UINT64 period = static_cast<UINT64>(stamps_per_sample(start.sample_rate));
    for (int k = 1; k <= count; ++k) {
      firstStamp_ = sampleStamp - static_cast<UINT64>(k) * period;
      print_log("Inserting dummy sample at %d %llu\n", k, printable(firstStamp_ >> 1));
      dummies.push_back(dummy_sample(firstStamp_));
    }
  }

  void note(const Recording& start, int kind, int count) {
    findings_.add({.kind = kind,
                   .eye = start.eye,
                   .count = count,
                   .start = found_at(start.getTime()),
                   .end = found_at(firstStamp_)});
  }

  DummyBudget& budget_;
  Findings& findings_;
  UINT64 firstStamp_ = 0;
};

bool awaits_samples(const GZDItem& item) {
  return item.isRecordingStart() && (item.getRecording()->sflags & (SMP_LEFT | SMP_RIGHT)) != 0;
}

}  // namespace

void pad_block_starts(Index& index, DummyBudget& budget) {
  std::vector<const Recording*> waiting;
  BlockStartPadding padding(budget, index.findings);
  const ItemList& items = index.gzdItemList;
  ItemList::Rebuild padded(index.gzdItemList);
  std::size_t taken = 0;
  for (const Landmark mark : index.landmarks()) {
    const GZDItem item = items[mark];
    if (awaits_samples(item)) waiting.push_back(item.getRecording());
    const std::size_t behind = mark.place + std::size_t{1};
    if (waiting.empty() || behind == index.size() || !items.isSampleAt(behind)) continue;
    padding.pad(waiting, items.stampAt(behind));
    waiting.clear();
    if (padding.dummies.empty()) continue;
    padded.take(taken, behind);
    for (const GZDItem& dummy : padding.dummies) padded.add(dummy);
    taken = behind;
  }
  if (taken == 0) return;
  padded.take(taken, index.size());
  padded.finish();
  index.itemsChanged();
}

// ---- statistics ---------------------------------------------------------------------------------

namespace {

class PeriodCount {
 public:
  explicit PeriodCount(const Index& entries) : index_(entries) {}

  void run() {
    std::size_t behind = 0;  // the place after the landmark before
    for (const Landmark mark : index_.landmarks()) {
      countSamples(behind, mark.place);
      behind = mark.place + std::size_t{1};
      const GZDItem& item = index_.gzdItemList[mark];
      if (item.isRecording()) meetBoundary(item);
    }
    countSamples(behind, index_.size());
  }

  unsigned shorter = 0;
  unsigned longer = 0;

 private:
  void meetBoundary(const GZDItem& item) {
    expected_ = item.isRecordingStart() ? stamps_per_sample(item.getRecording()->sample_rate) : 0;
    hasPrevious_ = false;
  }

  void countSamples(std::size_t first, std::size_t last) {
    const ItemList& items = index_.gzdItemList;
    for (auto place = static_cast<UINT32>(first); place < last;) {
      const ItemList::Span span = items.spanFrom(place);
      const UINT32 end = place + static_cast<UINT32>(std::max<std::size_t>(span.count(), 1));
      meetSample(span.holds(place) ? span.at(place).stamp : items.stampAt(place));
      ++place;
      const UINT64 step = span.step();
      if (step != 0 && expected_ != 0 && place < end) {
        countSteps(static_cast<INT64>(step), end - place);
        previous_ = static_cast<INT64>(span.at(end - 1).stamp);
        place = end;
      }
      for (; place < end; ++place) meetSample(span.at(place).stamp);
    }
  }

  void meetSample(UINT64 unsignedStamp) {
    const INT64 stamp = static_cast<INT64>(unsignedStamp);
    if (expected_ == 0) {
      stray_.log(stamp);
      return;
    }
    if (hasPrevious_) countSteps(stamp - previous_, 1);
    previous_ = stamp;
    hasPrevious_ = true;
  }

  void countSteps(INT64 step, unsigned count) {
    if (step < expected_) shorter += count;
    if (step > expected_) longer += count;
  }

  const Index& index_;
  NumberLine stray_{"Sample at time ", " encountered before start of next recording block\n"};
  INT64 expected_ = 0;
  bool hasPrevious_ = false;
  INT64 previous_ = 0;
};

}  // namespace

void report_sample_periods(Index& index) {
  PeriodCount count(index);
  count.run();
  constexpr const char* count_line =
      "%u inter-sample periods were %s than expected from the sampling rate\n";
  if (count.shorter != 0) {
    print_log(count_line, count.shorter, "shorter");
    index.findings.add({.kind = GZD_FINDING_PERIODS_SHORTER, .count = count.shorter});
  }
  if (count.longer != 0) {
    print_log(count_line, count.longer, "longer");
    index.findings.add({.kind = GZD_FINDING_PERIODS_LONGER, .count = count.longer});
  }
}

}  // namespace gzd
