// The queue is read in batches ahead of the walk. A batch goes on behind the newest sample when the
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
    : index(openIndex), source(sampleSource), sqbuf(std::make_unique<Slot[]>(series_capacity)) {
  clear();
}

// ---- contents -----------------------------------------------------------------------------------

void SampleQueue::clear() {
  front = sqsize = 0;
  resolutions.clear();
  batch.clear();
  for (auto& eye : positions) {
    for (PairSeries& series : eye) series.clear();
  }
  last_pupil[0] = last_pupil[1] = pupil_size_at_start;
}

void SampleQueue::addSample(const Sample& s, UINT32 entry) {
  if (sqsize == series_capacity) return;
  if (sqsize > 0 && stampAt(sqsize - 1) >= s.getTimeStamp()) return;
  keepNewest(s, entry);
}

void SampleQueue::keepNewest(const Sample& s, UINT32 entry) {
  if ((s.flags & SMP_PUPIL_SIZE) != 0) std::copy_n(s.pa, eye_count, last_pupil);
  at(sqsize++) = {s.getTimeStamp(), entry, {last_pupil[0], last_pupil[1]}};
  appendPositions(s);
  resolutions.append(s.rx, s.ry);
  batch.clear();
}

void SampleQueue::dropNewest() {
  --sqsize;
  forEachFollowed([](PairSeries& series, int, std::size_t) { series.dropNewest(); });
  resolutions.dropNewest();
  batch.clear();
}

void SampleQueue::shiftQueue() {
  const int dropped = std::min(dropped_at_once, sqsize);
  if (dropped == 0) return;
  front = (front + dropped) & (series_capacity - 1);
  sqsize -= dropped;
  forEachFollowed([=](PairSeries& series, int, std::size_t) { series.dropOldest(dropped); });
  resolutions.dropOldest(dropped);
  batch.clear();
  if (sqsize > 0) firstEntry = at(0).entry;
  runGoesBack = true;
}

// ---- look-up ------------------------------------------------------------------------------------

int SampleQueue::getOldSample(UINT64 stamp) const {
  if (sqsize == 0) return -1;
  const int end = sqsize - 1;
  const UINT64 first = stampAt(0);
  const UINT64 last = stampAt(end);
  if (stamp == first) return 0;
  if (stamp == last) return end;
  if (stamp < first || stamp > last || sqsize == 2) return -1;

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
  int high = sqsize;
  while (low < high) {
    const int middle = (low + high) / 2;
    (stampAt(middle) < stamp ? low : high) = stampAt(middle) < stamp ? middle + 1 : middle;
  }
  return low < sqsize && stampAt(low) == stamp ? low : -1;
}

int SampleQueue::findSample(UINT32 wanted) {
  const UINT64 wantedStamp = stampOf(wanted);
  int slot = holds(wanted) ? slotOfStamp(wantedStamp) : -1;
  const bool nearTheFront = slot >= 0 && slot < slots_near_the_front && runGoesBack;
  if (nearTheFront) {
    readAfresh(wanted);
    slot = slotOfStamp(wantedStamp);
  } else if (slot < 0 || (slot >= slot_near_the_end && isFoundByArithmetic(slot))) {
    batchReadSample(wanted);
    slot = holds(wanted) ? slotOfStamp(wantedStamp) : -1;
  }
  // A leap can end in the last slots of a full queue, without a whole window behind it.
  const bool lacksWindow = sqsize == series_capacity && slot + window_middle >= series_capacity &&
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
  return rise >= 0 && rise <= period;
}

// Whether the run of the newest sample goes on to the entry at `wanted`, within one filling.
bool SampleQueue::runReaches(UINT32 wanted) const {
  UINT64 newest = stampOf(lastEntry);
  int samples = 0;
  for (UINT32 i = lastEntry + 1; i <= wanted; ++i) {
    const GZDItem item = index.gzdItemList[i];
    if (item.isRecording()) return false;
    if (!item.isSample()) continue;
    if (!continuesRun(newest, item.getTimeStamp()) || ++samples > series_capacity) return false;
    newest = item.getTimeStamp();
  }
  return true;
}

void SampleQueue::batchReadSample(UINT32 wanted) {
  const bool sameRun =
      sqsize > 0 && wanted >= firstEntry && (wanted <= lastEntry || runReaches(wanted));
  if (!sameRun) return readAfresh(wanted);
  shiftQueue();
  readOn(lastEntry + 1);
}

void SampleQueue::readAfresh(UINT32 wanted) {
  clear();
  period = source.stampsPerSampleAt(wanted);
  UINT32 first = wanted;
  UINT32 i = wanted;
  int samples = 0;
  runGoesBack = false;
  while (i > 0 && !index.gzdItemList[i - 1].isRecording()) {
    --i;
    if (!index.gzdItemList[i].isSample()) continue;
    if (!continuesRun(stampOf(i), stampOf(first))) break;
    // Entries of one stamp count once, so that the wanted sample gets its whole window.
    const bool isRepeated = stampOf(i) == stampOf(first);
    if (!isRepeated && samples++ == samples_before_wanted) {
      runGoesBack = true;
      break;
    }
    first = i;
  }
  firstEntry = first;
  takeOver(first);
  readOn(first + 1);
}

void SampleQueue::readOn(UINT32 from) {
  UINT64 newest = stampOf(lastEntry);
  for (UINT32 i = from; i < index.size() && sqsize < series_capacity; ++i) {
    if (!index.gzdItemList.isSampleAt(i)) {
      if (index.gzdItemList[i].isRecording()) return;
      continue;
    }
    const UINT64 stamp = stampOf(i);
    if (!continuesRun(newest, stamp)) return;
    newest = stamp;
    takeOver(i);
  }
}

void SampleQueue::takeOver(UINT32 entry) {
  lastEntry = entry;
  const bool isRepeated = sqsize > 0 && stampAt(sqsize - 1) == stampOf(entry);
  if (isRepeated) {
    const bool replacesDummy =
        index.gzdItemList[at(sqsize - 1).entry].isDummy() && !index.gzdItemList[entry].isDummy();
    if (!replacesDummy) return;
    dropNewest();
  }
  source.readQueueSample(entry, incoming);
  keepNewest(incoming, entry);
}

// ---- velocities ---------------------------------------------------------------------------------

// Sees to it that the positions that these kinds need are at hand.
void SampleQueue::followPositions(unsigned kinds) {
  if ((kinds & ~followedKinds) == 0) return;
  followedKinds |= kinds;
  for (const VelocityKind& kind : velocity_kinds) {
    if ((kinds & kind.bit) != 0) followed[kind.series] = true;
  }
  forEachFollowed([](PairSeries& series, int, std::size_t) { series.clear(); });
  for (int slot = 0; slot < sqsize; ++slot) {
    source.readQueueSample(entry(slot), incoming);
    appendPositions(incoming);
  }
}

void SampleQueue::appendPositions(const Sample& s) {
  forEachFollowed([&s](PairSeries& series, int eye, std::size_t type) {
    append_position(series, s, eye, type);
  });
}

// Whether the queued samples follow each other at intervals of the rate, every one.
bool SampleQueue::isRegular(int stampsPerSample) const {
  const auto span = static_cast<UINT64>(stampsPerSample) * static_cast<UINT64>(sqsize - 1);
  return stampsPerSample == period && stampAt(sqsize - 1) - stampAt(0) == span;
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
      const PairSeries& queued = positions[static_cast<std::size_t>(eye)][kind.series];
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
  batch.compute(slot, sqsize, s.flags, settings, positions, resolutions);
  batch.copyTo(s, slot);
}

}  // namespace gzd
