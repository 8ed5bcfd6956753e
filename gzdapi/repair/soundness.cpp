// One walk over the ordered index: what blocks lack, and events without a partner.
#include "repair/soundness.h"

#include <array>
#include <optional>

#include "repair/event_pairing.h"

namespace gzd {

namespace {

constexpr INT64 longest_pause = 2;  // sample periods between the last sample and the block's end

class BlockExamination {
 public:
  explicit BlockExamination(Index& entries) : index_(entries) {}

  void run() {
    UINT32 behind = 0;  // the place after the landmark before
    for (const Landmark mark : index_.landmarks()) {
      if (behind < mark.place) newestSample_ = mark.place - 1;
      behind = mark.place + 1;
      const GZDItem item = index_.gzdItemList[mark];
      if (item.isRecordingStart()) {
        begin(*item.getRecording());
      } else if (item.isRecording() && block_ != nullptr) {
        end(item.getTimeStamp());
      }
    }
  }

 private:
  // Samples and events of one block may each have a start of their own.
  void begin(const Recording& start) {
    if ((start.sflags & (SMP_LEFT | SMP_RIGHT)) == 0) return;
    block_ = &start;
    newestSample_.reset();
  }

  void end(UINT64 stamp) {
    const Recording& start = *block_;
    block_ = nullptr;
    const INT64 newest =
        found_at(newestSample_ ? index_.gzdItemList.stampAt(*newestSample_) : start.getTime());
    const INT64 period = stamps_per_sample(start.sample_rate);
    const INT64 pause = found_at(stamp) - newest;
    if (period < 1 || pause <= longest_pause * period) return;
    index_.findings.add({.kind = GZD_FINDING_SAMPLES_END_EARLY,
                         .eye = start.eye,
                         .count = pause / period,
                         .start = newest,
                         .end = found_at(stamp)});
  }

  Index& index_;
  const Recording* block_ = nullptr;    // the one at hand, if it announces samples
  std::optional<UINT32> newestSample_;  // of it
};

}  // namespace

void examine_blocks(Index& index, bool samplesLoaded) {
  if (samplesLoaded) BlockExamination(index).run();
}

void find_unpaired_events(Index& index) {
  std::array<std::optional<GZDItem>, event_pairs> open;
  const auto note = [&index](const GZDItem& item) {
    index.findings.add(finding_of(GZD_FINDING_UNPAIRED_EVENT, item));
  };
  for (const Landmark mark : index.landmarks()) {
    const GZDItem item = index.gzdItemList[mark];
    if (!item.isEyeEvent()) continue;
    std::optional<GZDItem>& start = open[pair_of(item)];
    const bool isPaired = item.isStartEvent() != start.has_value();
    if (!isPaired) note(start ? *start : item);
    if (item.isStartEvent())
      start = item;
    else
      start.reset();
  }
  for (const std::optional<GZDItem>& start : open) {
    if (start) note(*start);
  }
}

}  // namespace gzd
