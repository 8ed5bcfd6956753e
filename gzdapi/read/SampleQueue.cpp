// The queue is read in batches ahead of the walk. A batch goes on after the newest sample when the
// wanted one belongs to the same run, dropping the oldest 128 first; else it starts afresh, up to
// 64 samples before the wanted one. It ends at the end of the run or when the queue is full.
//
// Velocities are computed from a window of 19 samples to either side, looked up by stamp: by
// arithmetic alone, so that a sample with an irregular stamp counts as absent. Where every stamp is
// regular those are the slots around, and the velocities of many slots are computed together.
#include "read/SampleQueue.h"

#include <algorithm>
#include <bit>

#include "derived/velocity.h"

namespace gzd {

namespace {

constexpr int dropped_at_once = 128;
constexpr int samples_before_wanted = 64;

constexpr int window_middle = SampleQueue::window_size / 2;
constexpr float pupil_size_at_start = 1000.0f;
constexpr UINT64 largest_step = 8;

void append_position(PairSeries& series, const FSAMPLE& s, int eye, std::size_t type) {
  float x;
  float y;
  get_sample_data(s, &x, &y, eye, position_type_of_series[type]);
  series.append(x, y);
}

bool is_regular_step(UINT64 step) {
  return step == 1 || step == 2 || step == 4 || step == 8;
}

}  // namespace

SampleQueue::SampleQueue(const Index& openIndex, SampleSource& sampleSource)
    : index_(openIndex), source_(sampleSource), sqbuf_(std::make_unique<Slot[]>(series_capacity)) {
  clear();
}

// ---- contents -----------------------------------------------------------------------------------

void SampleQueue::clear() {
  front_ = sqsize_ = 0;
  resolutions_.clear();
  batch_.clear();
  for (auto& eye : positions_) {
    for (PairSeries& series : eye) series.clear();
  }
  last_pupil_[0] = last_pupil_[1] = pupil_size_at_start;
}

void SampleQueue::addSample(const Sample& s, UINT32 entry) {
  if (sqsize_ == series_capacity) return;
  if (sqsize_ > 0 && stampAt(sqsize_ - 1) >= s.getTimeStamp()) return;
  keepNewest(s, entry);
}

void SampleQueue::keepNewest(const Sample& s, UINT32 entry) {
  if ((s.flags & SMP_PUPIL_SIZE) != 0) std::copy_n(s.pa, eye_count, last_pupil_);
  at(sqsize_++) = {s.getTimeStamp(), entry, {last_pupil_[0], last_pupil_[1]}};
  appendPositions(s);
  resolutions_.append(s.rx, s.ry);
  batch_.clear();
}

void SampleQueue::dropNewest() {
  --sqsize_;
  forEachFollowed([](PairSeries& series, int, std::size_t) { series.dropNewest(); });
  resolutions_.dropNewest();
  batch_.clear();
}

void SampleQueue::shiftQueue() {
  const int dropped = std::min(dropped_at_once, sqsize_);
  if (dropped == 0) return;
  front_ = (front_ + dropped) & (series_capacity - 1);
  sqsize_ -= dropped;
  forEachFollowed([=](PairSeries& series, int, std::size_t) { series.dropOldest(dropped); });
  resolutions_.dropOldest(dropped);
  batch_.clear();
  if (sqsize_ > 0) firstEntry_ = at(0).entry;
  runGoesBack_ = true;
}

// ---- look-up ------------------------------------------------------------------------------------

int SampleQueue::getOldSample(UINT64 stamp) const {
  if (sqsize_ == 0) return -1;
  const int end = sqsize_ - 1;
  const UINT64 first = stampAt(0);
  const UINT64 last = stampAt(end);
  if (stamp == first) return 0;
  if (stamp == last) return end;
  if (stamp < first || stamp > last || sqsize_ == 2) return -1;

  const auto found = [&](INT64 slot) {
    return slot >= 0 && slot <= end && stampAt(static_cast<int>(slot)) == stamp;
  };
  const UINT64 lastGap = last - stampAt(end - 1);
  UINT64 step = stampAt(1) - first;
  if (step > largest_step) step = lastGap;
  if (!is_regular_step(step)) return -1;
  const int shift = std::countr_zero(step);
  const INT64 fromFront = static_cast<INT64>((stamp - first) >> shift);
  if (found(fromFront)) return static_cast<int>(fromFront);
  const INT64 fromBack = end - static_cast<INT64>((last - stamp) >> shift);
  if (found(fromBack)) return static_cast<int>(fromBack);
  if (lastGap == step) return -1;
  const INT64 byLastGap = lastGap == 0 ? 0 : end - static_cast<INT64>((last - stamp) / lastGap);
  return found(byLastGap) ? static_cast<int>(byLastGap) : -1;
}

int SampleQueue::slotOfStamp(UINT64 stamp) const {
  const int guess = getOldSample(stamp);
  if (guess >= 0) return guess;
  int low = 0;
  int high = sqsize_;
  while (low < high) {
    const int middle = (low + high) / 2;
    (stampAt(middle) < stamp ? low : high) = stampAt(middle) < stamp ? middle + 1 : middle;
  }
  return low < sqsize_ && stampAt(low) == stamp ? low : -1;
}

int SampleQueue::findSample(UINT32 wanted) {
  const UINT64 wantedStamp = stampOf(wanted);
  int slot = holds(wanted) ? slotOfStamp(wantedStamp) : -1;
  const bool nearTheFront = slot >= 0 && slot < slots_near_the_front && runGoesBack_;
  if (nearTheFront) {
    readAfresh(wanted);
    slot = slotOfStamp(wantedStamp);
  } else if (slot < 0 || (slot >= slot_near_the_end && isFoundByArithmetic(slot))) {
    batchReadSample(wanted);
    slot = holds(wanted) ? slotOfStamp(wantedStamp) : -1;
  }
  // A leap can end in the last slots of a full queue, without a whole window after it.
  const bool lacksWindow = sqsize_ == series_capacity && slot + window_middle >= series_capacity &&
                           isFoundByArithmetic(slot);
  if (slot < 0 || lacksWindow) {
    readAfresh(wanted);
    slot = slotOfStamp(wantedStamp);
  }
  return slot;
}

// ---- reading ahead ------------------------------------------------------------------------------

bool SampleQueue::continuesRun(UINT64 from, UINT64 to) const {
  const INT64 rise = static_cast<INT64>(to) - static_cast<INT64>(from);
  return rise >= 0 && rise <= period_;
}

// Whether the run of the newest sample goes on to the entry at `wanted`, within one filling.
bool SampleQueue::runReaches(UINT32 wanted) const {
  UINT64 newest = stampOf(lastEntry_);
  int samples = 0;
  for (UINT32 i = lastEntry_ + 1; i <= wanted; ++i) {
    const GZDItem item = index_.gzdItemList[i];
    if (item.isRecording()) return false;
    if (!item.isSample()) continue;
    if (!continuesRun(newest, item.getTimeStamp()) || ++samples > series_capacity) return false;
    newest = item.getTimeStamp();
  }
  return true;
}

void SampleQueue::batchReadSample(UINT32 wanted) {
  const bool sameRun =
      sqsize_ > 0 && wanted >= firstEntry_ && (wanted <= lastEntry_ || runReaches(wanted));
  if (!sameRun) return readAfresh(wanted);
  shiftQueue();
  readOn(lastEntry_ + 1);
}

void SampleQueue::readAfresh(UINT32 wanted) {
  clear();
  period_ = source_.stampsPerSampleAt(wanted);
  UINT32 first = wanted;
  UINT32 i = wanted;
  int samples = 0;
  runGoesBack_ = false;
  while (i > 0 && !index_.gzdItemList[i - 1].isRecording()) {
    --i;
    if (!index_.gzdItemList[i].isSample()) continue;
    if (!continuesRun(stampOf(i), stampOf(first))) break;
    // Entries of one stamp count once, so that the wanted sample gets its whole window.
    const bool isRepeated = stampOf(i) == stampOf(first);
    if (!isRepeated && samples++ == samples_before_wanted) {
      runGoesBack_ = true;
      break;
    }
    first = i;
  }
  firstEntry_ = first;
  takeOver(first);
  readOn(first + 1);
}

void SampleQueue::readOn(UINT32 from) {
  UINT64 newest = stampOf(lastEntry_);
  for (UINT32 i = from; i < index_.size() && sqsize_ < series_capacity;) {
    if (!index_.gzdItemList.isSampleAt(i)) {
      if (index_.gzdItemList[i++].isRecording()) return;
      continue;
    }
    if (!continuesRun(newest, stampOf(i))) return;
    takeOver(i);
    i = takeOverPlain(i + 1);
    newest = stampOf(lastEntry_);
  }
}

// Takes over samples like the one just taken over, each later than the one before it, and returns
// the first entry that is none. It does what takeOver does.
UINT32 SampleQueue::takeOverPlain(UINT32 from) {
  const ItemList& items = index_.gzdItemList;
  const PlainRecords records = source_.recordsLike(incoming_);
  const auto end = static_cast<UINT32>(items.size());
  UINT64 newest = stampOf(lastEntry_);
  ItemList::Span span;
  UINT32 i = from;
  for (; i < end && sqsize_ < series_capacity; ++i) {
    if (!span.holds(i)) span = items.spanFrom(i);
    if (!span.holds(i)) break;
    const auto [position, stamp] = span.at(i);
    if (stamp <= newest || !continuesRun(newest, stamp)) break;
    const byte* const body = records.places.recordAt(position);
    if (body == nullptr) break;
    const UINT16 tag = load_be16(body - sizeof(UINT16));
    if (!records.layout->suits(tag)) break;
    decode_fixed_part_quickly(body, *records.layout, incoming_);
    incoming_.flags = flags_at(tag, stamp);
    incoming_.updateTimeStamp(stamp);
    keepNewest(incoming_, i);
    lastEntry_ = i;
    newest = stamp;
  }
  return i;
}

void SampleQueue::takeOver(UINT32 entry) {
  lastEntry_ = entry;
  const bool isRepeated = sqsize_ > 0 && stampAt(sqsize_ - 1) == stampOf(entry);
  if (isRepeated) {
    const bool replacesDummy =
        index_.gzdItemList[at(sqsize_ - 1).entry].isDummy() && !index_.gzdItemList[entry].isDummy();
    if (!replacesDummy) return;
    dropNewest();
  }
  source_.readQueueSample(entry, incoming_);
  keepNewest(incoming_, entry);
}

// ---- velocities ---------------------------------------------------------------------------------

// Sees to it that the positions that these kinds need are at hand.
void SampleQueue::followPositions(unsigned kinds) {
  if ((kinds & ~followedKinds_) == 0) return;
  followedKinds_ |= kinds;
  for (const VelocityKind& kind : velocity_kinds) {
    if ((kinds & kind.bit) != 0) followed_[kind.series] = true;
  }
  forEachFollowed([](PairSeries& series, int, std::size_t) { series.clear(); });
  for (int slot = 0; slot < sqsize_; ++slot) {
    source_.readQueueSample(entry(slot), incoming_);
    appendPositions(incoming_);
  }
}

void SampleQueue::appendPositions(const Sample& s) {
  forEachFollowed([&s](PairSeries& series, int eye, std::size_t type) {
    append_position(series, s, eye, type);
  });
}

// Whether the queued samples follow each other at intervals of the rate, every one.
bool SampleQueue::isRegular(int stampsPerSample) const {
  const auto span = static_cast<UINT64>(stampsPerSample) * static_cast<UINT64>(sqsize_ - 1);
  return stampsPerSample == period_ && stampAt(sqsize_ - 1) - stampAt(0) == span;
}

// The slots of the window around a stamp; -1 for those that are absent, and in the middle.
SampleQueue::WindowSlots SampleQueue::windowAround(UINT64 middle, int sampleRate) const {
  const float interval = static_cast<float>(1000.0 / sampleRate);
  WindowSlots slots;
  slots[window_middle] = -1;
  for (int k = 1; k <= window_middle; ++k) {
    const UINT64 distance = static_cast<UINT32>(static_cast<float>(k) * interval * 2.0f);
    slots[static_cast<std::size_t>(window_middle - k)] = getOldSample(middle - distance);
    slots[static_cast<std::size_t>(window_middle + k)] = getOldSample(middle + distance);
  }
  return slots;
}

// One sample's velocities, where stamps are irregular.
void SampleQueue::setVelocityByStamp(FSAMPLE& s, UINT64 stamp, const VelocitySettings& settings) {
  const WindowSlots slots = windowAround(stamp, settings.sampleRate);
  for (int eye = 0; eye < eye_count; ++eye) {
    if ((s.flags & eye_flag(eye)) == 0) continue;
    for (const VelocityKind& kind : velocity_kinds) {
      if ((settings.kinds & kind.bit) == 0) continue;
      const PairSeries& queued = positions_[static_cast<std::size_t>(eye)][kind.series];
      float x[window_size];
      float y[window_size];
      for (std::size_t i = 0; i < window_size; ++i) {
        x[i] = slots[i] < 0 ? MISSING_DATA : *queued.from(slots[i]).x;
        y[i] = slots[i] < 0 ? MISSING_DATA : *queued.from(slots[i]).y;
      }
      get_sample_data(s, &x[window_middle], &y[window_middle], eye,
                      position_type_of_series[kind.series]);
      compute_velocities(kind, settings, {&x[window_middle], &y[window_middle]}, {&s.rx, &s.ry}, 1,
                         &(s.*kind.x)[eye], &(s.*kind.y)[eye]);
    }
  }
}

void SampleQueue::computeVelocity(FSAMPLE& s, UINT64 stamp, int slot,
                                  const VelocitySettings& settings) {
  if (settings.kinds == GZD_VELOCITY_NONE || settings.sampleRate <= 0) return;
  followPositions(settings.kinds);
  const int stampsPerSample = stamps_per_sample(static_cast<float>(settings.sampleRate));
  if (slot < 0 || !isRegular(stampsPerSample)) return setVelocityByStamp(s, stamp, settings);
  batch_.compute(slot, sqsize_, s.flags, settings, positions_, resolutions_);
  batch_.copyTo(s, slot);
}

}  // namespace gzd
