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

  [[nodiscard]] bool hasNegative(const byte* body) const {
    if (((body[first_] | body[second_]) & mask_) == 0) return false;
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
  }
  return {record, newest, time, timeBefore, hasNegativePupil, hasInput};
}

}  // namespace

RegularRun read_regular_samples(const RegularSamples& expected, ItemList* items) {
  return expected.layout.hasBlocks ? read_samples<true>(expected, items)
                                   : read_samples<false>(expected, items);
}

}  // namespace gzd
