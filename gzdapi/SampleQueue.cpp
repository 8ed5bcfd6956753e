// The queue is read in batches ahead of the walk. A batch goes on behind the newest sample when the
// wanted one belongs to the same run, dropping the oldest 128 first; else it starts afresh, up to
// 64 samples before the wanted one. It ends at the end of the run or when the queue is full.
//
// Velocities are computed from a window of 19 samples to either side, looked up by stamp: by
// arithmetic alone, so that a sample with an irregular stamp counts as absent.
#include "SampleQueue.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>

#include "GZDException.h"
#include "velocity.h"

namespace {

constexpr int DROPPED_AT_ONCE = 128;
constexpr int SAMPLES_BEFORE_WANTED = 64;
// A wanted sample at or behind this slot has too few samples behind it.
constexpr int SLOT_NEAR_THE_END = 448;
// A wanted sample before this slot may have too few samples before it.
constexpr int SLOTS_NEAR_THE_FRONT = SampleQueue::WINDOW - 1;

constexpr int MIDDLE = SampleQueue::WINDOW / 2;
constexpr float PUPIL_SIZE_AT_START = 1000.0f;
constexpr UINT64 LARGEST_STEP = 8;

constexpr double HREF_DISTANCE_SQUARED = 15000.0 * 15000.0;
constexpr double DEGREES_PER_RADIAN = 57.2958;
constexpr double SMALLEST_RESOLUTION = 0.01;
constexpr double LARGEST_RESOLUTION = 10000.0;

constexpr int FIRST_FALCON_REVISION = 3;

// Types of positions, in the order of the queue's series.
constexpr int POSITION_TYPE_OF_SERIES[] = {GZD_POSITION_GAZE, GZD_POSITION_HREF,
                                           GZD_POSITION_PUPIL};

constexpr std::size_t series_of(int positionType) {
  return positionType == GZD_POSITION_GAZE ? 0 : positionType == GZD_POSITION_HREF ? 1 : 2;
}

void append_position(PositionSeries& series, const FSAMPLE& s, int eye, std::size_t type) {
  float x;
  float y;
  get_sample_data(s, &x, &y, eye, POSITION_TYPE_OF_SERIES[type]);
  series.append(x, y);
}

bool is_regular_step(UINT64 step) {
  return step == 1 || step == 2 || step == 4 || step == 8;
}

}  // namespace

SampleQueue::SampleQueue(const Index& openIndex, SampleSource& sampleSource)
    : index(openIndex), source(sampleSource), sqbuf(std::make_unique<Slot[]>(CAPACITY)) {
  clear();
}

// ---- contents
// --------------------------------------------------------------------------------------------

void SampleQueue::clear() {
  front = sqsize = 0;
  for (auto& eye : positions) {
    for (PositionSeries& series : eye) series.clear();
  }
  last_pupil[0] = last_pupil[1] = PUPIL_SIZE_AT_START;
}

void SampleQueue::addSample(const Sample& s, UINT32 entry) {
  if (sqsize == CAPACITY) return;
  if (sqsize > 0 && stampAt(sqsize - 1) >= s.getTimeStamp()) return;
  at(sqsize).sample = s;
  keepNewest(entry);
}

// The slot behind the newest one holds a sample: it becomes the newest.
void SampleQueue::keepNewest(UINT32 entry) {
  Slot& slot = at(sqsize++);
  slot.entry = entry;
  Sample& s = slot.sample;
  for (int eye = 0; eye < EYES; ++eye) {
    if ((s.flags & SMP_PUPIL_SIZE) != 0) {
      last_pupil[eye] = s.pa[eye];
    } else {
      s.pa[eye] = last_pupil[eye];
    }
  }
  appendPositions(s);
}

void SampleQueue::dropNewest() {
  --sqsize;
  forEachFollowed([](PositionSeries& series, int, std::size_t) { series.dropNewest(); });
}

void SampleQueue::shiftQueue() {
  const int dropped = std::min(DROPPED_AT_ONCE, sqsize);
  if (dropped == 0) return;
  front = (front + dropped) & (CAPACITY - 1);
  sqsize -= dropped;
  forEachFollowed([=](PositionSeries& series, int, std::size_t) { series.dropOldest(dropped); });
  if (sqsize > 0) firstEntry = at(0).entry;
  runGoesBack = true;
}

// ---- look-up
// ---------------------------------------------------------------------------------------------

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
  if (step > LARGEST_STEP) step = lastGap;
  if (!is_regular_step(step)) return -1;
  const int shift = std::countr_zero(step);
  const INT64 fromFront = static_cast<INT64>((stamp - first) >> shift);
  if (found(fromFront)) return static_cast<int>(fromFront);
  const INT64 fromBack = end - static_cast<INT64>((last - stamp) >> shift);
  if (found(fromBack)) return static_cast<int>(fromBack);
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

int SampleQueue::getSample(UINT32 wanted) {
  const UINT64 stamp = index.gzdItemList[wanted].getTimeStamp();
  int slot = holds(wanted) ? slotOfStamp(stamp) : -1;
  const bool nearTheFront = slot >= 0 && slot < SLOTS_NEAR_THE_FRONT && runGoesBack;
  if (nearTheFront) {
    readAfresh(wanted);
    slot = slotOfStamp(stamp);
  } else if (slot < 0 || slot >= SLOT_NEAR_THE_END) {
    batchReadSample(wanted);
    slot = holds(wanted) ? slotOfStamp(stamp) : -1;
  }
  // A leap can end in the last slots of a full queue, without a whole window behind it.
  const bool lacksWindow = sqsize == CAPACITY && slot + MIDDLE >= CAPACITY;
  if (slot < 0 || lacksWindow) {
    readAfresh(wanted);
    slot = slotOfStamp(stamp);
  }
  return slot;
}

// ---- reading ahead
// ---------------------------------------------------------------------------------------

bool SampleQueue::continuesRun(UINT32 from, UINT32 to) const {
  const INT64 rise = static_cast<INT64>(stampOf(to)) - static_cast<INT64>(stampOf(from));
  return rise >= 0 && rise <= period;
}

// Whether the run of the newest sample goes on to the entry at `wanted`, within one filling.
bool SampleQueue::runReaches(UINT32 wanted) const {
  UINT32 newest = lastEntry;
  int samples = 0;
  for (UINT32 i = lastEntry + 1; i <= wanted; ++i) {
    const GZDItem item = index.gzdItemList[i];
    if (item.isRecording()) return false;
    if (!item.isSample()) continue;
    if (!continuesRun(newest, i) || ++samples > CAPACITY) return false;
    newest = i;
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
    if (!continuesRun(i, first)) break;
    // Entries of one stamp count once, so that the wanted sample gets its whole window.
    const bool isRepeated = stampOf(i) == stampOf(first);
    if (!isRepeated && samples++ == SAMPLES_BEFORE_WANTED) {
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
  for (UINT32 i = from; i < index.size() && sqsize < CAPACITY; ++i) {
    const GZDItem item = index.gzdItemList[i];
    if (item.isRecording()) return;
    if (!item.isSample()) continue;
    if (!continuesRun(lastEntry, i)) return;
    takeOver(i);
  }
}

// Puts the entry's sample into the queue. One that cannot be read is left out: the error was
// logged, and is reported when the sample itself is asked for.
void SampleQueue::takeOver(UINT32 entry) {
  lastEntry = entry;
  const bool isRepeated = sqsize > 0 && stampAt(sqsize - 1) == stampOf(entry);
  if (isRepeated) {
    const bool replacesDummy =
        index.gzdItemList[at(sqsize - 1).entry].isDummy() && !index.gzdItemList[entry].isDummy();
    if (!replacesDummy) return;
    dropNewest();
  }
  try {
    source.readQueueSample(entry, at(sqsize).sample);
    keepNewest(entry);
  } catch (const GZDException&) {
    return;
  }
}

// ---- velocities
// ------------------------------------------------------------------------------------------

namespace {

struct VelocityKind {
  unsigned bit;
  bool fast;
  int positionType;
  float (FSAMPLE::*x)[2];
  float (FSAMPLE::*y)[2];
};

constexpr VelocityKind VELOCITY_KINDS[] = {
    {GZD_VELOCITY_GAZE, false, GZD_POSITION_GAZE, &FSAMPLE::gxvel, &FSAMPLE::gyvel},
    {GZD_VELOCITY_HREF, false, GZD_POSITION_HREF, &FSAMPLE::hxvel, &FSAMPLE::hyvel},
    {GZD_VELOCITY_RAW, false, GZD_POSITION_PUPIL, &FSAMPLE::rxvel, &FSAMPLE::ryvel},
    {GZD_VELOCITY_FAST_GAZE, true, GZD_POSITION_GAZE, &FSAMPLE::fgxvel, &FSAMPLE::fgyvel},
    {GZD_VELOCITY_FAST_HREF, true, GZD_POSITION_HREF, &FSAMPLE::fhxvel, &FSAMPLE::fhyvel},
    {GZD_VELOCITY_FAST_RAW, true, GZD_POSITION_PUPIL, &FSAMPLE::frxvel, &FSAMPLE::fryvel},
};

struct Resolution {
  float x;
  float y;
};

// Units per degree of a head-referenced position.
Resolution resolution_at(float x, float y) {
  const double xx = static_cast<double>(x * x);
  const double yy = static_cast<double>(y * y);
  const double distance = xx + HREF_DISTANCE_SQUARED + yy;
  return {
      static_cast<float>(distance / std::sqrt(yy + HREF_DISTANCE_SQUARED) / DEGREES_PER_RADIAN),
      static_cast<float>(distance / std::sqrt(xx + HREF_DISTANCE_SQUARED) / DEGREES_PER_RADIAN)};
}

bool is_plausible(float resolution) {
  return static_cast<double>(resolution) > SMALLEST_RESOLUTION &&
         static_cast<double>(resolution) < LARGEST_RESOLUTION;
}

// One eye's positions over the window.
struct WindowPositions {
  const float* x;
  const float* y;
};

// The resolution to divide by, or false when there is no usable one.
bool find_resolution(const FSAMPLE& s, const WindowPositions& series, int positionType,
                     const VelocitySettings& settings, Resolution& resolution) {
  resolution = {settings.defaultRx, settings.defaultRy};
  if (settings.defaultRx != MISSING_DATA) return true;
  const float x = series.x[MIDDLE];
  const float y = series.y[MIDDLE];
  const bool fromPosition =
      positionType == GZD_POSITION_HREF && x != MISSING_DATA && y != MISSING_DATA;
  resolution = fromPosition ? resolution_at(x, y) : Resolution{s.rx, s.ry};
  return is_plausible(resolution.x) && is_plausible(resolution.y);
}

void set_velocity_of_eye(FSAMPLE& s, const WindowPositions& series, const VelocityKind& kind,
                         int eye, const VelocitySettings& settings) {
  float& xvel = (s.*kind.x)[eye];
  float& yvel = (s.*kind.y)[eye];
  xvel = yvel = MISSING_DATA;
  Resolution resolution;
  if (!find_resolution(s, series, kind.positionType, settings, resolution)) return;
  const auto model = settings.ovilo_revision < FIRST_FALCON_REVISION ? calcVelocity_non_falcon
                                                                     : calcVelocity_falcon;
  const float rate = static_cast<float>(settings.sampleRate);
  const auto usable = [](float r) { return static_cast<double>(r) > SMALLEST_RESOLUTION; };
  if (usable(resolution.x)) {
    xvel = model(kind.fast, series.x, SampleQueue::WINDOW, resolution.x, rate);
  }
  if (resolution.y != MISSING_DATA && usable(resolution.y)) {
    yvel = model(kind.fast, series.y, SampleQueue::WINDOW, resolution.y, rate);
  }
}

}  // namespace

// Sees to it that the positions that these kinds need are at hand.
void SampleQueue::followPositions(unsigned kinds) {
  if ((kinds & ~followedKinds) == 0) return;
  followedKinds |= kinds;
  for (const VelocityKind& kind : VELOCITY_KINDS) {
    const std::size_t type = series_of(kind.positionType);
    if ((kinds & kind.bit) == 0 || followed[type]) continue;
    followed[type] = true;
    for (int eye = 0; eye < EYES; ++eye) {
      PositionSeries& series = positions[static_cast<std::size_t>(eye)][type];
      series.clear();
      for (int slot = 0; slot < sqsize; ++slot) append_position(series, sample(slot), eye, type);
    }
  }
}

void SampleQueue::appendPositions(const Sample& s) {
  forEachFollowed([&s](PositionSeries& series, int eye, std::size_t type) {
    append_position(series, s, eye, type);
  });
}

// Whether the queued samples follow each other at intervals of the rate, every one.
bool SampleQueue::isRegular(int stampsPerSample) const {
  const auto span = static_cast<UINT64>(stampsPerSample) * static_cast<UINT64>(sqsize - 1);
  return stampsPerSample == period && stampAt(sqsize - 1) - stampAt(0) == span;
}

// The window where stamps are irregular: a sample is found by arithmetic, or counts as absent.
void SampleQueue::collectPositions(const FSAMPLE& s, UINT64 stamp, int sampleRate, int eye,
                                   std::size_t type, PositionSeries& window) const {
  const float interval = static_cast<float>(1000.0 / sampleRate);
  window.clear();
  for (int k = -MIDDLE; k <= MIDDLE; ++k) {
    const UINT64 distance = static_cast<UINT32>(static_cast<float>(std::abs(k)) * interval * 2.0f);
    const int slot = k == 0 ? -1 : getOldSample(k < 0 ? stamp - distance : stamp + distance);
    const FSAMPLE* const neighbour = k == 0 ? &s : slot >= 0 ? &sample(slot) : nullptr;
    if (neighbour != nullptr) {
      append_position(window, *neighbour, eye, type);
    } else {
      window.append(MISSING_DATA, MISSING_DATA);
    }
  }
}

void SampleQueue::setVelocity(FSAMPLE& s, UINT64 stamp, int slot,
                              const VelocitySettings& settings) {
  if (settings.kinds == GZD_VELOCITY_NONE || settings.sampleRate <= 0) return;
  followPositions(settings.kinds);
  const bool regular =
      slot >= 0 && isRegular(stamps_per_sample(static_cast<float>(settings.sampleRate)));
  for (int eye = 0; eye < EYES; ++eye) {
    if ((s.flags & eye_flag(eye)) == 0) continue;
    for (const VelocityKind& kind : VELOCITY_KINDS) {
      if ((settings.kinds & kind.bit) == 0) continue;
      const std::size_t type = series_of(kind.positionType);
      const PositionSeries& queued = positions[static_cast<std::size_t>(eye)][type];
      if (!regular) collectPositions(s, stamp, settings.sampleRate, eye, type, irregular);
      const PositionSeries& series = regular ? queued : irregular;
      const int middle = regular ? slot : MIDDLE;
      set_velocity_of_eye(s, {series.xAround(middle), series.yAround(middle)}, kind, eye, settings);
    }
  }
}
