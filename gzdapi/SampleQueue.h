// The samples around the one being handed out, for its velocities.
#ifndef GZDAPI_SAMPLEQUEUE_H
#define GZDAPI_SAMPLEQUEUE_H

#include <array>
#include <memory>

#include "Sample.h"
#include "index.h"
#include "position_series.h"

// Where the queue gets its samples: entries of the index as decoded samples.
class SampleSource {
 public:
  virtual ~SampleSource() = default;
  // Decodes the sample entry at `index`. Throws GZDException when it cannot be read. Pupil sizes
  // that the record does not hold are whatever.
  virtual void readQueueSample(UINT32 index, Sample& sample) = 0;
  // Stamps from one sample to the next in the block around an entry; 0 outside blocks.
  virtual int stampsPerSampleAt(UINT32 index) = 0;
};

// What setVelocity needs to know beyond the samples.
struct VelocitySettings {
  unsigned kinds = GZD_VELOCITY_ALL;
  float defaultRx = MISSING_DATA;
  float defaultRy = MISSING_DATA;
  int sampleRate = 0;
  int ovilo_revision = 1;
};

// Holds one unbroken run of samples: entries between two recording entries whose stamps rise by no
// more than the block's period. Of entries with one stamp a recorded one is kept before a dummy,
// else the first. Slots are numbered from the oldest sample.
class SampleQueue {
 public:
  static constexpr int CAPACITY = 512;
  static constexpr int WINDOW = 39;

  SampleQueue(const Index& index, SampleSource& source);

  // The slot of the entry at `index`, read from the file when it is not held yet; -1 when it cannot
  // be. The sample of another entry with the same stamp may stand for it: see entry().
  int getSample(UINT32 index);
  [[nodiscard]] const Sample& sample(int slot) const { return at(slot).sample; }
  [[nodiscard]] UINT32 entry(int slot) const { return at(slot).entry; }

  // Fills the velocity fields of `s`, of the eyes that it holds and the kinds asked for. `slot` is
  // the slot that holds `s`, or -1 when it is another sample of the queue's time.
  void setVelocity(FSAMPLE& s, UINT64 stamp, int slot, const VelocitySettings& settings);

  void clear();
  // Appends a sample, unless its stamp is not above the last one's. A sample without pupil sizes
  // takes over those of the one before it.
  void addSample(const Sample& s, UINT32 entry);
  // Drops the oldest 128 samples.
  void shiftQueue();
  // The slot that holds a stamp, by arithmetic from the regular spacing; -1 when that finds none.
  [[nodiscard]] int getOldSample(UINT64 stamp) const;
  [[nodiscard]] int size() const { return sqsize; }

 private:
  struct Slot {
    Sample sample;
    UINT32 entry = 0;
  };
  static constexpr int EYES = 2;
  static constexpr int POSITION_TYPES = 3;

  Slot& at(int slot) { return sqbuf[static_cast<std::size_t>((front + slot) & (CAPACITY - 1))]; }
  [[nodiscard]] const Slot& at(int slot) const {
    return sqbuf[static_cast<std::size_t>((front + slot) & (CAPACITY - 1))];
  }
  [[nodiscard]] UINT64 stampAt(int slot) const { return at(slot).sample.getTimeStamp(); }
  [[nodiscard]] UINT64 stampOf(UINT32 entry) const {
    return index.gzdItemList[entry].getTimeStamp();
  }
  [[nodiscard]] bool holds(UINT32 entry) const {
    return sqsize > 0 && entry >= firstEntry && entry <= lastEntry;
  }
  [[nodiscard]] int slotOfStamp(UINT64 stamp) const;

  void batchReadSample(UINT32 index);
  void readAfresh(UINT32 index);
  void readOn(UINT32 from);
  void takeOver(UINT32 entry);
  [[nodiscard]] bool runReaches(UINT32 index) const;
  [[nodiscard]] bool continuesRun(UINT32 from, UINT32 to) const;

  void keepNewest(UINT32 entry);
  void dropNewest();
  void appendPositions(const Sample& s);
  void followPositions(unsigned kinds);
  [[nodiscard]] bool isRegular(int stampsPerSample) const;
  void collectPositions(const FSAMPLE& s, UINT64 stamp, int sampleRate, int eye, std::size_t type,
                        PositionSeries& window) const;
  template <class Action>
  void forEachFollowed(Action action) {
    for (std::size_t type = 0; type < POSITION_TYPES; ++type) {
      for (int eye = 0; followed[type] && eye < EYES; ++eye) {
        action(positions[static_cast<std::size_t>(eye)][type], eye, type);
      }
    }
  }

  const Index& index;
  SampleSource& source;
  std::unique_ptr<Slot[]> sqbuf;
  // Positions of the queued samples, by eye and type, of the types that velocities need.
  std::array<std::array<PositionSeries, POSITION_TYPES>, EYES> positions;
  std::array<bool, POSITION_TYPES> followed{};
  unsigned followedKinds = GZD_VELOCITY_NONE;
  PositionSeries irregular;  // of one window, where stamps are irregular
  int front = 0;
  int sqsize = 0;
  UINT32 firstEntry = 0;  // the entries that the queue stands for
  UINT32 lastEntry = 0;
  int period = 0;            // stamps, of the block that the run lies in
  bool runGoesBack = false;  // the run has samples before the oldest one held
  float last_pupil[2];
};

#endif
