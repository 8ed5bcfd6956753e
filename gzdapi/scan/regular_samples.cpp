// Steps from record to record in memory for as long as tag and distance stay. Most follow the one
// before as that followed its own: these are only looked at, and entered together.
#include "scan/regular_samples.h"

namespace gzd {

namespace {

constexpr UINT64 largest_time = ~UINT32{0};  // ms; times beyond it wrap

// Most pupil sizes are not negative, which the upper bytes of their words tell.
class PupilSigns {
 public:
  explicit PupilSigns(const SampleLayout& sampleLayout)
      : layout_(sampleLayout),
        mask_(layout_.pupilSizes != 0 && layout_.eyes != 0 ? 0x80 : 0),
        first_(layout_.pupilSizes),
        second_(layout_.pupilSizes + (layout_.eyes == 2 ? sizeof(UINT16) : 0)) {}

  // No size counts as negative from now on.
  void ignore() { mask_ = 0; }
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

class RegularReader {
 public:
  RegularReader(const RegularSamples& expectedSamples, ItemList* list)
      : expected_(expectedSamples),
        layout_(expected_.layout),
        pupils_(layout_),
        items_(list),
        record_(expected_.record),
        time_(expected_.time),
        timeBefore_(expected_.time),
        stamp_(expected_.stamp) {}

  RegularRun run() {
    while (record_ <= expected_.last && takeOne()) takeLikeTheNewest();
    return {record_, newest_, time_, timeBefore_, hasNegativePupil_, hasInput_};
  }

 private:
  bool takeOne() {
    if (!layout_.suits(load_be16(record_))) return false;
    const byte* const body = record_ + sizeof(UINT16);
    const UINT32 time = recorded_time(body, time_, layout_);
    const UINT64 stamp = stamp_of_time(time) + (time == time_ ? 1 : 0);
    // A stamp that falls wraps to a large unsigned step, and ends the run too.
    if (stamp - stamp_ - 1 >= expected_.largestStep) return false;
    const std::size_t length = length_with_head_data(body, layout_);
    if (layout_.hasBlocks && !expected_.blocks.isAt(body + length)) return false;
    if (items_ != nullptr) items_->addSample(positionOf(body), stamp);
    hasNegativePupil_ = hasNegativePupil_ || pupils_.hasNegative(body);
    hasInput_ |= layout_.input != 0 && load_be16(body + layout_.input) != NOT_RECORDED_WORD;
    timeBefore_ = time_;
    time_ = time;
    step_ = stamp - stamp_;
    stamp_ = stamp;
    newest_ = body;
    record_ = body + length + (layout_.hasBlocks ? expected_.blocks.length() : 0);
    return true;
  }

  // Takes, together, as many as follow the newest one at the step that led to it, in records of its
  // length, whose pupil sizes need no closer look.
  void takeLikeTheNewest() {
    // At such steps the recorded times give the same stamps again.
    if (step_ != 1 && step_ % 2 != 0) return;
    if (hasNegativePupil_) pupils_.ignore();
    if (pupils_.mayBeNegative(newest_)) return;
    const auto length = static_cast<std::size_t>(record_ - newest_) + sizeof(UINT16);
    const std::size_t count = layout_.timeLength == 1 ? countLikeTheNewest<true>(length)
                                                      : countLikeTheNewest<false>(length);
    if (count == 0) return;
    if (items_ != nullptr)
      items_->addSamples(count, {positionOf(record_ + sizeof(UINT16)), stamp_ + step_},
                         {static_cast<INT64>(length), step_});
    record_ += length * count;
    newest_ = record_ - length + sizeof(UINT16);
    stamp_ += step_ * count;
    time_ = time_of_stamp(stamp_);
    timeBefore_ = time_of_stamp(stamp_ - step_);
  }

  template <bool hasShortTimes>
  std::size_t countLikeTheNewest(std::size_t length) {
    return step_ == 1 ? countAtStep<hasShortTimes, true>(length)
                      : countAtStep<hasShortTimes, false>(length);
  }

  template <bool hasShortTimes, bool hasHalfSteps>
  std::size_t countAtStep(std::size_t length) {
    const PupilSigns pupils = pupils_;
    const byte* const last = expected_.last;
    const UINT16 tag = layout_.tag;
    const std::size_t input = layout_.input;
    const bool isSimple = layout_.headData == 0 && !layout_.hasBlocks;
    UINT64 time = stamp_ >> 1;  // grows beyond all times rather than wrap
    UINT64 rise = hasHalfSteps ? stamp_ & 1 : step_ >> 1;
    unsigned inputs = 0;
    const byte* record = record_;
    for (; record <= last; record += length) {
      const byte* const body = record + sizeof(UINT16);
      time += rise;
      const bool isOnTime =
          hasShortTimes ? *body == rise && time <= largest_time : load_be32(body) == time;
      if (!isOnTime || layout_tag(load_be16(record)) != tag || pupils.mayBeNegative(body)) break;
      if (!isSimple && !hasPartsOfTheNewest(body, length)) break;
      inputs |= unsigned{load_be16(body + input)} ^ NOT_RECORDED_WORD;
      if (hasHalfSteps) rise ^= 1;
    }
    hasInput_ |= input != 0 && inputs != 0;
    return static_cast<std::size_t>(record - record_) / length;
  }

  // Whether head data and blocks of a record of this length, its tag too, are those of the newest.
  [[nodiscard]] bool hasPartsOfTheNewest(const byte* body, std::size_t length) const {
    if (layout_.headData != 0 && body[layout_.headData] != newest_[layout_.headData]) return false;
    const std::size_t end = length - sizeof(UINT16);
    return !layout_.hasBlocks || expected_.blocks.isAt(body + end - expected_.blocks.length());
  }

  [[nodiscard]] INT64 positionOf(const byte* body) const {
    return expected_.position + (body - expected_.record);
  }

  const RegularSamples& expected_;
  const SampleLayout layout_;
  PupilSigns pupils_;
  ItemList* const items_;
  const byte* record_;
  const byte* newest_ = nullptr;
  UINT32 time_;  // of the newest sample
  UINT32 timeBefore_;
  UINT64 stamp_;  // of the newest sample
  UINT64 step_ = 0;
  bool hasNegativePupil_ = false;
  bool hasInput_ = false;
};

}  // namespace

RegularRun read_regular_samples(const RegularSamples& expected, ItemList* items) {
  return RegularReader(expected, items).run();
}

}  // namespace gzd
