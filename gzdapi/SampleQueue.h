// The samples around the one being handed out, for its velocities.
#ifndef GZDAPI_SAMPLEQUEUE_H
#define GZDAPI_SAMPLEQUEUE_H

#include <array>
#include <memory>

#include "Sample.h"
#include "index.h"

// Where the queue gets its samples: entries of the index as decoded samples.
class SampleSource {
 public:
  virtual ~SampleSource() = default;
  // Decodes the sample entry at `index`. Throws GZDException when it cannot be read. Pupil sizes
  // that the record does not hold are left as they are.
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

  // The queued sample of the entry at `index`, read from the file when it is not held yet; null
  // when it cannot be. The sample of another entry with the same stamp may stand for it: the
  // caller compares `entry`.
  Sample* getSample(UINT32 index, UINT32* entry);

  // Fills the velocity fields of `s`, of the eyes that it holds and the kinds asked for.
  void setVelocity(Sample& s, const VelocitySettings& settings) const;

  void clear();
  // Appends a sample, unless its stamp is not above the last one's. A sample without pupil sizes
  // takes over those of the one before it.
  void addSample(const Sample& s, UINT32 entry);
  // Drops the oldest 128 samples.
  void shiftQueue();
  // The slot that holds a stamp, by arithmetic from the regular spacing; -1 when that finds none.
  [[nodiscard]] int getOldSample(UINT64 stamp) const;
  [[nodiscard]] int size() const { return sqsize; }
  [[nodiscard]] const Sample& sample(int slot) const { return at(slot).sample; }

 private:
  struct Slot {
    Sample sample;
    UINT32 entry = 0;
  };
  using Window = std::array<const Sample*, WINDOW>;

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

  [[nodiscard]] Window windowAround(const Sample& s, int sampleRate, int reach) const;

  const Index& index;
  SampleSource& source;
  std::unique_ptr<Slot[]> sqbuf;
  Sample scratch;
  int front = 0;
  int sqsize = 0;
  UINT32 firstEntry = 0;  // the entries that the queue stands for
  UINT32 lastEntry = 0;
  int period = 0;            // stamps, of the block that the run lies in
  bool runGoesBack = false;  // the run has samples before the oldest one held
  float last_pupil[2];
};

#endif
