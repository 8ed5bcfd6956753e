// Steps from record to record in memory for as long as tag and distance stay.
#include "scan/regular_samples.h"

namespace gzd {

namespace {

// Most pupil sizes are not negative, which the upper bytes of their words tell.
class PupilSigns {
 public:
  explicit PupilSigns(const SampleLayout& sampleLayout)
      : layout_(sampleLayout),
        mask_(layout_.pupilSizes != 0 && layout_.eyes != 0 ? 0x80 : 0),
        first_(layout_.pupilSizes),
        second_(layout_.pupilSizes + (layout_.eyes == 2 ? sizeof(UINT16) : 0)) {}

  [[nodiscard]] bool mayBeNegative(const byte* body) const {
    return ((body[first_] | body[second_]) & mask_) != 0;
  }
  [[nodiscard]] bool hasNegative(const byte* body) const {
    if (!mayBeNegative(body)) return false;
    SampleGlance sample;
    glance_at_fixed_part(body, 0, layout_, sample);
    return sample.hasNegativePupil;
  }

 private:
  const SampleLayout& layout_;
  unsigned mask_;
  std::size_t first_;
  std::size_t second_;
};

// Samples that differ by one step in time, in records of one length without head data or blocks,
// whose pupil sizes are not negative.
class SteadySamples {
 public:
  SteadySamples(const RegularSamples& expected, const PupilSigns& pupils)
      : layout_(expected.layout),
        pupils_(pupils),
        last_(expected.last),
        largestStep_(expected.largestStep),
        isPossible_(!layout_.hasBlocks && layout_.headData == 0) {}

  [[nodiscard]] std::size_t recordLength() const { return sizeof(UINT16) + layout_.end; }
  // How many of them there are from `record` on, each `step` ms after the one before; the one
  // before the first is at `time`. Notes their inputs.
  std::size_t countFrom(const byte* record, UINT32 time, UINT32 step, bool& hasInput) const {
    if (!isPossible_ || step == 0 || 2 * UINT64{step} > largestStep_) return 0;
    return layout_.timeLength == 1 ? count<true>(record, time, step, hasInput)
                                   : count<false>(record, time, step, hasInput);
  }

 private:
  template <bool hasShortTimes>
  std::size_t count(const byte* record, UINT32 time, UINT32 step, bool& hasInput) const {
    const std::size_t length = recordLength();
    const UINT32 most = (~UINT32{0} - time) / step;  // times do not wrap
    const std::size_t input = layout_.input;
    unsigned inputs = 0;
    std::size_t count = 0;
    for (; count < most && record <= last_; ++count, record += length) {
      const byte* const body = record + sizeof(UINT16);
      time += step;
      const bool isOnTime = hasShortTimes ? *body == step : load_be32(body) == time;
      if (!layout_.suits(load_be16(record)) || !isOnTime || pupils_.mayBeNegative(body)) break;
      inputs |= unsigned{load_be16(body + input)} ^ NOT_RECORDED_WORD;
    }
    hasInput |= input != 0 && inputs != 0;
    return count;
  }

  const SampleLayout& layout_;
  const PupilSigns& pupils_;
  const byte* const last_;
  const UINT64 largestStep_;
  const bool isPossible_;
};

template <bool hasBlocks>
RegularRun read_samples(const RegularSamples& expected, ItemList* items) {
  const SampleLayout layout = expected.layout;
  const PupilSigns pupils(layout);
  const INT64 position = expected.position;
  const byte* const last = expected.last;
  const byte* const start = expected.record;
  const byte* record = start;
  const byte* newest = nullptr;
  UINT32 time = expected.time;
  UINT32 timeBefore = time;
  UINT64 stampBefore = expected.stamp;
  const UINT64 largestStep = expected.largestStep;
  bool hasNegativePupil = false;
  bool hasInput = false;
  const SteadySamples steady(expected, pupils);
  while (record <= last && layout.suits(load_be16(record))) {
    const byte* const body = record + sizeof(UINT16);
    const UINT32 next = recorded_time(body, time, layout);
    const UINT64 stamp = stamp_of_time(next) + (next == time ? 1 : 0);
    // A stamp that falls wraps to a large unsigned step, and ends the run too.
    if (stamp - stampBefore - 1 >= largestStep) break;
    if (hasBlocks && !expected.blocks.isAt(body + length_with_head_data(body, layout))) break;
    if (items != nullptr) items->addSample(position + (body - start), stamp);
    hasNegativePupil |= pupils.hasNegative(body);
    hasInput |= layout.input != 0 && load_be16(body + layout.input) != NOT_RECORDED_WORD;
    timeBefore = time;
    time = next;
    stampBefore = stamp;
    newest = body;
    record =
        body + length_with_head_data(body, layout) + (hasBlocks ? expected.blocks.length() : 0);

    const UINT32 step = time - timeBefore;
    const std::size_t count = steady.countFrom(record, time, step, hasInput);
    if (count == 0) continue;
    const auto length = static_cast<INT64>(steady.recordLength());
    if (items != nullptr)
      items->addSamples(
          count, {position + (record - start) + INT64{sizeof(UINT16)}, stamp_of_time(time + step)},
          {length, 2 * UINT64{step}});
    record += length * static_cast<INT64>(count);
    newest = record - length + sizeof(UINT16);
    time += step * static_cast<UINT32>(count);
    timeBefore = time - step;
    stampBefore = stamp_of_time(time);
  }
  return {record, newest, time, timeBefore, hasNegativePupil, hasInput};
}

}  // namespace

RegularRun read_regular_samples(const RegularSamples& expected, ItemList* items) {
  return expected.layout.hasBlocks ? read_samples<true>(expected, items)
                                   : read_samples<false>(expected, items);
}

}  // namespace gzd
