// The samples around the one being handed out, for its velocities.
#ifndef GZDAPI_SAMPLEQUEUE_H
#define GZDAPI_SAMPLEQUEUE_H

#include <array>
#include <memory>

#include "derived/pair_series.h"
#include "derived/velocity_batch.h"
#include "index/index.h"
#include "read/sample_run.h"
#include "record/Sample.h"
#include "record/sample_layout.h"

namespace gzd {

// Records of one layout, without blocks, that are decoded where they lie.
struct PlainRecords {
  RecordPlaces places;
  const SampleLayout* layout = nullptr;
};

// Where the queue gets its samples: entries of the index as decoded samples.
class SampleSource {
 public:
  virtual ~SampleSource() = default;
  // Decodes the sample entry at `index`. Throws GZDException when it cannot be read. Pupil sizes
  // that the record does not hold may have any value.
  virtual void readQueueSample(UINT32 index, Sample& sample) = 0;
  // The records that can be decoded into `sample`, which holds one read before. Valid until the
  // next sample is read.
  virtual PlainRecords recordsLike(const Sample& /*sample*/) { return {}; }
  // Stamps from one sample to the next in the block around an entry; 0 outside blocks.
  virtual int stampsPerSampleAt(UINT32 index) = 0;
};

// Holds one unbroken run of samples: entries between two recording entries whose stamps rise by no
// more than the block's period. Of entries with one stamp a recorded one is kept before a dummy,
// else the first. Slots are numbered from the oldest sample.
class SampleQueue {
 public:
  static constexpr int series_capacity = 512;
  static constexpr int window_size = 39;

  SampleQueue(const Index& index, SampleSource& source);

  // The slot of the entry at `wanted`, read from the file when it is not held yet. The sample of
  // another entry with the same stamp may stand for it: see entry(). Throws GZDException when a
  // sample, this or one after it, cannot be read.
  int getSample(UINT32 wanted) {
    return isNextInOrder(wanted) ? ++latest_ : (latest_ = findSample(wanted));
  }
  // The same of nearly every entry after another one, whose velocities, of the eyes in `flags`, are
  // at hand for copyVelocities(). False, with nothing done, for any other.
  bool stepTo(UINT32 wanted, UINT16 flags, const VelocitySettings& settings) noexcept {
    if (!isNextInOrder(wanted) || !batch_.holds(latest_ + 1, flags, settings)) return false;
    ++latest_;
    return true;
  }
  void copyVelocities(FSAMPLE& s) const { batch_.copyTo(s, latest_); }
  [[nodiscard]] UINT32 entry(int slot) const { return at(slot).entry; }
  [[nodiscard]] UINT64 stampAt(int slot) const { return at(slot).stamp; }
  // Of both eyes, taken over from the sample before where the sample's own are not recorded.
  [[nodiscard]] const float* pupilSizes(int slot) const { return at(slot).pa; }

  // Fills the velocity fields of `s`, of the eyes that it holds and the kinds asked for. `slot` is
  // the slot that holds `s`, or -1 when it is another sample of the queue's time.
  void setVelocity(FSAMPLE& s, UINT64 stamp, int slot, const VelocitySettings& settings) {
    if (batch_.holds(slot, s.flags, settings)) {
      batch_.copyTo(s, slot);
    } else {
      computeVelocity(s, stamp, slot, settings);
    }
  }

  void clear();
  // Appends a sample, unless its stamp is not above the last one's. A sample without pupil sizes
  // takes over those of the one before it.
  void addSample(const Sample& s, UINT32 entry);
  // Drops the oldest 128 samples.
  void shiftQueue();
  // The slot that holds a stamp, by arithmetic from the regular spacing; -1 when that finds none.
  [[nodiscard]] int getOldSample(UINT64 stamp) const;
  [[nodiscard]] int size() const { return sqsize_; }

 private:
  // What is kept of a sample beside its positions.
  struct Slot {
    UINT64 stamp = 0;
    UINT32 entry = 0;
    float pa[2] = {};
  };
  static constexpr int eye_count = 2;
  // A wanted sample that arithmetic finds at or after this slot has too few samples after it. One
  // that only a search finds gets no whole window in any case.
  static constexpr int slot_near_the_end = 448;
  // A wanted sample before this slot may have too few samples before it.
  static constexpr int slots_near_the_front = window_size - 1;

  Slot& at(int slot) {
    return sqbuf_[static_cast<std::size_t>((front_ + slot) & (series_capacity - 1))];
  }
  [[nodiscard]] const Slot& at(int slot) const {
    return sqbuf_[static_cast<std::size_t>((front_ + slot) & (series_capacity - 1))];
  }
  [[nodiscard]] UINT64 stampOf(UINT32 entry) const { return index_.gzdItemList.stampAt(entry); }
  [[nodiscard]] bool holds(UINT32 entry) const {
    return sqsize_ > 0 && entry >= firstEntry_ && entry <= lastEntry_;
  }
  // Whether the slot after the one given last is the wanted one, with a whole window around it.
  [[nodiscard]] bool isNextInOrder(UINT32 wanted) const {
    const int next = latest_ + 1;
    return next < sqsize_ && next < slot_near_the_end && entry(next) == wanted &&
           (next >= slots_near_the_front || !runGoesBack_);
  }
  int findSample(UINT32 wanted);
  [[nodiscard]] int slotOfStamp(UINT64 stamp) const;
  [[nodiscard]] bool isFoundByArithmetic(int slot) const {
    return getOldSample(stampAt(slot)) >= 0;
  }

  void batchReadSample(UINT32 index);
  void readAfresh(UINT32 index);
  void readOn(UINT32 from);
  UINT32 takeOverPlain(UINT32 from);
  void takeOver(UINT32 entry);
  [[nodiscard]] bool runReaches(UINT32 index) const;
  [[nodiscard]] bool continuesRun(UINT64 from, UINT64 to) const;

  void keepNewest(const Sample& s, UINT32 entry);
  void dropNewest();
  void appendPositions(const Sample& s);
  void followPositions(unsigned kinds);
  [[nodiscard]] bool isRegular(int stampsPerSample) const;
  using WindowSlots = std::array<int, window_size>;
  [[nodiscard]] WindowSlots windowAround(UINT64 middle, int sampleRate) const;
  void computeVelocity(FSAMPLE& s, UINT64 stamp, int slot, const VelocitySettings& settings);
  void setVelocityByStamp(FSAMPLE& s, UINT64 stamp, const VelocitySettings& settings);
  template <class Action>
  void forEachFollowed(Action action) {
    for (std::size_t type = 0; type < position_types; ++type) {
      for (int eye = 0; followed_[type] && eye < eye_count; ++eye) {
        action(positions_[static_cast<std::size_t>(eye)][type], eye, type);
      }
    }
  }

  const Index& index_;
  SampleSource& source_;
  std::unique_ptr<Slot[]> sqbuf_;
  // Positions of the queued samples, by eye and type, of the types that velocities need.
  std::array<SeriesOfEye, eye_count> positions_;
  std::array<bool, position_types> followed_{};
  unsigned followedKinds_ = GZD_VELOCITY_NONE;
  PairSeries resolutions_;
  VelocityBatch batch_;
  Sample incoming_;
  int front_ = 0;
  int latest_ = -1;  // the slot that getSample gave last
  int sqsize_ = 0;
  UINT32 firstEntry_ = 0;  // the entries that the queue stands for
  UINT32 lastEntry_ = 0;
  int period_ = 0;            // stamps, of the block that the run lies in
  bool runGoesBack_ = false;  // the run has samples before the oldest one held
  float last_pupil_[2];
};

}  // namespace gzd

#endif
